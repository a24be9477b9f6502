import QtQuick
import Talvenor

/// A one-line text field. Its name is its visible label, else the placeholder. A secure one shows bullets only, on
/// the screen and in the accessibility tree, and gives nothing to the clipboard.
///
/// The text is exactly what was put in, however long. Line breaks in it stay, take no room and break nothing. Of a text
/// of thousands of characters only the beginning can be seen and edited: Qt lays a line out whole with each key, and for
/// megabytes in many scripts that takes minutes. The rest is held, and goes when all is deleted.
FocusScope {
    id: field

    property string text
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

    function selectAll(): void {
        input.selectAll();
    }

    /// Puts the text in place of what is marked, at once and whole; false if the input can do that itself.
    function insertLong(inserted: string): bool {
        if (input.readOnly || input.length + inserted.length <= input.maximumLength)
            return false;
        const isWhole = input.isAllSelected();
        text = input.text.slice(0, input.selectionStart) + inserted + (isWhole ? "" : input.text.slice(input.selectionEnd) + input.rest);
        return true;
    }

    implicitWidth: 200
    implicitHeight: input.implicitHeight + 2 * padding
    opacity: enabled ? 1 : 0.5
    onTextChanged: if (text !== input.text + input.rest) {
        input.rest = text.slice(input.maximumLength);
        input.text = text.slice(0, input.maximumLength);
    }

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

        /// What comes after the text that can be edited.
        property string rest
        /// Assistive technology sets the whole here.
        property alias wholeText: field.text
        property bool isReplacingAll: false

        function isAllSelected(): bool {
            return length > 0 && selectionStart === 0 && selectionEnd === length;
        }

        anchors.fill: parent
        anchors.margins: field.padding
        focus: true
        activeFocusOnTab: true
        clip: true
        maximumLength: 4000
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
        onTextEdited: {
            if (isReplacingAll || length === 0)
                rest = "";
            isReplacingAll = false;
        }
        onTextChanged: field.text = text + rest
        Keys.onPressed: event => {
            isReplacingAll = isAllSelected();
            event.accepted = event.matches(StandardKey.Paste) && field.insertLong(Clipboard.text());
        }
        Accessible.role: Accessible.EditableText
        Accessible.name: field.label

        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.MiddleButton
            cursorShape: Qt.IBeamCursor
            onPressed: event => {
                // Shorter ones go the usual way.
                event.accepted = input.length + Clipboard.selection().length > input.maximumLength;
            }
            onClicked: event => {
                input.forceActiveFocus(Qt.MouseFocusReason);
                input.cursorPosition = input.positionAt(event.x, event.y);
                field.insertLong(Clipboard.selection());
            }
        }
    }
    FocusRing {
        anchors.margins: field.hasFill ? 0 : -3
        radius: field.cornerRadius
        visible: input.activeFocus
    }
}
