import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The list of recordings, scrolled and operated by pointer and keyboard. Rows are made when they come into view and
/// used again when they have left it.
///
/// Which row the keyboard acts on is the model's knowledge: the view would scroll to a current item of its own wherever
/// a change of the list puts it, and what is seen stays where it is.
ListView {
    id: list

    required property RecordingListModel recordings
    required property real rowHeight
    /// What the scroll bar lies at the right edge of.
    required property Item barParent
    readonly property int selectedRow: recordings.selectedRow
    /// The keyboard was used since the pointer was, so that the ring tells something.
    property bool isKeyboardUsed: true
    /// The row that has the keyboard.
    property Item focusedRow

    signal menuRequested(string id, real x, real y)

    /// By the pointer or by assistive technology.
    function choose(row: int): void {
        isKeyboardUsed = false;
        recordings.currentRow = row;
        forceActiveFocus(Qt.MouseFocusReason);
        recordings.select(row);
    }

    /// Makes the row the current one, and brings it into view.
    function goTo(row: int): void {
        if (recordings.count === 0)
            return;
        isKeyboardUsed = true;
        recordings.currentRow = Math.max(0, Math.min(recordings.count - 1, row));
        if (recordings.currentRow === 0)
            showTop();
        else
            positionViewAtIndex(recordings.currentRow, ListView.Contain);
    }

    /// The row that has the keyboard, else the current one; a row that has been removed has no number.
    function focusedIndex(): int {
        const index = (Window.activeFocusItem as RecordingRow)?.index ?? -1;
        return index >= 0 ? index : recordings.currentRow;
    }

    function showTop(): void {
        // The rows have to be there before the view can be moved to the first of them.
        forceLayout();
        positionViewAtBeginning();
        contentY = originY - topMargin;
    }

    topMargin: 6
    spacing: 2
    clip: true
    activeFocusOnTab: true
    keyNavigationEnabled: false
    currentIndex: -1
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    cacheBuffer: 0
    model: recordings
    Accessible.role: Accessible.List
    Accessible.name: L10n.recordings
    onSelectedRowChanged: if (selectedRow >= 0)
        recordings.currentRow = selectedRow
    onActiveFocusChanged: {
        if (!activeFocus)
            isKeyboardUsed = true;
        else if (isKeyboardUsed)
            goTo(focusedIndex());
    }
    Keys.onPressed: event => {
        const row = recordings.currentRow;
        const page = Math.max(1, Math.floor(height / (rowHeight + spacing)) - 1);
        const isMenuKey = event.key === Qt.Key_Menu || event.key === Qt.Key_F10 && (event.modifiers & Qt.ShiftModifier);
        event.accepted = true;
        if (event.key === Qt.Key_Up)
            goTo(row - 1);
        else if (event.key === Qt.Key_Down)
            goTo(row + 1);
        else if (event.key === Qt.Key_PageUp)
            goTo(row - page);
        else if (event.key === Qt.Key_PageDown)
            goTo(row + page);
        else if (event.key === Qt.Key_Home)
            goTo(0);
        else if (event.key === Qt.Key_End)
            goTo(recordings.count - 1);
        else if (row >= 0 && [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space].includes(event.key))
            recordings.select(row);
        else if (row >= 0 && isMenuKey) {
            goTo(row);
            (itemAtIndex(row) as RecordingRow).menuRequested(24, rowHeight / 2);
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
        visible: list.isKeyboardUsed && list.focusedRow !== null && list.focusedRow.activeFocus
        x: list.focusedRow?.x ?? 0
        y: list.focusedRow?.y ?? 0
        z: 1
        width: list.focusedRow?.width ?? 0
        height: list.focusedRow?.height ?? 0

        FocusRing {
            objectName: "rowRing"
            anchors.margins: 1
            radius: 9
        }
    }
}
