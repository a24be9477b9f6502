import QtQuick
import QtQuick.Layouts
import Talvenor

/// What opens over a window.
Item {
    id: page

    property bool isGerman: L10n.isGerman

    Sheet {
        id: sheet
        title: L10n.settings
        idealWidth: 420
        idealHeight: 330
        padding: 0
        visible: true
        modal: false
        anchors.centerIn: null
        x: 30
        y: 30

        header: SheetTitleBar {
            title: sheet.title
            onCloseRequested: sheet.close()
        }
        contentItem: ScrollArea {
            padding: 20
            spacing: 20

            SettingsCard {
                Layout.fillWidth: true
                ToggleSwitch {
                    Layout.fillWidth: true
                    text: L10n.autoTranscribeLabel
                    isOn: true
                }
            }
            SettingsCard {
                Layout.fillWidth: true
                FormField {
                    Layout.fillWidth: true
                    label: "Name"
                    text: "Ann"
                }
            }
            SettingsCard {
                Layout.fillWidth: true
                StaticText {
                    text: L10n.storageUsage
                    font.pixelSize: Theme.caption
                }
            }
        }
    }
    MessageAlert {
        title: L10n.error
        message: page.isGerman ? "Die Aufnahme konnte nicht gestartet werden: Kein Mikrofon gefunden." : "The recording could not be started: no microphone found."
        isPresented: true
        modal: false
        anchors.centerIn: null
        x: 30
        y: 420
    }
    ContextMenu {
        id: menu
        closePolicy: ContextMenu.NoAutoClose
        MenuEntry {
            text: L10n.export_
            icon.name: "square.and.arrow.up"
        }
        MenuEntry {
            text: L10n.transcribe
            icon.name: "text.bubble"
            highlighted: true
        }
        MenuEntry {
            text: L10n.summarize
            icon.name: "sparkles"
            enabled: false
        }
        MenuDivider {}
        MenuEntry {
            text: L10n.delete_
            icon.name: "trash"
            isDestructive: true
        }
    }
    PushButton {
        x: 560
        y: 300
        text: L10n.settings
        Tooltip {
            isWanted: true
            delay: 0
            text: page.isGerman ? "Abo-Pläne <b>kein Markup</b>" : "Subscription Plans <b>no markup</b>"
        }
    }
    // Once there is a window.
    Timer {
        running: true
        interval: 50
        onTriggered: menu.popup(page, 560, 60)
    }
}
