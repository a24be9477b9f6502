import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The summary as its text.
Item {
    id: tab

    required property SelectedRecording recording

    Flickable {
        id: area
        anchors.fill: parent
        clip: true
        visible: tab.recording.hasSummary
        contentHeight: text.implicitHeight + 48
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: ScrollIndicatorBar {}

        SelectableText {
            id: text
            x: 24
            y: 24
            width: Math.min(720, area.width - 48)
            text: tab.recording.summary
            activeFocusOnTab: true
        }
    }
    EmptyState {
        anchors.centerIn: parent
        width: parent.width - 48
        visible: !tab.recording.hasSummary
        title: L10n.noSummaryYet
        hint: L10n.noSummaryHint
    }
}
