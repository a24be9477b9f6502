import QtQuick
import QtQuick.Templates as T
import Talvenor

/// An entry of a context menu.
T.MenuItem {
    id: entry

    property color foreground: Theme.primary

    implicitWidth: Math.max(180, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    padding: 8
    horizontalPadding: 14
    font.pixelSize: Theme.subheadline
    Accessible.name: text
    Accessible.onPressAction: if (enabled) {
        entry.menu.close();
        entry.triggered();
    }

    contentItem: Text {
        text: entry.text
        font: entry.font
        color: entry.foreground
        textFormat: Text.PlainText
    }
    background: Rectangle {
        radius: 6
        color: entry.highlighted || entry.hovered ? Theme.withOpacity(Theme.purple, 0.22) : "transparent"
    }
}
