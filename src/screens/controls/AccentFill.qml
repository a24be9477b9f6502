import QtQuick
import Talvenor

/// The accent gradient, or that of a running recording.
GradientFill {
    property bool isRecording: false

    startColor: isRecording ? Theme.recordingStart : Theme.purple
    endColor: isRecording ? Theme.recordingEnd : Theme.blue
}
