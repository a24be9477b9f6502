import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Talvenor

/// A column that scrolls where it is higher than its room. The keys of a page and the wheel move it, and what the
/// keyboard reaches in it comes into view.
Flickable {
    id: area

    default property alias content: column.data
    property alias spacing: column.spacing
    /// Around the column.
    property real padding: 0
    readonly property Item focused: Window.activeFocusItem

    function scrollTo(y: real): void {
        contentY = Math.max(0, Math.min(contentHeight - height, y));
    }

    function isAncestorOf(item: Item): bool {
        for (let i = item; i; i = i.parent) {
            if (i === column)
                return true;
        }
        return false;
    }

    implicitWidth: column.implicitWidth + 2 * padding
    implicitHeight: contentHeight
    contentWidth: width
    contentHeight: column.implicitHeight + 2 * padding
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    activeFocusOnTab: false
    T.ScrollBar.vertical: ScrollIndicatorBar {}
    onFocusedChanged: {
        if (!focused || !isAncestorOf(focused))
            return;
        const margin = 12;
        const place = focused.mapToItem(column, 0, 0, focused.width, focused.height);
        if (place.y + padding - margin < contentY)
            scrollTo(place.y + padding - margin);
        else if (place.y + place.height + padding + margin > contentY + height)
            scrollTo(place.y + place.height + padding + margin - height);
    }
    Keys.onPressed: event => {
        const steps = {
            [Qt.Key_Up]: -40,
            [Qt.Key_Down]: 40,
            [Qt.Key_PageUp]: -0.9 * height,
            [Qt.Key_PageDown]: 0.9 * height,
            [Qt.Key_Home]: -contentHeight,
            [Qt.Key_End]: contentHeight
        };
        if (contentHeight <= height || steps[event.key] === undefined)
            return;
        event.accepted = true;
        scrollTo(contentY + steps[event.key]);
    }

    ColumnLayout {
        id: column
        x: area.padding
        y: area.padding
        width: area.width - 2 * area.padding
        spacing: 0
    }
}
