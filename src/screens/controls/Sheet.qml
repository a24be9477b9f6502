import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A modal dialog named by its title. Escape closes it; while it is up, nothing beneath takes the focus.
T.Dialog {
    id: sheet

    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape
    anchors.centerIn: T.Overlay.overlay
    padding: 24
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding

    background: Rectangle {
        radius: 14
        color: Theme.sheet
        border.width: 1
        border.color: Theme.divider
    }
    T.Overlay.modal: Rectangle {
        color: Qt.rgba(0, 0, 0, 0.4)
    }
}
