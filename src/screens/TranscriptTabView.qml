pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The transcript as a list of blocks with their times.
Item {
    id: tab

    required property SelectedRecording recording

    ListView {
        id: list
        anchors.fill: parent
        clip: true
        spacing: 6
        topMargin: 16
        bottomMargin: 16
        visible: count > 0
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        model: tab.recording.transcript
        Accessible.role: Accessible.List
        Accessible.name: L10n.transcript
        T.ScrollBar.vertical: ScrollIndicatorBar {}
        Keys.onUpPressed: contentY = Math.max(originY - topMargin, contentY - 60)
        Keys.onDownPressed: contentY = Math.max(originY - topMargin, Math.min(originY + contentHeight + bottomMargin - height, contentY + 60))

        delegate: Item {
            id: row

            required property string timestamp
            required property string text
            required property string speaker

            width: ListView.view.width
            implicitHeight: block.height

            Text {
                id: time
                anchors.left: parent.left
                anchors.leftMargin: 20
                y: 9
                width: 44
                text: row.timestamp
                color: Theme.tertiary
                font.pixelSize: Theme.caption
                font.family: "monospace"
                horizontalAlignment: Text.AlignRight
            }
            Rectangle {
                id: block
                anchors.left: time.right
                anchors.leftMargin: 14
                anchors.right: parent.right
                anchors.rightMargin: 20
                height: lines.implicitHeight + 16
                radius: 10
                color: Theme.surface

                Column {
                    id: lines
                    x: 12
                    y: 8
                    width: parent.width - 24
                    spacing: 2

                    StaticText {
                        visible: row.speaker.length > 0
                        text: row.speaker
                        color: Theme.accentText
                        font.pixelSize: Theme.caption
                        font.weight: Font.DemiBold
                    }
                    SelectableText {
                        width: parent.width
                        text: row.text
                        Accessible.description: row.timestamp
                    }
                }
            }
        }
    }
    EmptyState {
        anchors.centerIn: parent
        width: parent.width - 48
        visible: list.count === 0
        title: L10n.noTranscriptYet
        hint: L10n.noTranscriptHint
    }
}
