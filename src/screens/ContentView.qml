import QtQuick
import Talvenor

/// The root view: the sign-in screen while nobody is signed in, else the main window's content.
Item {
    id: root

    required property ContentState content

    Loader {
        anchors.fill: parent
        focus: true
        sourceComponent: root.content.isLoggedIn ? mainContent : loginScreen
    }

    Component {
        id: loginScreen
        LoginView {}
    }

    Component {
        id: mainContent

        FocusScope {
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
                anchors.left: edge.right
                anchors.right: parent.right
                anchors.top: toolBar.bottom
                anchors.bottom: parent.bottom
                sourceComponent: root.content.hasSelection ? detail : recordScreen
            }
            Component {
                id: detail
                RecordingDetailView {
                    recording: root.content.selected
                }
            }
            Component {
                id: recordScreen
                MainRecordView {
                    record: root.content.record
                }
            }
            ErrorAlert {
                message: root.content.errorMessage
                isPresented: root.content.showError
                onDismissed: root.content.dismissError()
            }
        }
    }
}
