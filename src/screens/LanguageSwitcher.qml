pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// Chooses one of the languages, which are offered by their short marks and named by their own names.
Rectangle {
    id: switcher

    required property string selection

    signal selected(string language)

    implicitWidth: row.implicitWidth + 6
    implicitHeight: row.implicitHeight + 6
    radius: 10
    color: Theme.withOpacity(Theme.primary, 0.08)

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 2

        Repeater {
            model: L10n.allForms
            delegate: Item {
                id: choice

                required property string modelData
                readonly property bool isSelected: modelData === switcher.selection

                function choose() {
                    switcher.selected(modelData);
                }

                width: 40
                height: 28
                activeFocusOnTab: true
                Accessible.role: Accessible.RadioButton
                Accessible.name: L10n.displayName(modelData)
                Accessible.checkable: true
                Accessible.checked: isSelected
                Accessible.focusable: true
                Accessible.focused: activeFocus
                Accessible.onPressAction: choose()
                Accessible.onToggleAction: choose()
                Keys.onReturnPressed: choose()
                Keys.onEnterPressed: choose()
                Keys.onSpacePressed: choose()

                AccentFill {
                    anchors.fill: parent
                    radius: 7
                    isHorizontal: true
                    visible: choice.isSelected
                }
                Text {
                    anchors.centerIn: parent
                    text: L10n.flag(choice.modelData)
                    color: choice.isSelected ? "#ffffff" : Theme.secondary
                    font.pixelSize: Theme.caption
                    font.weight: Font.Bold
                }
                FocusRing {
                    anchors.margins: -1
                    radius: 8
                    visible: choice.activeFocus
                }
                TapHandler {
                    onTapped: choice.choose()
                }
            }
        }
    }
}
