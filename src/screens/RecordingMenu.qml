pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// What can be done with one recording of the list, as it stands when the menu opens.
///
/// It keeps the recording's id and no row: rows come and go while it is open, and nothing here asks before it deletes.
ContextMenu {
    id: menu

    required property RecordingListModel recordings
    property string recordingId

    /// Opens at a place of `row`, with what can be done now with the recording that has this id.
    function openFor(row: Item, id: string, x: real, y: real) {
        recordingId = id;
        while (count > 0)
            removeItem(itemAt(0));
        // Made in their order, since that is the order in which they are read out; and only those that apply, since a
        // hidden entry would still take the arrow keys.
        addItem(exportEntry.createObject(menu.contentItem) as MenuEntry);
        if (recordings.canTranscribe(recordingId))
            addItem(transcribeEntry.createObject(menu.contentItem) as MenuEntry);
        if (recordings.canSummarize(recordingId))
            addItem(summarizeEntry.createObject(menu.contentItem) as MenuEntry);
        addItem(deleteEntry.createObject(menu.contentItem) as MenuEntry);
        popup(row, x, y);
    }

    Component {
        id: exportEntry
        MenuEntry {
            text: L10n.export_
            onTriggered: menu.recordings.exportRecording(menu.recordingId)
        }
    }
    Component {
        id: transcribeEntry
        MenuEntry {
            text: L10n.transcribe
            onTriggered: menu.recordings.transcribe(menu.recordingId)
        }
    }
    Component {
        id: summarizeEntry
        MenuEntry {
            text: L10n.summarize
            onTriggered: menu.recordings.summarize(menu.recordingId)
        }
    }
    Component {
        id: deleteEntry
        MenuEntry {
            text: L10n.delete_
            foreground: Theme.red
            onTriggered: menu.recordings.deleteRecording(menu.recordingId)
        }
    }
}
