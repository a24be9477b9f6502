import QtQuick
import Talvenor

/// A field with its label above it.
Column {
    id: row

    property alias text: input.text
    property alias placeholder: input.placeholder
    property alias isSecure: input.isSecure
    property alias inputMethodHints: input.inputMethodHints
    /// The field of its screen or sheet that the keyboard goes to first.
    property alias hasInitialFocus: input.focus
    required property string label

    signal accepted

    spacing: 5

    StaticText {
        width: Math.min(implicitWidth, row.width)
        text: row.label
        color: Theme.secondary
        font.pixelSize: Theme.caption
        elide: Text.ElideRight
    }
    InputField {
        id: input
        width: row.width
        label: row.label
        onAccepted: row.accepted()
    }
}
