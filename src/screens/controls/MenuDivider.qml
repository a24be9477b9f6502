import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A line between groups of a menu's entries.
T.MenuSeparator {
    implicitWidth: 100
    implicitHeight: 11
    verticalPadding: 5
    horizontalPadding: 10
    contentItem: Rectangle {
        color: Theme.divider
    }
}
