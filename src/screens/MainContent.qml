import QtQuick
import Talvenor

/// The main window's content: the sidebar and, beyond a divider that can be dragged, the tool bar over the pane of the
/// selection or the record screen; the sheets that the tool bar opens, and the alert.
FocusScope {
    id: root

    required property ContentState content

    // Which sheets are up. They go with this screen when nobody is signed in any more.
    property bool showSettings: false
    property bool showAccount: false
    property bool showAdmin: false
    property bool showSubscription: false

    /// The sidebar's width as the user wants it; the window's width may not allow it.
    property real sidebarWidth: 300
    readonly property real narrowestSidebar: 280
    readonly property real widestSidebar: Math.max(narrowestSidebar, Math.min(480, width - 560))

    focus: true

    SidebarView {
        id: sidebar
        objectName: "sidebar"
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        width: Math.max(root.narrowestSidebar, Math.min(root.sidebarWidth, root.widestSidebar))
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
        objectName: "toolBar"
        anchors.left: edge.right
        anchors.right: parent.right
        anchors.top: parent.top
        content: root.content
        onSettingsRequested: root.showSettings = true
        onAccountRequested: root.showAccount = true
        onAdminRequested: root.showAdmin = true
        onSubscriptionRequested: root.showSubscription = true
    }
    Loader {
        id: detail

        readonly property bool hasSelection: root.content.hasSelection
        property bool isReady: false

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
        onHasSelectionChanged: if (isReady)
            route()
        Component.onCompleted: {
            isReady = true;
            route();
        }
    }
    Connections {
        function onPlansRequested() {
            root.showSubscription = true;
        }

        target: detail.item
        ignoreUnknownSignals: true
    }
    MouseArea {
        objectName: "divider"

        property real grabbedAt: 0

        x: edge.x - 4
        width: 9
        height: parent.height
        cursorShape: Qt.SplitHCursor
        preventStealing: true
        onPressed: event => grabbedAt = event.x
        onPositionChanged: event => root.sidebarWidth = Math.max(root.narrowestSidebar, Math.min(root.widestSidebar, x + 4 + event.x - grabbedAt))
        onDoubleClicked: root.sidebarWidth = 300
    }

    SheetPresenter {
        isPresented: root.showSettings
        source: "SettingsView.qml"
        onDismissed: root.showSettings = false
    }
    SheetPresenter {
        isPresented: root.showAccount
        source: "AccountView.qml"
        properties: ({
                "content": root.content
            })
        onDismissed: root.showAccount = false
    }
    SheetPresenter {
        isPresented: root.showAdmin
        source: "AdminView.qml"
        onDismissed: root.showAdmin = false
    }
    SheetPresenter {
        isPresented: root.showSubscription
        source: "SubscriptionView.qml"
        properties: ({
                "content": root.content
            })
        onDismissed: {
            root.showSubscription = false;
            const screen = detail.item as MainRecordView;
            if (screen)
                screen.showSubscription = false;
        }
    }
    SheetPresenter {
        isPresented: root.content.isSetupPresented
        source: "SetupView.qml"
        onDismissed: root.content.isSetupPresented = false
    }
    ErrorAlert {
        message: root.content.errorMessage
        isPresented: root.content.showError
        onDismissed: root.content.dismissError()
    }
}
