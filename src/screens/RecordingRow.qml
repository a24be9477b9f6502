import QtQuick
import Talvenor

/// One recording of the list.
///
/// Thousands of them pass by while the list is scrolled, so there is nothing in it that most rows do not need. All are
/// equally high, whatever face a title's characters come from.
Rectangle {
    id: row

    required property int index
    required property string recordingId
    required property string title
    required property string spokenName
    required property string formattedDate
    required property string formattedDuration
    required property string statusForm
    required property string statusText
    required property string statusSymbol
    required property string statusColor
    required property bool isSelected
    property bool isHovered: false
    /// The current row is kept, also when it has been scrolled away.
    property bool isInView: true
    /// The heights of the two lines.
    required property real titleHeight
    required property real detailHeight

    /// 1 while the pointer is over the row, and in between on its way there and back.
    property real hoverStrength: isHovered ? 1 : 0
    readonly property color statusTint: {
        switch (statusColor) {
        case "red":
            return Theme.red;
        case "orange":
            return Theme.orange;
        case "systemPurple":
            return Theme.systemPurple;
        case "green":
            return Theme.green;
        case "blue":
            return Theme.blue;
        default:
            return Theme.secondary;
        }
    }

    signal pointerEntered
    signal pointerLeft
    signal chosen
    signal menuRequested(real x, real y)

    implicitWidth: 264
    implicitHeight: 52
    radius: 10
    color: isSelected ? Theme.selectedSurface : Theme.withOpacity(Theme.surface, hoverStrength)
    Accessible.role: Accessible.ListItem
    Accessible.name: spokenName
    Accessible.description: formattedDate + ", " + formattedDuration + ", " + statusText
    Accessible.selectable: true
    Accessible.selected: isSelected
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: chosen()

    Behavior on hoverStrength {
        NumberAnimation {
            duration: 150
            easing.type: Easing.InOutQuad
        }
    }
    Rectangle {
        id: square
        objectName: "statusSquare"
        x: 10
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        radius: 8
        color: Theme.withOpacity(row.statusTint, row.statusColor === "secondary" ? 0.08 : 0.12)

        Symbol {
            objectName: "statusSymbol"
            anchors.fill: parent
            name: row.statusSymbol
            size: Theme.scaled(14)
            color: row.statusTint
            isRunning: row.statusForm === "recording" && row.isInView
        }
    }
    Item {
        id: texts
        anchors.left: square.right
        anchors.leftMargin: 12
        anchors.right: parent.right
        anchors.rightMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        height: row.titleHeight + 3 + row.detailHeight

        Text {
            objectName: "rowTitle"
            width: parent.width
            height: row.titleHeight
            text: row.title
            color: Theme.primary
            font.pixelSize: Theme.subheadline
            font.weight: Font.Medium
            textFormat: Text.PlainText
            // Titles in any script begin where the others do.
            horizontalAlignment: Text.AlignLeft
            verticalAlignment: Text.AlignVCenter
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        Text {
            id: date
            objectName: "rowDate"
            y: row.titleHeight + 3
            width: Math.min(implicitWidth, texts.width - dot.implicitWidth - duration.implicitWidth - 12)
            height: row.detailHeight
            text: row.formattedDate
            color: Theme.secondary
            font.pixelSize: Theme.caption2
            textFormat: Text.PlainText
            elide: Text.ElideRight
            maximumLineCount: 1
        }
        Text {
            id: dot
            objectName: "rowDot"
            x: date.width + 6
            y: date.y
            text: "·"
            color: Theme.secondary
            font.pixelSize: Theme.caption2
            textFormat: Text.PlainText
        }
        Text {
            id: duration
            objectName: "rowDuration"
            x: dot.x + dot.implicitWidth + 6
            anchors.baseline: date.baseline
            text: row.formattedDuration
            color: Theme.secondary
            font.pixelSize: Theme.caption2
            font.family: Theme.monospaced
            textFormat: Text.PlainText
        }
    }
    MouseArea {
        id: mouse
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onEntered: row.pointerEntered()
        onExited: row.pointerLeft()
        onClicked: event => {
            if (event.button === Qt.RightButton)
                row.menuRequested(event.x, event.y);
            else
                row.chosen();
        }
    }
}
