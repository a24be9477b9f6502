import QtQuick
import Talvenor

/// The program's one window.
Window {
    id: window

    required property ContentState content

    width: 1100
    height: 720
    minimumWidth: 960
    minimumHeight: 640
    visible: true
    title: L10n.appName
    color: Theme.windowBackground

    ContentView {
        anchors.fill: parent
        content: window.content
    }
}
