import QtQuick
import Talvenor

/// One item of the tool bar: a symbol, and a text or a badge after it.
PlainButton {
    id: item

    /// None if empty. It describes the item to those who cannot see it, unless a badge has more to say.
    property string tooltip
    /// None if empty.
    property string badge
    property color badgeColor: Theme.secondary

    color: Theme.secondary
    font.pixelSize: Theme.title3
    implicitHeight: 32
    horizontalPadding: 8
    Accessible.description: badge.length > 0 ? badge : (tooltip === spokenName ? "" : tooltip)

    contentItem: Row {
        spacing: 6

        IconLabel {
            anchors.verticalCenter: parent.verticalCenter
            isSpoken: false
            icon: item.icon.name
            text: item.text
            spacing: 4
            font: item.font
            color: item.color
        }
        Badge {
            objectName: item.objectName + "Badge"
            anchors.verticalCenter: parent.verticalCenter
            visible: item.badge.length > 0
            text: item.badge
            foreground: item.badgeColor
        }
    }
    background: Rectangle {
        radius: 8
        color: Theme.withOpacity(Theme.secondary, item.down ? 0.2 : item.isHovered ? 0.12 : 0)

        FocusRing {
            anchors.margins: 0
            radius: 8
            visible: item.visualFocus
        }
    }
    Tooltip {
        objectName: "tooltip"
        text: item.tooltip
        isWanted: item.isHovered && !item.down
    }
}
