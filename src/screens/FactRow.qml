import QtQuick
import QtQuick.Layouts
import Talvenor

/// What something is called, and at the end of the line what it is.
RowLayout {
    id: row

    required property string label
    required property string value

    spacing: 12

    StaticText {
        text: row.label
        color: Theme.secondary
        font.pixelSize: Theme.subheadline
    }
    StaticText {
        Layout.fillWidth: true
        text: Theme.oneLine(row.value)
        font.pixelSize: Theme.subheadline
        font.weight: Font.Medium
        horizontalAlignment: Text.AlignRight
        elide: Text.ElideRight
        Accessible.description: row.label
    }
}
