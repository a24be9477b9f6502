import QtQuick
import Talvenor

/// The welcome after the first sign-in on a machine, a sheet. However it is closed, the set-up counts as completed.
Sheet {
    id: sheet
    objectName: "SetupView"

    title: L10n.welcomeTitle
    idealWidth: Theme.scaled(520)
    idealHeight: Theme.scaled(460)
    padding: 0

    contentItem: WelcomeStep {
        onFinished: sheet.close()
    }
}
