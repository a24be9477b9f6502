import QtQuick
import QtQuick.Layouts
import Talvenor

/// The settings, a sheet: a change takes effect and is stored at once.
Sheet {
    id: sheet
    objectName: "SettingsView"

    title: L10n.settings
    idealWidth: Theme.scaled(500)
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
            padding: 24

            SettingsCard {
                Layout.fillWidth: true
                Accessible.role: Accessible.Grouping
                Accessible.name: L10n.appLanguageLabel

                RowLayout {
                    Layout.fillWidth: true
                    spacing: 12

                    IconLabel {
                        Layout.fillWidth: true
                        icon: "globe"
                        text: L10n.appLanguageLabel
                        font: Qt.font({
                            pixelSize: Theme.subheadline,
                            weight: Font.Medium
                        })
                    }
                    LanguageSwitcher {
                        selection: L10n.current
                        onSelected: language => L10n.current = language
                    }
                }
            }
        }
    }
}
