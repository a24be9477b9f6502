import QtQuick
import QtQuick.Layouts
import Talvenor

/// A card around what is put into it, which it stacks at its left edge and as wide as itself.
Item {
    id: card

    default property alias content: stack.data

    implicitWidth: stack.implicitWidth + 32
    implicitHeight: stack.implicitHeight + 32

    SoftShadow {
        anchors.fill: parent
        color: Theme.cardShadow
        blurRadius: 8
        offsetY: 2
        cornerRadius: 12
    }
    GradientFill {
        anchors.fill: parent
        radius: 12
        startColor: Theme.cardFill
        borderWidth: 1
        isBorderCentered: true
        borderStartColor: Theme.cardBorder
    }
    ColumnLayout {
        id: stack
        anchors.fill: parent
        anchors.margins: 16
        spacing: 0
    }
}
