import QtQuick
import Talvenor

/// A change that moves as a weight on a spring does. One that comes while another is under way starts from rest.
NumberAnimation {
    /// Seconds of one undamped swing.
    property real response: 0.55
    property real dampingFraction: 0.825

    duration: Spring.duration(response, dampingFraction)
    easing.type: Easing.BezierSpline
    easing.bezierCurve: Spring.curve(response, dampingFraction)
}
