import QtQuick

/// Turns while it is visible; nothing moves otherwise.
Item {
    id: spinner
    implicitWidth: 16
    implicitHeight: 16

    Rectangle {
        anchors.fill: parent
        radius: width / 2
        color: "transparent"
        border.width: 2
        border.color: Qt.rgba(1, 1, 1, 0.35)
    }
    Rectangle {
        width: 5
        height: 5
        radius: 2.5
        color: "#ffffff"
        x: (spinner.width - width) / 2
        y: -1
    }
    RotationAnimator on rotation {
        from: 0
        to: 360
        duration: 900
        loops: Animation.Infinite
        running: spinner.visible
    }
}
