import QtQuick
import Talvenor

/// One tab of a row of tabs.
Item {
    id: tab

    required property string title
    required property bool isSelected

    signal clicked

    implicitWidth: label.implicitWidth + 24
    implicitHeight: label.implicitHeight + 22
    activeFocusOnTab: true

    Accessible.role: Accessible.PageTab
    Accessible.name: title
    Accessible.selectable: true
    Accessible.selected: isSelected
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: if (enabled)
        clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onSpacePressed: clicked()
    Keys.onLeftPressed: nextItemInFocusChain(false).forceActiveFocus(Qt.TabFocusReason)
    Keys.onRightPressed: nextItemInFocusChain(true).forceActiveFocus(Qt.TabFocusReason)

    Text {
        id: label
        anchors.centerIn: parent
        text: tab.title
        color: tab.isSelected ? Theme.primary : Theme.secondary
        font.pixelSize: Theme.subheadline
        font.weight: tab.isSelected ? Font.DemiBold : Font.Normal
    }
    AccentFill {
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 16
        height: 2
        radius: 1
        isHorizontal: true
        visible: tab.isSelected
    }
    FocusRing {
        anchors.margins: 3
        radius: 6
        visible: tab.activeFocus
    }
    TapHandler {
        onTapped: tab.clicked()
    }
}
