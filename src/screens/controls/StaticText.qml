import QtQuick
import Talvenor

/// A text that is read by people and by assistive technology alike.
Text {
    color: Theme.primary
    font.pixelSize: Theme.body
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
