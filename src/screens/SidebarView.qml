pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The left column: the name, the wide button, the search field and the list.
Rectangle {
    id: sidebar

    required property RecordState record
    required property RecordingListModel recordings

    readonly property int selectedRow: recordings.selectedRow

    color: Theme.sidebar
    onSelectedRowChanged: if (selectedRow >= 0) {
        list.currentIndex = selectedRow;
        // A new recording comes in above what is visible.
        list.positionViewAtIndex(selectedRow, ListView.Contain);
    }

    Column {
        id: top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.topMargin: 12
        spacing: 14

        Row {
            spacing: 8

            Image {
                anchors.verticalCenter: parent.verticalCenter
                width: 28
                height: 28
                source: "qrc:/talvenor/AppIcon.png"
                sourceSize.width: 56
                sourceSize.height: 56
            }
            StaticText {
                anchors.verticalCenter: parent.verticalCenter
                text: L10n.appName
                font.pixelSize: Theme.title3
                font.weight: Font.Bold
            }
        }
        WideButton {
            width: parent.width
            record: sidebar.record
        }
        Item {
            width: parent.width
            height: search.implicitHeight

            InputField {
                id: search
                anchors.fill: parent
                anchors.rightMargin: clear.visible ? clear.width + 6 : 0
                placeholder: L10n.searchRecordings
                font.pixelSize: Theme.subheadline
                onTextChanged: {
                    sidebar.recordings.searchText = text;
                    list.positionViewAtBeginning();
                }
                // A screen made anew finds the filter as it was left.
                Component.onCompleted: text = sidebar.recordings.searchText
            }
            PushButton {
                id: clear
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                look: PushButton.Glyph
                visible: search.text.length > 0
                text: "✕"
                spokenName: L10n.isGerman ? "Suche leeren" : "Clear Search"
                onClicked: {
                    search.text = "";
                    search.forceActiveFocus();
                }
            }
        }
        Rectangle {
            width: parent.width
            height: 1
            color: Theme.divider
        }
    }

    ListView {
        id: list
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: top.bottom
        anchors.bottom: parent.bottom
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        anchors.topMargin: 6
        clip: true
        spacing: 2
        visible: count > 0
        activeFocusOnTab: true
        keyNavigationEnabled: true
        boundsBehavior: Flickable.StopAtBounds
        model: sidebar.recordings
        Accessible.role: Accessible.List
        Accessible.name: L10n.recordings
        T.ScrollBar.vertical: ScrollIndicatorBar {}
        onActiveFocusChanged: if (activeFocus && currentIndex < 0)
            currentIndex = 0

        delegate: RecordingRow {
            width: ListView.view.width
            onChosen: sidebar.recordings.select(index)
            onMenuRequested: (x, y) => menu.openFor(this, recordingId, x, y)
        }
    }
    RecordingMenu {
        id: menu
        recordings: sidebar.recordings
    }
    EmptyState {
        anchors.centerIn: list
        width: list.width
        visible: list.count === 0
        title: search.text.length > 0 ? L10n.noResults : L10n.noRecordingsYet
        hint: search.text.length > 0 ? "" : L10n.noRecordingsSubtitle
    }
}
