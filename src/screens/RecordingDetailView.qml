import QtQuick
import QtQuick.Layouts
import Talvenor

/// The pane of the selected recording: title, status, actions, and the three tabs.
Item {
    id: view

    required property SelectedRecording recording
    property int selectedTab: 0
    property bool editingTitle: false

    function editTitle() {
        titleField.text = recording.title;
        editingTitle = true;
        titleField.forceActiveFocus();
        titleField.selectAll();
    }

    RowLayout {
        id: header
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.leftMargin: 24
        anchors.rightMargin: 24
        anchors.topMargin: 18
        spacing: 16

        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            spacing: 6

            StaticText {
                id: titleText
                Layout.fillWidth: true
                visible: !view.editingTitle
                text: view.recording.title
                font.pixelSize: Theme.title2
                font.weight: Font.Bold
                elide: Text.ElideRight
                maximumLineCount: 1
                activeFocusOnTab: true
                Accessible.description: L10n.isGerman ? "Eingabetaste zum Umbenennen" : "Press Enter to rename"
                Accessible.focusable: true
                Accessible.focused: activeFocus
                Accessible.onPressAction: view.editTitle()
                Keys.onReturnPressed: view.editTitle()
                Keys.onEnterPressed: view.editTitle()

                FocusRing {
                    radius: 6
                    visible: titleText.activeFocus
                }
                TapHandler {
                    onDoubleTapped: view.editTitle()
                }
            }
            InputField {
                id: titleField
                Layout.fillWidth: true
                visible: view.editingTitle
                placeholder: "Title" // the same word in both languages
                font.pixelSize: Theme.title2
                font.weight: Font.Bold
                onAccepted: {
                    view.recording.rename(text);
                    view.editingTitle = false;
                }
            }
            Row {
                spacing: 12

                StaticText {
                    anchors.verticalCenter: parent.verticalCenter
                    text: view.recording.formattedDate
                    color: Theme.secondary
                    font.pixelSize: Theme.caption
                }
                StaticText {
                    anchors.verticalCenter: parent.verticalCenter
                    text: view.recording.formattedDuration
                    color: Theme.secondary
                    font.pixelSize: Theme.caption
                }
                StatusPill {
                    anchors.verticalCenter: parent.verticalCenter
                    text: view.recording.statusText
                    colour: Theme.statusColour(view.recording.statusForm)
                }
            }
        }
        Row {
            Layout.alignment: Qt.AlignTop
            spacing: 6

            PushButton {
                visible: view.recording.canTranscribe
                look: PushButton.Accent
                text: L10n.transcribe
                onClicked: view.recording.transcribe()
            }
            PushButton {
                visible: view.recording.canSummarize
                look: PushButton.Accent
                text: L10n.summarize
                onClicked: view.recording.summarize()
            }
            PushButton {
                text: L10n.export_
                onClicked: view.recording.exportRecording()
            }
        }
    }

    Row {
        id: tabs
        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.top: header.bottom
        anchors.topMargin: 12
        Accessible.role: Accessible.PageTabList

        DetailTabButton {
            title: L10n.transcript
            isSelected: view.selectedTab === 0
            onClicked: view.selectedTab = 0
        }
        DetailTabButton {
            title: L10n.summary
            isSelected: view.selectedTab === 1
            onClicked: view.selectedTab = 1
        }
        DetailTabButton {
            title: L10n.participantsTab
            isSelected: view.selectedTab === 2
            onClicked: view.selectedTab = 2
        }
    }
    Rectangle {
        id: line
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: tabs.bottom
        height: 1
        color: Theme.divider
    }
    Loader {
        readonly property int tab: view.selectedTab

        function route() {
            setSource(["TranscriptTabView.qml", "SummaryTabView.qml", "ParticipantsTabView.qml"][tab], {
                "recording": view.recording
            });
        }

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: line.bottom
        anchors.bottom: parent.bottom
        onTabChanged: route()
        Component.onCompleted: route()
    }
}
