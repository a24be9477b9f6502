import QtQuick
import Talvenor

/// The month's recordings against what the plan allows, with a way to the plans where that runs out.
Material {
    id: line

    required property RecordState record

    signal upgradeClicked

    implicitWidth: row.implicitWidth + 32
    implicitHeight: words.implicitHeight + 16
    radius: height / 2

    Row {
        id: row
        anchors.verticalCenter: parent.verticalCenter
        x: 16
        spacing: 8

        Symbol {
            objectName: "usageIcon"
            anchors.verticalCenter: parent.verticalCenter
            name: line.record.isUsageWarning ? "exclamationmark.triangle.fill" : "chart.bar.fill"
            color: line.record.isUsageWarning ? Theme.orange : Theme.secondary
            size: Theme.caption2
        }
        StaticText {
            id: words
            objectName: "usage"
            anchors.verticalCenter: parent.verticalCenter
            text: line.record.usage
            color: Theme.secondary
            font.pixelSize: Theme.caption2
        }
        PlainButton {
            objectName: "upgradeButton"
            anchors.verticalCenter: parent.verticalCenter
            visible: line.record.offersUpgrade
            text: "Upgrade"
            color: Theme.purple
            font.pixelSize: Theme.caption2
            font.weight: Font.Bold
            onClicked: line.upgradeClicked()
        }
    }
}
