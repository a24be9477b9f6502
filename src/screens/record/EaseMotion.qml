import QtQuick

/// A change that begins and ends gently.
NumberAnimation {
    duration: 350
    easing.type: Easing.BezierSpline
    easing.bezierCurve: [0.42, 0, 0.58, 1, 1, 1]
}
