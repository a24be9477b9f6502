import QtQuick
import Talvenor

/// Shows where the keyboard is; put into the item that has the focus.
GradientFill {
    anchors.fill: parent
    anchors.margins: -3
    radius: 9
    borderWidth: 2
    borderStartColor: Theme.focusRing
}
