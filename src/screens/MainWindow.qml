import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The program's one window. Of the two kinds of window this one gives the focus back to where it was when a sheet or
/// a menu closes.
T.ApplicationWindow {
    id: window

    required property ContentState content

    width: 1100
    height: 720
    // The sign-in screen can do with less than the main window's content, which takes the room that it needs.
    minimumWidth: content.isLoggedIn ? 960 : 500
    minimumHeight: content.isLoggedIn ? 640 : 600
    onMinimumWidthChanged: if (width < minimumWidth)
        width = minimumWidth
    onMinimumHeightChanged: if (height < minimumHeight)
        height = minimumHeight
    visible: true
    title: L10n.appName
    color: Theme.windowBackground
    // Controls would otherwise take the face that Qt Quick has for them.
    font.family: usual.font.family

    FontMetrics {
        id: usual
    }
    ContentView {
        anchors.fill: parent
        focus: true
        content: window.content
    }
}
