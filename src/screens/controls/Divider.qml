import QtQuick
import Talvenor

/// A line between two parts, one above the other.
Rectangle {
    implicitWidth: 100
    implicitHeight: 1
    color: Theme.divider
}
