pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// The left column: the name, the wide button, the search field and the list.
Rectangle {
    id: sidebar

    required property RecordState record
    required property RecordingListModel recordings

    readonly property real minimumWidth: 280
    readonly property string searchText: search.text
    /// Of the recording under the pointer; empty for none.
    property string hoveredId

    implicitWidth: 300
    implicitHeight: 640
    color: Theme.sidebar
    // The filter is this view's: one that is made anew begins with all.
    Component.onCompleted: recordings.searchText = ""

    FontMetrics {
        id: titleMetrics
        font.pixelSize: Theme.subheadline
        font.weight: Font.Medium
    }
    FontMetrics {
        id: detailMetrics
        font.pixelSize: Theme.caption2
    }
    Item {
        id: header
        objectName: "sidebarHeader"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.topMargin: 12
        height: Math.max(28, Math.ceil(name.implicitHeight))

        Image {
            id: icon
            objectName: "appIcon"
            anchors.verticalCenter: parent.verticalCenter
            width: 28
            height: 28
            fillMode: Image.PreserveAspectFit
            source: "qrc:/talvenor/AppIcon.png"
            sourceSize.width: Math.ceil(28 * Screen.devicePixelRatio)
            sourceSize.height: Math.ceil(28 * Screen.devicePixelRatio)
        }
        Symbol {
            anchors.fill: icon
            visible: icon.status === Image.Error
            name: visible ? "waveform.circle.fill" : ""
            size: Theme.title2
            gradientStart: Theme.purple
            gradientEnd: Theme.blue
        }
        StaticText {
            id: name
            objectName: "appName"
            anchors.left: icon.right
            anchors.leftMargin: 8
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: L10n.appName
            font.pixelSize: Theme.title3
            font.weight: Font.Bold
            elide: Text.ElideRight
        }
    }
    WideButton {
        id: wideButton
        objectName: "wideButton"
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: header.bottom
        anchors.topMargin: 14
        record: sidebar.record
    }
    SearchField {
        id: search
        objectName: "searchField"
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: wideButton.bottom
        anchors.topMargin: 14
        placeholder: L10n.searchRecordings
        onTextChanged: {
            sidebar.recordings.searchText = text;
            list.showTop();
        }
    }
    Divider {
        id: divider
        objectName: "sidebarDivider"
        anchors.left: header.left
        anchors.right: header.right
        anchors.top: search.bottom
        anchors.topMargin: 10
    }
    RecordingList {
        id: list
        objectName: "recordingList"

        readonly property real titleHeight: Math.ceil(titleMetrics.height)
        readonly property real detailHeight: Math.ceil(detailMetrics.height)

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: divider.bottom
        anchors.bottom: parent.bottom
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        visible: sidebar.recordings.count > 0
        recordings: sidebar.recordings
        rowHeight: Math.max(36, titleHeight + 3 + detailHeight) + 16
        barParent: sidebar
        onMenuRequested: (id, x, y) => menu.openFor(id, list, x, y)

        delegate: RecordingRow {
            width: list.width
            height: list.rowHeight
            titleHeight: list.titleHeight
            detailHeight: list.detailHeight
            focus: index === sidebar.recordings.currentRow
            onActiveFocusChanged: if (activeFocus) {
                list.focusedRow = this;
                // Assistive technology puts the keyboard on any row; one that has been removed has no number.
                if (index >= 0)
                    sidebar.recordings.currentRow = index;
            }
            isInView: y + height > list.contentY && y < list.contentY + list.height
            isHovered: recordingId === sidebar.hoveredId
            onPointerEntered: sidebar.hoveredId = recordingId
            onPointerLeft: if (isHovered)
                sidebar.hoveredId = ""
            onChosen: list.choose(index)
            onMenuRequested: (x, y) => {
                sidebar.recordings.currentRow = index;
                list.menuRequested(recordingId, this.x + x, this.y - list.contentY + y);
            }
        }
    }
    RecordingMenu {
        id: menu
        recordings: sidebar.recordings
    }
    EmptyState {
        objectName: "emptyState"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: divider.bottom
        anchors.bottom: parent.bottom
        visible: sidebar.recordings.count === 0
        circleColor: Theme.withOpacity(Theme.purple, 0.08)
        diameter: 80
        symbol: "waveform.slash"
        symbolSize: Theme.scaled(30)
        title: sidebar.searchText.length > 0 ? L10n.noResults : L10n.noRecordingsYet
        hint: sidebar.searchText.length > 0 ? "" : L10n.noRecordingsSubtitle
    }
}
