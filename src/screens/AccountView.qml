import QtQuick
import QtQuick.Layouts
import Talvenor

/// Who is signed in, with which plan, and how much of it is used; a sheet.
Sheet {
    id: sheet
    objectName: "AccountView"

    required property ContentState content
    readonly property var user: content.currentUser

    title: L10n.isGerman ? "Mein Konto" : "My Account"
    idealWidth: Theme.scaled(440)
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
            spacing: 20

            SettingsCard {
                Layout.fillWidth: true
                visible: sheet.user !== undefined

                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 4

                    StaticText {
                        Layout.fillWidth: true
                        text: Theme.oneLine(sheet.user?.name ?? "")
                        font.pixelSize: Theme.headline
                        font.weight: Font.Bold
                        horizontalAlignment: Text.AlignHCenter
                        elide: Text.ElideRight
                    }
                    StaticText {
                        Layout.fillWidth: true
                        text: Theme.oneLine(sheet.user?.email ?? "")
                        color: Theme.secondary
                        font.pixelSize: Theme.caption
                        horizontalAlignment: Text.AlignHCenter
                        elide: Text.ElideRight
                    }
                }
            }
            SettingsCard {
                Layout.fillWidth: true
                visible: sheet.user !== undefined

                FactRow {
                    Layout.fillWidth: true
                    label: "Plan"
                    value: sheet.user?.tierDisplayName ?? ""
                }
                Divider {
                    Layout.fillWidth: true
                    Layout.topMargin: 12
                    Layout.bottomMargin: 12
                }
                FactRow {
                    Layout.fillWidth: true
                    label: L10n.isGerman ? "Aufnahmen diesen Monat" : "Recordings this month"
                    value: String(sheet.user?.recordings_count ?? 0)
                }
            }
            SignOutButton {
                Layout.fillWidth: true
                visible: sheet.user !== undefined
                onClicked: {
                    sheet.content.signOut();
                    sheet.close();
                }
            }
        }
    }
}
