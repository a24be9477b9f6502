import QtQuick
import Talvenor

/// One tab of a row of tabs.
Item {
    id: tab

    required property string title
    property string icon
    required property bool isSelected

    signal clicked

    implicitWidth: content.implicitWidth + 16
    implicitHeight: content.implicitHeight + 10
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

    Column {
        id: content
        x: 8
        y: 10
        spacing: 8

        Item {
            implicitWidth: row.implicitWidth + 8
            implicitHeight: row.implicitHeight

            Row {
                id: row
                x: 4
                spacing: 6

                Symbol {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: tab.icon.length > 0
                    name: tab.icon
                    size: Theme.caption2
                    weight: tab.isSelected ? Symbol.Semibold : Symbol.Regular
                    color: label.color
                }
                Text {
                    id: label
                    anchors.verticalCenter: parent.verticalCenter
                    text: tab.title
                    color: tab.isSelected ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.subheadline
                    font.weight: tab.isSelected ? Font.DemiBold : Font.Normal
                    textFormat: Text.PlainText
                }
            }
        }
        AccentFill {
            objectName: "underline"
            width: parent.width
            height: 2
            radius: 1
            isHorizontal: true
            opacity: tab.isSelected ? 1 : 0
        }
    }
    FocusRing {
        anchors.margins: 3
        radius: 6
        visible: tab.activeFocus
    }
    TapHandler {
        onTapped: tab.clicked()
    }
    HoverHandler {
        id: pointer
        cursorShape: Qt.PointingHandCursor
    }
}
