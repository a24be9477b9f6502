import QtQuick
import QtQuick.Templates as T
import Talvenor

/// Stops the running recording; while there is none, brings back the record screen.
T.Button {
    id: button

    required property RecordState record

    implicitHeight: 44
    horizontalPadding: 14
    focusPolicy: Qt.StrongFocus
    text: record.isRecording ? L10n.stopRecording : L10n.newRecording
    Accessible.name: text
    Accessible.onPressAction: if (enabled)
        button.clicked()
    Keys.onReturnPressed: button.clicked()
    Keys.onEnterPressed: button.clicked()
    onClicked: record.stopOrShowRecordScreen()

    contentItem: Item {
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: 24
            height: 24
            radius: 12
            color: Qt.rgba(1, 1, 1, 0.2)

            Rectangle {
                anchors.centerIn: parent
                width: 10
                height: button.record.isRecording ? 10 : 2
                radius: 1
                color: "#ffffff"
            }
            Rectangle {
                anchors.centerIn: parent
                visible: !button.record.isRecording
                width: 2
                height: 10
                radius: 1
                color: "#ffffff"
            }
        }
        Text {
            x: 34
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            color: "#ffffff"
            font.pixelSize: Theme.subheadline
            font.weight: Font.DemiBold
        }
        StaticText {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: button.record.isRecording
            text: button.record.formattedDuration
            color: Qt.rgba(1, 1, 1, 0.85)
            font.pixelSize: Theme.caption
            font.family: "monospace"
        }
    }
    background: AccentFill {
        radius: 12
        opacity: button.hovered || button.down ? 0.9 : 1
        isRecording: button.record.isRecording
        isHorizontal: true

        FocusRing {
            radius: 15
            visible: button.visualFocus
        }
    }
}
