import QtQuick
import Talvenor

/// The top of a sheet: its title and the button that closes it, with a line below.
Item {
    id: bar

    required property string title

    signal closeRequested

    implicitWidth: label.implicitWidth + 12 + close.width + 48
    implicitHeight: Math.max(label.implicitHeight, close.height) + 37

    StaticText {
        id: label
        anchors.left: parent.left
        anchors.leftMargin: 24
        anchors.right: close.left
        anchors.rightMargin: 12
        anchors.verticalCenter: close.verticalCenter
        text: Theme.oneLine(bar.title)
        font.pixelSize: Theme.title2
        font.weight: Font.Bold
        elide: Text.ElideRight
    }
    CloseButton {
        id: close
        anchors.right: parent.right
        anchors.rightMargin: 24
        y: 20 + Math.max(0, Math.round((label.implicitHeight - height) / 2))
        onClicked: bar.closeRequested()
    }
    Divider {
        anchors.bottom: parent.bottom
        width: parent.width
    }
}
