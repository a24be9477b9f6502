import QtQuick
import Talvenor

/// A small sign that something is under way. It turns while it can be seen; nothing moves otherwise.
Item {
    id: spinner

    property color color: Theme.white

    implicitWidth: 16
    implicitHeight: 16

    RingStroke {
        anchors.fill: parent
        anchors.margins: 1
        lineWidth: 2
        colors: [Theme.withOpacity(spinner.color, 0.25)]
    }
    RingStroke {
        anchors.fill: parent
        anchors.margins: 1
        lineWidth: 2
        fraction: 0.28
        hasRoundCaps: true
        colors: [spinner.color]
    }
    SequentialAnimation on rotation {
        loops: Animation.Infinite
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden && spinner.Window.visibility !== Window.Minimized

        NumberAnimation {
            from: 0
            to: 360
            duration: 900
        }
    }
}
