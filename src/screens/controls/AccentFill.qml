import QtQuick
import Talvenor

/// The accent gradient, or that of a running recording: from the top left corner to the bottom right one, or from left
/// to right.
GradientFill {
    property bool isRecording: false
    property bool isHorizontal: false

    startColor: isRecording ? Theme.recordingStart : Theme.purple
    endColor: isRecording ? Theme.recordingEnd : Theme.blue
    endPoint: isHorizontal ? Qt.point(1, 0) : Qt.point(1, 1)
}
