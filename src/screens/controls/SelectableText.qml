import QtQuick
import Talvenor

/// A text of several lines that can be selected and copied.
TextEdit {
    readOnly: true
    selectByMouse: true
    selectByKeyboard: true
    wrapMode: TextEdit.Wrap
    textFormat: TextEdit.PlainText
    color: Theme.primary
    selectionColor: Theme.purple
    selectedTextColor: "#ffffff"
    font.pixelSize: Theme.body
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
