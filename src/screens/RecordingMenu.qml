pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// What can be done with one row of the list, as it stands when the menu opens.
ContextMenu {
    id: menu

    required property RecordingListModel recordings
    property int index: -1

    /// Opens at a place of `row`, with what can be done with its recording now.
    function openFor(row: Item, rowIndex: int, x: real, y: real) {
        index = rowIndex;
        // A hidden entry would still take the arrow keys.
        while (count > 2)
            removeItem(itemAt(1));
        if (recordings.canTranscribe(index))
            insertItem(1, transcribeEntry.createObject(menu) as MenuEntry);
        if (recordings.canSummarize(index))
            insertItem(1, summarizeEntry.createObject(menu) as MenuEntry);
        popup(row, x, y);
    }

    MenuEntry {
        text: L10n.export_
        onTriggered: menu.recordings.exportRecording(menu.index)
    }
    MenuEntry {
        text: L10n.delete_
        foreground: Theme.red
        onTriggered: menu.recordings.deleteRecording(menu.index)
    }

    Component {
        id: transcribeEntry
        MenuEntry {
            text: L10n.transcribe
            onTriggered: menu.recordings.transcribe(menu.index)
        }
    }
    Component {
        id: summarizeEntry
        MenuEntry {
            text: L10n.summarize
            onTriggered: menu.recordings.summarize(menu.index)
        }
    }
}
