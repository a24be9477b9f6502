import QtQuick
import Talvenor

/// A one-line text field. Its name is its visible label, else the placeholder. A secure one shows bullets only, on
/// the screen and in the accessibility tree, and gives nothing to the clipboard.
///
/// The text is exactly what was put in, however long. Line breaks and control characters in it stay, and are shown as
/// spaces.
FocusScope {
    id: field

    property alias text: input.text
    property alias inputMethodHints: input.inputMethodHints
    property alias font: input.font
    property alias readOnly: input.readOnly
    property string placeholder
    property string label: placeholder
    property bool isSecure: false
    property real cornerRadius: 8
    property bool hasFill: true
    property real padding: 10

    signal accepted

    function selectAll() {
        input.selectAll();
    }

    implicitWidth: 200
    implicitHeight: input.implicitHeight + 2 * padding
    opacity: enabled ? 1 : 0.5

    Rectangle {
        anchors.fill: parent
        visible: field.hasFill
        radius: field.cornerRadius
        color: Theme.fieldFill
    }
    Text {
        anchors.fill: input
        visible: input.length === 0 && input.preeditText.length === 0
        text: field.placeholder
        color: Theme.tertiary
        font: input.font
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
    }
    TextInput {
        id: input
        anchors.fill: parent
        anchors.margins: field.padding
        focus: true
        activeFocusOnTab: true
        clip: true
        // Its own limit would cut off what is pasted without a word.
        maximumLength: 2147483647
        color: Theme.primary
        selectionColor: Theme.purple
        selectedTextColor: Theme.white
        selectByMouse: true
        font.pixelSize: Theme.body
        verticalAlignment: TextInput.AlignVCenter
        echoMode: field.isSecure ? TextInput.Password : TextInput.Normal
        passwordCharacter: "•"
        inputMethodHints: field.isSecure ? Qt.ImhSensitiveData | Qt.ImhNoPredictiveText | Qt.ImhNoAutoUppercase : Qt.ImhNone
        onAccepted: field.accepted()
        Accessible.role: Accessible.EditableText
        Accessible.name: field.label
    }
    FocusRing {
        anchors.margins: field.hasFill ? 0 : -3
        radius: field.cornerRadius
        visible: input.activeFocus
    }
    HoverHandler {
        cursorShape: Qt.IBeamCursor
    }
}
