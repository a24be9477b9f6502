import QtQuick
import Talvenor

/// Says what is being worked on in the background. It comes up from the lower edge and goes back there.
Item {
    id: slot

    required property bool isProcessing
    required property string text
    /// The text outlives the work until it has left the screen.
    property string shownText
    // How much of it is there.
    property real presence: isProcessing ? 1 : 0

    implicitHeight: (capsule.height + 28) * presence
    visible: presence > 0
    onTextChanged: updateText()
    onIsProcessingChanged: updateText()
    Component.onCompleted: updateText()

    function updateText() {
        if (slot.isProcessing)
            slot.shownText = slot.text;
    }

    Behavior on presence {
        EaseMotion {}
    }

    Material {
        id: capsule
        objectName: "processingCapsule"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, slot.width - 40)
        implicitWidth: 20 + spinner.width + 10 + Math.ceil(words.implicitWidth) + 20
        height: words.implicitHeight + 20
        radius: height / 2
        opacity: slot.presence

        Spinner {
            id: spinner
            x: 20
            anchors.verticalCenter: parent.verticalCenter
            color: Theme.secondary
        }
        StaticText {
            id: words
            objectName: "processingStatus"
            anchors.verticalCenter: parent.verticalCenter
            x: 20 + spinner.width + 10
            width: capsule.width - x - 20
            elide: Text.ElideRight
            maximumLineCount: 1
            text: Theme.oneLine(slot.shownText)
            color: Theme.secondary
            font.pixelSize: Theme.scaled(12)
            font.weight: Font.Medium
        }
        GradientFill {
            anchors.fill: parent
            radius: height / 2
            borderWidth: 0.5
            borderStartColor: Qt.rgba(1, 1, 1, Theme.isDark ? 0.08 : 0.15)
        }
    }
}
