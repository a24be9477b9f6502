import QtQuick
import Talvenor

/// The registration form, a sheet over the sign-in screen.
Sheet {
    id: sheet
    objectName: "registerSheet"

    title: L10n.isGerman ? "Konto erstellen" : "Create Account"
    idealWidth: Theme.scaled(420)
    idealHeight: Theme.scaled(520)
    padding: 0

    contentItem: RegisterForm {
        title: sheet.title
        onCloseRequested: sheet.close()
    }
}
