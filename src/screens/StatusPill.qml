import QtQuick
import Talvenor

/// A status as a coloured capsule.
Rectangle {
    id: pill

    required property string text
    required property color colour

    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 6
    radius: height / 2
    color: Theme.withOpacity(colour, 0.12)

    StaticText {
        id: label
        anchors.centerIn: parent
        text: pill.text
        color: pill.colour
        font.pixelSize: Theme.caption2
        font.weight: Font.Medium
    }
}
