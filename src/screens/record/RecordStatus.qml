import QtQuick
import Talvenor

/// The caption above the record button, and under it the running time of a session.
Item {
    id: status

    required property bool isRecording
    required property string duration
    required property bool isOnScreen
    // How much of the recording look there is.
    property real look: isRecording ? 1 : 0

    implicitWidth: Math.max(caption.implicitWidth, timer.implicitWidth)
    implicitHeight: caption.implicitHeight + (8 + timer.implicitHeight) * look

    Behavior on look {
        EaseMotion {
            duration: 450
        }
    }

    StaticText {
        id: caption
        objectName: "caption"
        // The space after the last letter is not part of the word.
        x: (status.width - width + font.letterSpacing) / 2
        text: status.isRecording ? L10n.recordingInProgress : L10n.readyToRecord
        color: status.isRecording ? Theme.redText : Theme.secondary
        font.pixelSize: Theme.scaled(13)
        font.weight: Font.DemiBold
        font.capitalization: Font.AllUppercase
        font.letterSpacing: 2

        Behavior on color {
            ColorAnimation {
                duration: 450
                easing.type: Easing.BezierSpline
                easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
            }
        }
    }
    RollingDigits {
        id: timer
        objectName: "timer"
        anchors.horizontalCenter: parent.horizontalCenter
        y: caption.implicitHeight + 8
        opacity: status.look
        visible: opacity > 0
        text: status.duration
        isAnimated: status.isRecording && status.isOnScreen
        font.family: Theme.monospaced
        font.pixelSize: Theme.scaled(56)
        // The lightest of nine weights.
        font.weight: Font.Thin
    }
}
