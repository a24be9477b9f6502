import QtQuick
import QtQuick.Templates as T
import Talvenor

/// An entry of a context menu, with the symbol `icon.name` before its text.
T.MenuItem {
    id: entry

    /// For what cannot be taken back.
    property bool isDestructive: false
    property color foreground: isDestructive ? Theme.redText : Theme.primary

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    verticalPadding: 7
    horizontalPadding: 10
    hoverEnabled: true
    font.pixelSize: Theme.subheadline
    Accessible.name: text
    Accessible.onPressAction: if (enabled) {
        entry.menu.close();
        entry.triggered();
    }

    contentItem: IconLabel {
        isSpoken: false
        icon: entry.icon.name
        text: entry.text
        font: entry.font
        spacing: 8
        color: entry.foreground
        opacity: entry.enabled ? 1 : 0.4
    }
    background: Rectangle {
        radius: 5
        color: entry.highlighted || entry.hovered ? Theme.withOpacity(entry.isDestructive ? Theme.red : Theme.purple, Theme.isDark ? 0.28 : 0.14) : "transparent"
    }
}
