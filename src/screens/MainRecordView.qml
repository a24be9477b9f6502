import QtQuick
import Talvenor

/// The pane on which a recording is started, seen while none is selected.
Item {
    id: view

    required property RecordState record

    Column {
        anchors.centerIn: parent
        spacing: 40

        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 8

            StaticText {
                anchors.horizontalCenter: parent.horizontalCenter
                text: view.record.isRecording ? L10n.recordingInProgress : L10n.readyToRecord
                color: view.record.isRecording ? Theme.red : Theme.secondary
                font.pixelSize: Theme.subheadline
                font.weight: Font.DemiBold
                font.capitalization: Font.AllUppercase
                font.letterSpacing: 2
            }
            StaticText {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: view.record.isRecording
                text: view.record.formattedDuration
                font.pixelSize: 56
                font.weight: Font.ExtraLight
                font.family: "monospace"
            }
        }
        RecordButton {
            anchors.horizontalCenter: parent.horizontalCenter
            isRecording: view.record.isRecording
            onClicked: view.record.toggleRecording()
        }
        Item {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 420
            height: 52

            Column {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: view.record.isRecording
                spacing: 16

                LevelMeter {
                    anchors.horizontalCenter: parent.horizontalCenter
                    level: view.record.audioLevel
                }
                Row {
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 6

                    Rectangle {
                        anchors.verticalCenter: parent.verticalCenter
                        width: 6
                        height: 6
                        radius: 3
                        color: view.record.hasSystemAudio ? Theme.green : Theme.orange
                    }
                    StaticText {
                        color: Theme.secondary
                        font.pixelSize: Theme.caption
                        text: {
                            if (view.record.hasSystemAudio)
                                return L10n.isGerman ? "Mikrofon + System-Audio" : "Microphone + System Audio";
                            return L10n.isGerman ? "Nur Mikrofon (System-Audio nicht verfuegbar)" : "Microphone only (System audio unavailable)";
                        }
                    }
                }
            }
            StaticText {
                anchors.horizontalCenter: parent.horizontalCenter
                visible: !view.record.isRecording
                text: L10n.clickToStart
                color: Theme.tertiary
                font.pixelSize: Theme.subheadline
            }
        }
    }

    Rectangle {
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 28
        visible: view.record.isProcessing
        width: status.implicitWidth + 40
        height: status.implicitHeight + 20
        radius: height / 2
        color: Theme.surface
        border.width: 1
        border.color: Theme.divider

        StaticText {
            id: status
            anchors.centerIn: parent
            text: view.record.processingStatus
            color: Theme.secondary
            font.pixelSize: Theme.caption
            font.weight: Font.Medium
        }
    }
}
