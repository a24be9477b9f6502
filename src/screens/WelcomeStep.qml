import QtQuick
import QtQuick.Layouts
import Talvenor

/// Says what the program is for.
FocusScope {
    id: step

    signal finished

    focus: true

    ScrollArea {
        id: area
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.bottom: next.top

        Item {
            Layout.fillWidth: true
            implicitHeight: Math.max(area.height, words.implicitHeight + 48)

            Column {
                id: words
                anchors.verticalCenter: parent.verticalCenter
                x: 48
                width: parent.width - 96
                spacing: 24

                ApplicationIcon {
                    anchors.horizontalCenter: parent.horizontalCenter
                    size: 96
                    glowDiameter: 120
                    symbolSize: 56
                }
                Column {
                    width: parent.width
                    spacing: 8

                    StaticText {
                        width: parent.width
                        text: L10n.welcomeTitle
                        font.pixelSize: Theme.title
                        font.weight: Font.Bold
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.Wrap
                    }
                    StaticText {
                        width: parent.width
                        text: L10n.welcomeSubtitle
                        color: Theme.secondary
                        font.pixelSize: Theme.body
                        lineHeight: 1.2
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }
    PushButton {
        id: next
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 24
        look: PushButton.Accent
        cornerRadius: 10
        horizontalPadding: 24
        verticalPadding: 10
        focus: true
        text: L10n.letsGo
        font.pixelSize: Theme.body
        onClicked: step.finished()
    }
}
