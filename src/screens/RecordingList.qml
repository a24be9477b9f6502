import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The list of recordings, scrolled and operated by pointer and keyboard. Rows are made when they come into view and
/// used again when they have left it.
ListView {
    id: list

    required property RecordingListModel recordings
    /// What the scroll bar lies at the right edge of.
    required property Item barParent
    readonly property int selectedRow: recordings.selectedRow
    /// The keyboard was used since the pointer was, so that the ring tells something.
    property bool isKeyboardUsed: true

    signal menuRequested(string id, real x, real y)

    /// By the pointer or by assistive technology.
    function choose(row: int): void {
        isKeyboardUsed = false;
        currentIndex = row;
        forceActiveFocus(Qt.MouseFocusReason);
        recordings.select(row);
    }

    /// Makes the row the current one, and brings it into view.
    function goTo(row: int): void {
        if (count === 0)
            return;
        isKeyboardUsed = true;
        currentIndex = Math.max(0, Math.min(count - 1, row));
        showCurrent();
    }

    function showCurrent(): void {
        if (currentIndex === 0)
            positionViewAtBeginning();
        else
            positionViewAtIndex(currentIndex, ListView.Contain);
    }

    topMargin: 6
    spacing: 2
    clip: true
    activeFocusOnTab: true
    keyNavigationEnabled: false
    // Scrolled by the keys only: a row that becomes the current one otherwise leaves everything where it is.
    highlightFollowsCurrentItem: false
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    cacheBuffer: 0
    model: recordings
    Accessible.role: Accessible.List
    Accessible.name: L10n.recordings
    onSelectedRowChanged: if (selectedRow >= 0)
        currentIndex = selectedRow
    onActiveFocusChanged: {
        if (!activeFocus)
            isKeyboardUsed = true;
        else if (isKeyboardUsed && count > 0)
            goTo(currentIndex >= 0 ? currentIndex : Math.max(0, selectedRow));
    }
    Keys.onPressed: event => {
        const page = currentItem ? Math.max(1, Math.floor(height / (currentItem.height + spacing)) - 1) : 1;
        const isMenuKey = event.key === Qt.Key_Menu || event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier);
        event.accepted = true;
        if (event.key === Qt.Key_Up)
            goTo(currentIndex - 1);
        else if (event.key === Qt.Key_Down)
            goTo(currentIndex + 1);
        else if (event.key === Qt.Key_PageUp)
            goTo(currentIndex - page);
        else if (event.key === Qt.Key_PageDown)
            goTo(currentIndex + page);
        else if (event.key === Qt.Key_Home)
            goTo(0);
        else if (event.key === Qt.Key_End)
            goTo(count - 1);
        else if (currentItem && [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key))
            recordings.select(currentIndex);
        else if (currentItem && isMenuKey) {
            goTo(currentIndex);
            (currentItem as RecordingRow).menuRequested(24, currentItem.height / 2);
        } else
            event.accepted = false;
    }

    T.ScrollBar.vertical: ScrollIndicatorBar {
        parent: list.barParent
        x: list.barParent.width - width
        y: list.y
        height: list.height
    }
    Item {
        parent: list.contentItem
        visible: list.activeFocus && list.isKeyboardUsed && list.currentItem !== null
        x: list.currentItem ? list.currentItem.x : 0
        y: list.currentItem ? list.currentItem.y : 0
        z: 1
        width: list.currentItem ? list.currentItem.width : 0
        height: list.currentItem ? list.currentItem.height : 0

        FocusRing {
            objectName: "rowRing"
            anchors.margins: 1
            radius: 9
        }
    }
}
