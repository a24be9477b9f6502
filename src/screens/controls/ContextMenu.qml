pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A context menu; entries that do not apply are not added.
T.Menu {
    id: menu

    padding: 5
    focus: true
    margins: 8
    overlap: 0
    implicitWidth: 200
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: false
    }
    background: Rectangle {
        radius: 9
        color: Theme.sheet
        border.width: 1
        border.color: Theme.divider
    }
}
