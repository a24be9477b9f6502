pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// What can be done with one recording of the list, as it stands when the menu opens.
///
/// It keeps the recording's id and no row: rows come and go while it is open, and nothing here asks before it deletes.
ContextMenu {
    id: menu

    required property RecordingListModel recordings
    property string recordingId

    /// Opens at a place of `area`, with what can be done now with the recording that has this id.
    function openFor(id: string, area: Item, x: real, y: real): void {
        recordingId = id;
        while (count > 0)
            takeItem(0).destroy();
        // Made in their order, since that is the order in which they are read out; and only those that apply, since a
        // hidden entry would still take the arrow keys.
        addItem(exportEntry.createObject(menu.contentItem) as T.MenuItem);
        if (recordings.canTranscribe(recordingId))
            addItem(transcribeEntry.createObject(menu.contentItem) as T.MenuItem);
        if (recordings.canSummarize(recordingId))
            addItem(summarizeEntry.createObject(menu.contentItem) as T.MenuItem);
        addItem(divider.createObject(menu.contentItem) as T.MenuSeparator);
        addItem(deleteEntry.createObject(menu.contentItem) as T.MenuItem);
        popup(area, x, y);
    }

    Component {
        id: exportEntry
        MenuEntry {
            text: L10n.export_
            icon.name: "square.and.arrow.up"
            onTriggered: menu.recordings.exportRecording(menu.recordingId)
        }
    }
    Component {
        id: transcribeEntry
        MenuEntry {
            text: L10n.transcribe
            icon.name: "text.bubble"
            onTriggered: menu.recordings.transcribe(menu.recordingId)
        }
    }
    Component {
        id: summarizeEntry
        MenuEntry {
            text: L10n.summarize
            icon.name: "sparkles"
            onTriggered: menu.recordings.summarize(menu.recordingId)
        }
    }
    Component {
        id: divider
        MenuDivider {}
    }
    Component {
        id: deleteEntry
        MenuEntry {
            text: L10n.delete_
            icon.name: "trash"
            isDestructive: true
            onTriggered: menu.recordings.deleteRecording(menu.recordingId)
        }
    }
}
