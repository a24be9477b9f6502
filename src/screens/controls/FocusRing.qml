import QtQuick
import Talvenor

/// Shows where the keyboard is; put into the item that has the focus.
Rectangle {
    anchors.fill: parent
    anchors.margins: -3
    color: "transparent"
    border.width: 2
    border.color: Theme.focusRing
}
