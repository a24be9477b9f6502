import QtQuick
import Talvenor

/// One recording of the list, with its context menu.
Rectangle {
    id: row

    required property int index
    required property string recordingId
    required property string title
    required property string formattedDate
    required property string formattedDuration
    required property string statusForm
    required property string statusText
    required property bool isSelected

    signal chosen
    signal menuRequested(real x, real y)

    function choose() {
        ListView.view.currentIndex = index;
        chosen();
    }

    function openMenu(x: real, y: real) {
        ListView.view.currentIndex = index;
        menuRequested(x, y);
    }

    implicitHeight: 52
    radius: 10
    color: {
        if (isSelected)
            return Theme.selectedSurface;
        return mouse.containsMouse ? Theme.surface : "transparent";
    }
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: formattedDate + ", " + formattedDuration + ", " + statusText
    Accessible.selectable: true
    Accessible.selected: isSelected
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: choose()
    Keys.onReturnPressed: choose()
    Keys.onEnterPressed: choose()
    Keys.onSpacePressed: choose()
    Keys.onMenuPressed: openMenu(24, height / 2)
    Keys.onPressed: event => {
        if (event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier)) {
            event.accepted = true;
            openMenu(24, height / 2);
        }
    }

    Rectangle {
        id: statusMark
        anchors.left: parent.left
        anchors.leftMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        width: 8
        height: 8
        radius: 4
        color: Theme.statusColour(row.statusForm)
    }
    Column {
        anchors.left: statusMark.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        spacing: 3

        Text {
            width: parent.width
            text: row.title
            color: Theme.primary
            font.pixelSize: Theme.subheadline
            font.weight: Font.Medium
            textFormat: Text.PlainText
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        Text {
            width: parent.width
            text: row.formattedDate + " · " + row.formattedDuration
            color: Theme.secondary
            font.pixelSize: Theme.caption2
            textFormat: Text.PlainText
            elide: Text.ElideRight
        }
    }
    FocusRing {
        anchors.margins: 1
        radius: 9
        visible: row.activeFocus
    }
    MouseArea {
        id: mouse
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: event => {
            if (event.button === Qt.RightButton)
                row.openMenu(event.x, event.y);
            else
                row.choose();
        }
    }
}
