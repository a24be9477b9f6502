import QtQuick
import Talvenor

/// A word on a capsule of its own colour.
Rectangle {
    id: badge

    required property string text
    /// Of the word; the capsule has a trace of it.
    required property color foreground

    implicitWidth: Math.ceil(label.implicitWidth) + 12
    implicitHeight: Math.ceil(label.implicitHeight) + 4
    radius: height / 2
    color: Theme.withOpacity(foreground, 0.15)

    StaticText {
        id: label
        anchors.centerIn: parent
        width: Math.min(implicitWidth, badge.width - 12)
        text: Theme.oneLine(badge.text)
        color: badge.foreground
        font.pixelSize: Theme.caption2
        font.weight: Font.DemiBold
        elide: Text.ElideRight
    }
}
