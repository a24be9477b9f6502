import QtQuick
import Talvenor

/// One person, whose name can be edited in place.
Rectangle {
    id: row

    required property string participantId
    required property string name
    required property string initial
    required property bool isDetectedByAI
    required property bool isEditing
    required property string editText

    signal editRequested
    signal edited(string text)
    signal accepted
    signal removed

    implicitHeight: 56
    radius: 10
    color: Theme.surface
    onIsEditingChanged: if (isEditing) {
        field.text = editText;
        field.forceActiveFocus();
        field.selectAll();
    }

    Rectangle {
        id: avatar
        anchors.left: parent.left
        anchors.leftMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        width: 36
        height: 36
        radius: 18
        color: Theme.withOpacity(Theme.purple, 0.16)

        Text {
            anchors.centerIn: parent
            text: row.initial
            color: Theme.accentText
            font.pixelSize: 14
            font.weight: Font.Bold
            textFormat: Text.PlainText
        }
    }
    Column {
        anchors.left: avatar.right
        anchors.leftMargin: 12
        anchors.right: editButton.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        visible: !row.isEditing
        spacing: 2

        StaticText {
            width: parent.width
            text: row.name
            font.pixelSize: Theme.subheadline
            font.weight: Font.Medium
            elide: Text.ElideRight
        }
        StaticText {
            visible: row.isDetectedByAI
            text: L10n.detectedByAI
            color: Theme.secondary
            font.pixelSize: Theme.caption2
        }
    }
    InputField {
        id: field
        anchors.left: avatar.right
        anchors.leftMargin: 12
        anchors.right: editButton.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        visible: row.isEditing
        placeholder: "Name"
        font.pixelSize: Theme.subheadline
        font.weight: Font.Medium
        onTextChanged: if (row.isEditing)
            row.edited(text)
        onAccepted: row.accepted()
    }
    PushButton {
        id: editButton
        anchors.right: removeButton.left
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        look: PushButton.Glyph
        text: "✎"
        spokenName: L10n.isGerman ? row.name + " bearbeiten" : "Edit " + row.name
        onClicked: row.editRequested()
    }
    PushButton {
        id: removeButton
        anchors.right: parent.right
        anchors.rightMargin: 14
        anchors.verticalCenter: parent.verticalCenter
        look: PushButton.Glyph
        text: "✕"
        spokenName: L10n.isGerman ? row.name + " entfernen" : "Remove " + row.name
        onClicked: row.removed()
    }
}
