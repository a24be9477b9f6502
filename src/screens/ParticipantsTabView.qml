pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The people of a recording, and a bar to add one.
Item {
    id: tab

    required property SelectedRecording recording
    property string editingId
    property string editText

    function addParticipant() {
        if (tab.recording.addParticipant(newName.text))
            newName.text = "";
    }

    ListView {
        id: list
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: line.top
        clip: true
        spacing: 8
        topMargin: 20
        bottomMargin: 20
        visible: count > 0
        boundsBehavior: Flickable.StopAtBounds
        model: tab.recording.participants
        Accessible.role: Accessible.List
        Accessible.name: L10n.participantsTab
        T.ScrollBar.vertical: ScrollIndicatorBar {}

        delegate: ParticipantRow {
            x: 20
            width: ListView.view.width - 40
            isEditing: tab.editingId === participantId
            editText: tab.editText
            onEdited: text => tab.editText = text
            onEditRequested: {
                tab.editText = name;
                tab.editingId = participantId;
            }
            onAccepted: {
                tab.recording.updateParticipant(participantId, tab.editText);
                tab.editingId = "";
            }
            onRemoved: tab.recording.removeParticipant(participantId)
        }
    }
    EmptyState {
        anchors.horizontalCenter: parent.horizontalCenter
        y: 60
        width: parent.width - 48
        visible: list.count === 0
        title: L10n.noParticipantsYet
        hint: L10n.noParticipantsHint
    }
    Rectangle {
        id: line
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: addBar.top
        height: 1
        color: Theme.divider
    }
    Item {
        id: addBar
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: newName.implicitHeight + 24

        InputField {
            id: newName
            anchors.left: parent.left
            anchors.leftMargin: 20
            anchors.right: addButton.left
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            placeholder: L10n.addParticipantPlaceholder
            font.pixelSize: Theme.subheadline
            onAccepted: tab.addParticipant()
        }
        PushButton {
            id: addButton
            anchors.right: parent.right
            anchors.rightMargin: 20
            anchors.verticalCenter: parent.verticalCenter
            look: PushButton.Accent
            cornerRadius: height / 2
            width: 30
            height: 30
            padding: 0
            text: "+"
            spokenName: L10n.isGerman ? "Teilnehmer hinzufügen" : "Add Participant"
            enabled: tab.recording.isParticipantName(newName.text)
            opacity: enabled ? 1 : 0.45
            onClicked: tab.addParticipant()
        }
    }
}
