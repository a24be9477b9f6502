import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A slim scroll bar, there only while there is something to scroll.
T.ScrollBar {
    id: bar

    implicitWidth: 10
    implicitHeight: 10
    padding: 2
    // Clear of the round corners of what it lies in.
    topPadding: 4
    bottomPadding: 6
    minimumSize: 0.06
    visible: size < 1
    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: Theme.withOpacity(Theme.primary, bar.pressed || bar.hovered ? 0.5 : 0.25)
    }
}
