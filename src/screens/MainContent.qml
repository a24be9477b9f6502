import QtQuick
import Talvenor

/// The main window's content: the sidebar, the tool bar, the pane of the selection or the record screen, and the alert.
FocusScope {
    id: root

    required property ContentState content

    focus: true

    SidebarView {
        id: sidebar
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 300
        record: root.content.record
        recordings: root.content.recordings
    }
    Rectangle {
        id: edge
        anchors.left: sidebar.right
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: 1
        color: Theme.divider
    }
    ToolBar {
        id: toolBar
        anchors.left: edge.right
        anchors.right: parent.right
        anchors.top: parent.top
        onSignOut: root.content.signOut()
    }
    Loader {
        readonly property bool hasSelection: root.content.hasSelection

        function route() {
            if (hasSelection)
                setSource("RecordingDetailView.qml", {
                    "recording": root.content.selected
                });
            else
                setSource("MainRecordView.qml", {
                    "record": root.content.record
                });
        }

        anchors.left: edge.right
        anchors.right: parent.right
        anchors.top: toolBar.bottom
        anchors.bottom: parent.bottom
        onHasSelectionChanged: route()
        Component.onCompleted: route()
    }
    ErrorAlert {
        message: root.content.errorMessage
        isPresented: root.content.showError
        onDismissed: root.content.dismissError()
    }
}
