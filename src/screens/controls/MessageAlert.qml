import QtQuick
import QtQuick.Layouts
import Talvenor

/// A message that waits to be seen. However it is closed, it is dismissed.
Sheet {
    id: alert

    required property string message
    required property bool isPresented
    property string buttonTitle: "OK"

    signal dismissed

    visible: isPresented
    idealWidth: Theme.scaled(340)
    onClosed: dismissed()

    contentItem: ColumnLayout {
        spacing: 14

        StaticText {
            Layout.fillWidth: true
            text: Theme.oneLine(alert.title)
            font.pixelSize: Theme.title3
            font.weight: Font.Bold
            elide: Text.ElideRight
        }
        ScrollArea {
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.preferredHeight: contentHeight

            StaticText {
                Layout.fillWidth: true
                text: Theme.bounded(alert.message)
                wrapMode: Text.Wrap
                font.pixelSize: Theme.subheadline
            }
        }
        PushButton {
            Layout.alignment: Qt.AlignRight
            Layout.minimumWidth: 80
            text: alert.buttonTitle
            focus: true
            look: PushButton.Accent
            onClicked: alert.dismissed()
        }
    }
}
