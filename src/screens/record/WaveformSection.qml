import QtQuick
import Talvenor

/// Below the record button: the levels and the sources of a session, else how to start one.
Item {
    id: section

    required property RecordState record
    // How much of the recording look there is.
    property real look: record.isRecording ? 1 : 0

    implicitHeight: 52 + (16 + source.implicitHeight) * look

    Behavior on look {
        EaseMotion {
            duration: 450
        }
    }

    AudioWaveform {
        objectName: "waveform"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(340, parent.width)
        height: 52
        opacity: section.look
        scale: 0.92 + 0.08 * section.look
        visible: opacity > 0
        levels: section.record.audioLevels
        isRecording: section.record.isRecording
        lowerColor: Theme.purple
        upperColor: Theme.blue
        Accessible.role: Accessible.ProgressBar
        Accessible.name: L10n.isGerman ? "Eingangspegel" : "Input Level"
    }
    SourceIndicator {
        id: source
        objectName: "sourceIndicator"
        anchors.horizontalCenter: parent.horizontalCenter
        y: 52 + 16
        width: Math.min(implicitWidth, parent.width)
        opacity: section.look
        visible: opacity > 0
        hasSystemAudio: section.record.hasSystemAudio
    }
    StaticText {
        objectName: "hint"
        anchors.horizontalCenter: parent.horizontalCenter
        y: (52 - height) / 2
        opacity: 1 - section.look
        visible: opacity > 0
        text: L10n.clickToStart
        color: Theme.tertiary
        font.pixelSize: Theme.scaled(13)
    }
}
