import QtQuick
import Talvenor

/// What menus and tooltips lie on.
Item {
    id: background

    property real radius: 9

    SoftShadow {
        anchors.fill: parent
        color: Qt.rgba(0, 0, 0, Theme.isDark ? 0.45 : 0.18)
        blurRadius: 16
        offsetY: 4
        cornerRadius: background.radius
    }
    Rectangle {
        anchors.fill: parent
        radius: background.radius
        color: Theme.popup
    }
    GradientFill {
        anchors.fill: parent
        radius: background.radius
        borderWidth: 1
        borderStartColor: Theme.popupBorder
    }
}
