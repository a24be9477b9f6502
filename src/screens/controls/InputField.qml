import QtQuick
import Talvenor

/// A one-line text field. Its name is its visible label, else the placeholder. A secure one shows bullets only, on
/// the screen and in the accessibility tree.
FocusScope {
    id: field

    property alias text: input.text
    property alias inputMethodHints: input.inputMethodHints
    property alias font: input.font
    property string placeholder
    property string label: placeholder
    property bool isSecure: false
    property real cornerRadius: 8
    property bool hasFill: true

    signal accepted

    function selectAll() {
        input.selectAll();
    }

    implicitWidth: 200
    implicitHeight: input.implicitHeight + 20

    Rectangle {
        anchors.fill: parent
        radius: field.cornerRadius
        color: field.hasFill ? Theme.fieldFill : "transparent"
        border.width: input.activeFocus ? 2 : field.hasFill ? 1 : 0
        border.color: input.activeFocus ? Theme.focusRing : Theme.divider
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
        anchors.margins: 10
        focus: true
        activeFocusOnTab: true
        clip: true
        color: Theme.primary
        selectionColor: Theme.purple
        selectedTextColor: "#ffffff"
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
}
