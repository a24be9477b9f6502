import QtQuick
import Talvenor

/// Says that there is nothing here, and where the window offers a way to change that, which.
Column {
    id: empty

    required property string title
    property string hint

    spacing: 4

    StaticText {
        width: empty.width
        text: empty.title
        color: Theme.secondary
        font.pixelSize: Theme.subheadline
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
    }
    StaticText {
        width: empty.width
        visible: text.length > 0
        text: empty.hint
        color: Theme.tertiary
        font.pixelSize: Theme.caption
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
    }
}
