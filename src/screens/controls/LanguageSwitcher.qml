pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// Chooses one of the languages, which are offered by their short marks and named by their own names.
Rectangle {
    id: switcher

    /// The string form of a language.
    required property string selection

    signal selected(string language)

    implicitWidth: row.implicitWidth + 6
    implicitHeight: row.implicitHeight + 6
    radius: 10
    color: Theme.withOpacity(Theme.secondary, 0.1)

    Row {
        id: row
        anchors.centerIn: parent
        spacing: 2

        Repeater {
            model: L10n.allForms
            delegate: Item {
                id: choice

                required property string modelData
                required property int index
                readonly property bool isSelected: modelData === switcher.selection

                function choose() {
                    if (enabled)
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
                Keys.onLeftPressed: if (index > 0)
                    nextItemInFocusChain(false).forceActiveFocus(Qt.TabFocusReason)
                Keys.onRightPressed: if (index < L10n.allForms.length - 1)
                    nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

                AccentFill {
                    anchors.fill: parent
                    radius: 7
                    isHorizontal: true
                    opacity: choice.isSelected ? 1 : 0

                    Behavior on opacity {
                        NumberAnimation {
                            duration: 200
                            easing.type: Easing.InOutQuad
                        }
                    }
                }
                Text {
                    anchors.centerIn: parent
                    text: L10n.flag(choice.modelData)
                    color: choice.isSelected ? Theme.white : Theme.secondary
                    font.pixelSize: Theme.caption
                    font.weight: Font.Bold

                    Behavior on color {
                        ColorAnimation {
                            duration: 200
                            easing.type: Easing.InOutQuad
                        }
                    }
                }
                FocusRing {
                    anchors.margins: -1
                    radius: 8
                    visible: choice.activeFocus
                }
                TapHandler {
                    onTapped: choice.choose()
                }
                HoverHandler {
                    cursorShape: Qt.PointingHandCursor
                }
            }
        }
    }
}
