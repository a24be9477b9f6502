import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A modal dialog named by its title. Escape closes it; while it is up, nothing beneath takes the focus.
///
/// It has its ideal size where the window has room for it, and is as large as the window allows where it has not: what
/// it holds should then scroll (ScrollArea).
T.Dialog {
    id: sheet

    property real idealWidth: implicitWidth
    property real idealHeight: implicitHeight
    /// Between the sheet and the window's edges.
    property real distance: 16
    readonly property Item room: T.Overlay.overlay
    /// What the dialog is in the scene.
    readonly property Item frame: contentItem ? contentItem.parent : null

    // Qt forgets the name of a dialog that is made before anybody listens.
    function tellTitle(): void {
        if (!frame)
            return;
        frame.Accessible.role = Accessible.Dialog;
        frame.Accessible.name = title;
    }

    width: room ? Math.min(idealWidth, room.width - 2 * distance) : idealWidth
    height: room ? Math.min(idealHeight, room.height - 2 * distance) : idealHeight
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape
    anchors.centerIn: T.Overlay.overlay
    padding: 24
    implicitWidth: Math.max(implicitContentWidth + leftPadding + rightPadding, implicitHeaderWidth)
    implicitHeight: implicitHeaderHeight + implicitContentHeight + topPadding + bottomPadding

    onFrameChanged: tellTitle()
    onTitleChanged: tellTitle()
    Component.onCompleted: tellTitle()

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: 120
        }
    }
    background: Item {
        SoftShadow {
            anchors.fill: parent
            color: Qt.rgba(0, 0, 0, Theme.isDark ? 0.5 : 0.22)
            blurRadius: 40
            offsetY: 12
            cornerRadius: 14
        }
        Rectangle {
            anchors.fill: parent
            radius: 14
            color: Theme.sheet
        }
        GradientFill {
            anchors.fill: parent
            radius: 14
            borderWidth: 1
            borderStartColor: Theme.popupBorder
        }
    }
    T.Overlay.modal: Rectangle {
        color: Theme.scrim
    }
}
