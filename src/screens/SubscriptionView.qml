import QtQuick
import QtQuick.Layouts
import Talvenor

/// The plan of whoever is signed in and what it allows; a sheet.
Sheet {
    id: sheet
    objectName: "SubscriptionView"

    required property ContentState content
    readonly property var user: content.currentUser

    title: L10n.isGerman ? "Abo wählen" : "Choose Plan"
    idealWidth: Theme.scaled(480)
    padding: 0

    contentItem: ColumnLayout {
        spacing: 0

        SheetTitleBar {
            Layout.fillWidth: true
            title: sheet.title
            onCloseRequested: sheet.close()
        }
        Divider {
            Layout.fillWidth: true
        }
        ScrollArea {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredHeight: implicitHeight
            padding: 20

            SettingsCard {
                Layout.fillWidth: true

                FactRow {
                    Layout.fillWidth: true
                    label: L10n.isGerman ? "Aktueller Plan" : "Current plan"
                    // Nobody's plan is told while the profile has not come.
                    value: sheet.user?.tierDisplayName ?? "–"
                }
                Divider {
                    Layout.fillWidth: true
                    Layout.topMargin: 12
                    Layout.bottomMargin: 12
                }
                FactRow {
                    Layout.fillWidth: true
                    label: L10n.isGerman ? "Aufnahmen pro Monat" : "Recordings per month"
                    value: {
                        if (sheet.user === undefined)
                            return "–";
                        if (sheet.user.isPremium || sheet.user.isLifetime)
                            return L10n.isGerman ? "Unbegrenzt" : "Unlimited";
                        return String(sheet.user.recordings_limit ?? 3);
                    }
                }
            }
        }
    }
}
