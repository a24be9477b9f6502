pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A context menu, as wide as its widest entry; entries that do not apply are not added.
T.Menu {
    id: menu

    property real widest: 200

    padding: 5
    focus: true
    margins: 8
    overlap: 0
    implicitWidth: widest
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    onAboutToShow: {
        let width = 200;
        for (let i = 0; i < count; ++i)
            width = Math.max(width, itemAt(i).implicitWidth + leftPadding + rightPadding);
        widest = Math.min(360, width);
    }

    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        currentIndex: menu.currentIndex
        interactive: false
    }
    background: PopupBackground {}
}
