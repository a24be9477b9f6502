pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// A running time. A digit that changes rolls up and away, and the next one comes from below.
Item {
    id: digits

    property string text
    property color color: Theme.primary
    property font font
    /// False where nobody sees it: digits then change at once.
    property bool isAnimated: true

    implicitWidth: Math.ceil(metrics.advanceWidth("0") * digits.text.length)
    // Digits have no descenders, and their line no need for all the room that a face with a tall line gives it.
    implicitHeight: Math.ceil(font.pixelSize * 1.2)
    Accessible.role: Accessible.StaticText
    Accessible.name: text

    FontMetrics {
        id: metrics
        font: digits.font
    }
    Repeater {
        model: digits.text.length

        Item {
            id: cell

            required property int index
            readonly property string character: digits.text.charAt(index)
            property string leaving
            property string shown
            property real progress: 1

            x: index * metrics.advanceWidth("0")
            width: metrics.advanceWidth("0")
            height: digits.height
            Component.onCompleted: shown = character
            onCharacterChanged: {
                leaving = shown;
                shown = character;
                roll.stop();
                progress = 1;
                if (digits.isAnimated && leaving.length > 0)
                    roll.start();
            }

            SpringMotion {
                id: roll
                target: cell
                property: "progress"
                from: 0
                to: 1
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                y: (cell.height - height) / 2 - cell.progress * cell.height * 0.3
                visible: opacity > 0
                opacity: Math.max(0, 1 - 1.8 * cell.progress)
                text: cell.leaving
                color: digits.color
                font: digits.font
                textFormat: Text.PlainText
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                y: (cell.height - height) / 2 + (1 - cell.progress) * cell.height * 0.3
                opacity: Math.min(1, Math.max(0, 1.8 * cell.progress - 0.8))
                text: cell.shown
                color: digits.color
                font: digits.font
                textFormat: Text.PlainText
            }
        }
    }
}
