import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The round button that starts and stops.
T.AbstractButton {
    id: button

    required property bool isRecording

    implicitWidth: 140
    implicitHeight: 140
    focusPolicy: Qt.StrongFocus
    Accessible.role: Accessible.Button
    Accessible.name: isRecording ? (L10n.isGerman ? "Stoppen" : "Stop") : (L10n.isGerman ? "Aufnehmen" : "Record")
    Accessible.onPressAction: if (enabled)
        button.clicked()
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()

    background: Item {
        AccentFill {
            anchors.fill: parent
            radius: width / 2
            opacity: button.hovered || button.down ? 0.9 : 1
            isRecording: button.isRecording
        }
        Rectangle {
            anchors.fill: parent
            anchors.margins: -8
            radius: width / 2
            color: "transparent"
            border.width: 2
            border.color: button.visualFocus ? Theme.focusRing : Theme.withOpacity(button.isRecording ? Theme.red : Theme.purple, 0.25)
        }
        Rectangle {
            anchors.centerIn: parent
            width: button.isRecording ? 34 : 44
            height: width
            radius: button.isRecording ? 8 : width / 2
            color: "#ffffff"
        }
    }
}
