import QtQuick
import Talvenor

/// What stands on the wide button: its symbol, its text and while recording the time.
Item {
    id: content

    required property bool isRecording
    required property string text
    required property string time
    required property font font

    implicitWidth: circle.width + 10 + label.implicitWidth + (timer.visible ? 10 + timer.width : 0)
    implicitHeight: Math.max(24, label.implicitHeight)

    Rectangle {
        id: circle
        objectName: "wideButtonCircle"
        anchors.verticalCenter: parent.verticalCenter
        width: 24
        height: 24
        radius: 12
        color: Theme.withOpacity(Theme.white, 0.2)

        Symbol {
            anchors.fill: parent
            objectName: "wideButtonSymbol"
            name: content.isRecording ? "stop.fill" : "plus"
            size: Theme.scaled(12)
            weight: Symbol.Bold
            color: Theme.white
        }
    }
    Text {
        id: label
        objectName: "wideButtonLabel"
        anchors.left: circle.right
        anchors.leftMargin: 10
        anchors.right: timer.visible ? timer.left : parent.right
        anchors.rightMargin: timer.visible ? 10 : 0
        anchors.verticalCenter: parent.verticalCenter
        text: content.text
        color: Theme.white
        font: content.font
        textFormat: Text.PlainText
        elide: Text.ElideRight
    }
    Row {
        id: timer
        objectName: "wideButtonTimer"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: content.isRecording
        spacing: 5
        opacity: 0.85

        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 5
            height: 5
            radius: 2.5
            color: Theme.white
        }
        StaticText {
            anchors.verticalCenter: parent.verticalCenter
            text: content.time
            color: Theme.white
            font.pixelSize: Theme.caption
            font.family: Theme.monospaced
        }
    }
}
