import QtQuick
import QtQuick.Templates as T
import Talvenor

/// Stops the running recording; while there is none, brings back the record screen.
T.Button {
    id: button

    required property RecordState record

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.ceil(implicitContentHeight) + topPadding + bottomPadding
    horizontalPadding: 14
    verticalPadding: 10
    focusPolicy: Qt.StrongFocus
    text: record.isRecording ? L10n.stopRecording : L10n.newRecording
    font.pixelSize: Theme.subheadline
    font.weight: Font.DemiBold
    Accessible.name: text
    Accessible.onPressAction: if (enabled)
        button.clicked()
    Keys.forwardTo: [clickKeys]
    onClicked: record.stopOrShowRecordScreen()

    ClickKeys {
        id: clickKeys
        onClicked: button.clicked()
    }

    contentItem: WideButtonLabel {
        isRecording: button.record.isRecording
        text: button.text
        time: button.record.formattedDuration
        font: button.font
    }
    background: Item {
        SoftShadow {
            objectName: "wideButtonShadow"
            anchors.fill: parent
            color: Theme.withOpacity(button.record.isRecording ? Theme.red : Theme.purple, 0.2)
            blurRadius: 8
            offsetY: 4
            cornerRadius: 12
        }
        GradientFill {
            objectName: "wideButtonFill"
            anchors.fill: parent
            radius: 12
            startColor: button.record.isRecording ? Theme.recordingStart : Theme.purple
            endColor: button.record.isRecording ? Theme.recordingEnd : Theme.blue
            endPoint: Qt.point(1, 0)
        }
        Rectangle {
            anchors.fill: parent
            radius: 12
            visible: button.down
            color: Theme.withOpacity(Theme.black, 0.12)
        }
        FocusRing {
            radius: 15
            visible: button.visualFocus
        }
    }
}
