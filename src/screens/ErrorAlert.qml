import QtQuick
import Talvenor

/// The one alert for failures of recording, transcription, summary and export.
Sheet {
    id: alert

    required property string message
    required property bool isPresented

    signal dismissed

    title: L10n.error
    visible: isPresented
    width: 380
    // However it was closed, the error counts as seen.
    onClosed: dismissed()

    contentItem: Column {
        spacing: 14

        StaticText {
            width: parent.width
            text: L10n.error
            font.pixelSize: Theme.title3
            font.weight: Font.Bold
        }
        StaticText {
            width: parent.width
            text: alert.message
            wrapMode: Text.Wrap
            font.pixelSize: Theme.subheadline
        }
        PushButton {
            anchors.right: parent.right
            text: "OK"
            focus: true
            look: PushButton.Accent
            onClicked: alert.dismissed()
        }
    }
}
