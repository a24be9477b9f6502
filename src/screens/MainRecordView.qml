import QtQuick
import Talvenor

/// The pane on which a recording is started, seen while none is selected.
///
/// It has two looks, ready and recording. What the plan needs to say is above and below; work in the background is told
/// in either look.
Item {
    id: view

    required property RecordState record
    /// The sheet with the plans is open. Whoever shows the sheet sets this back when it has gone.
    property bool showSubscription: false

    /// The sheet with the plans is asked for, once for each click.
    signal plansRequested

    readonly property real upperEdge: banner.visible ? banner.y + banner.height : 0
    readonly property real lowerEdge: usageLine.visible ? usageLine.y : height - capsule.height
    // Where a small window has no room for all, the parts come closer to each other, down to 8 from what is above and
    // below them, and then to less.
    readonly property real freeHeight: lowerEdge - upperEdge - status.height - button.height - waveform.height
    readonly property real partSpacing: Math.max(0, Math.min(40, (freeHeight - 16) / 2))

    function showPlans() {
        showSubscription = true;
        plansRequested();
    }

    RecordBackdrop {
        objectName: "backdrop"
        anchors.fill: parent
        windowColor: Theme.windowBackground
        firstGlow: Theme.withOpacity(Theme.purple, Theme.isDark ? 0.07 : 0.035)
        secondGlow: Theme.withOpacity(Theme.blue, (Theme.isDark ? 0.07 : 0.035) * 0.8)
        material: Theme.withOpacity(Theme.material, 0.35)
    }

    UpgradeBanner {
        id: banner
        objectName: "banner"
        x: 20
        y: 12
        width: parent.width - 40
        visible: view.record.hasUpgradeBanner
        onClicked: view.showPlans()
    }

    RecordStatus {
        id: status
        objectName: "status"
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.round((view.upperEdge + view.lowerEdge - height - button.height - waveform.height) / 2 - view.partSpacing)
        width: parent.width
        isRecording: view.record.isRecording
        duration: view.record.formattedDuration
        isOnScreen: button.isOnScreen
    }
    RecordButton {
        id: button
        objectName: "recordButton"
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.round(status.y + status.height + view.partSpacing)
        isRecording: view.record.isRecording
        audioLevel: view.record.audioLevel
        onClicked: view.record.toggleRecording()
    }
    WaveformSection {
        id: waveform
        objectName: "waveformSection"
        anchors.horizontalCenter: parent.horizontalCenter
        y: Math.round(button.y + button.height + view.partSpacing)
        width: parent.width
        record: view.record
    }

    UsageLine {
        id: usageLine
        objectName: "usageLine"
        anchors.horizontalCenter: parent.horizontalCenter
        y: view.height - capsule.height - 8 - height
        visible: view.record.hasUsageLine
        record: view.record
        onUpgradeClicked: view.showPlans()
    }
    ProcessingCapsule {
        id: capsule
        objectName: "processing"
        anchors.bottom: parent.bottom
        width: parent.width
        height: implicitHeight
        isProcessing: view.record.isProcessing
        text: view.record.processingStatus
    }
}
