import QtQuick
import Talvenor

/// Says that there is nothing here, and where the window offers a way to change that, which. It stands in the middle
/// of the room that it is given.
Item {
    id: empty

    required property string title
    property string hint
    property string symbol
    property real symbolSize: Theme.scaled(30)
    /// Behind the symbol; its opacity is given here.
    property color circleColor: Theme.withOpacity(Theme.purple, 0.08)
    property real diameter: 80

    implicitWidth: Math.max(diameter, words.implicitWidth)
    implicitHeight: stack.implicitHeight

    Column {
        id: stack
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width
        spacing: 16

        GradientFill {
            anchors.horizontalCenter: parent.horizontalCenter
            visible: empty.symbol.length > 0
            width: empty.diameter
            height: empty.diameter
            radius: empty.diameter / 2
            startColor: empty.circleColor

            Symbol {
                anchors.centerIn: parent
                name: empty.symbol
                size: empty.symbolSize
                weight: Symbol.Light
                color: Theme.secondary
            }
        }
        Column {
            id: words
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 4

            StaticText {
                width: Math.min(implicitWidth, empty.width)
                anchors.horizontalCenter: parent.horizontalCenter
                text: empty.title
                color: Theme.secondary
                font.pixelSize: Theme.subheadline
                font.weight: Font.Medium
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
            StaticText {
                width: Math.min(implicitWidth, empty.width)
                anchors.horizontalCenter: parent.horizontalCenter
                visible: text.length > 0
                text: empty.hint
                color: Theme.tertiary
                font.pixelSize: Theme.caption
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
        }
    }
}
