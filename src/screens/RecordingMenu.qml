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
        while (count > 0)
            removeItem(itemAt(0));
        // Made in their order, since that is the order in which they are read out; and only those that apply, since a
        // hidden entry would still take the arrow keys.
        addItem(exportEntry.createObject(menu.contentItem) as MenuEntry);
        if (recordings.canTranscribe(index))
            addItem(transcribeEntry.createObject(menu.contentItem) as MenuEntry);
        if (recordings.canSummarize(index))
            addItem(summarizeEntry.createObject(menu.contentItem) as MenuEntry);
        addItem(deleteEntry.createObject(menu.contentItem) as MenuEntry);
        popup(row, x, y);
    }

    Component {
        id: exportEntry
        MenuEntry {
            text: L10n.export_
            onTriggered: menu.recordings.exportRecording(menu.index)
        }
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
    Component {
        id: deleteEntry
        MenuEntry {
            text: L10n.delete_
            foreground: Theme.red
            onTriggered: menu.recordings.deleteRecording(menu.index)
        }
    }
}
