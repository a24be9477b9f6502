pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// What can be done with one row of the list, as it stands when the menu is made.
ContextMenu {
    id: menu

    required property RecordingListModel recordings
    required property int index

    Component.onCompleted: {
        // A hidden entry would still take the arrow keys.
        if (recordings.canTranscribe(index))
            insertItem(1, transcribeEntry.createObject(menu) as MenuEntry);
        if (recordings.canSummarize(index))
            insertItem(1, summarizeEntry.createObject(menu) as MenuEntry);
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
