import QtQuick
import Talvenor

/// Leads a free account to the plans.
PlainButton {
    id: banner

    implicitHeight: words.implicitHeight + 20
    cornerRadius: 10
    spokenName: headline.text
    Accessible.description: subline.text + ". " + price.text

    background: GradientFill {
        objectName: "bannerBackground"
        radius: 10
        startColor: Theme.material
        borderWidth: 0.5
        borderStartColor: Theme.withOpacity(Theme.purple, 0.3)
        borderEndColor: Theme.withOpacity(Theme.blue, 0.3)

        FocusRing {
            radius: 13
            visible: banner.visualFocus
        }
    }

    // Not as the content item, in which nothing can be named without its being made too early.
    contentItem: null

    Item {
        anchors.fill: parent
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.topMargin: 10
        anchors.bottomMargin: 10
        opacity: banner.down ? 0.7 : 1

        Symbol {
            id: crown
            objectName: "crown"
            anchors.verticalCenter: parent.verticalCenter
            name: "crown.fill"
            size: Theme.subheadline
            color: Theme.yellow
        }
        Column {
            id: words
            anchors.left: crown.right
            anchors.leftMargin: 10
            anchors.right: pill.left
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2

            Text {
                id: headline
                objectName: "bannerHeadline"
                width: parent.width
                elide: Text.ElideRight
                text: L10n.isGerman ? "Upgrade auf Premium" : "Upgrade to Premium"
                color: Theme.primary
                font.pixelSize: Theme.caption
                font.weight: Font.DemiBold
            }
            Text {
                id: subline
                objectName: "bannerSubline"
                width: parent.width
                elide: Text.ElideRight
                text: L10n.isGerman ? "Unbegrenzte Aufnahmen, KI-Zusammenfassungen & mehr" : "Unlimited recordings, AI summaries & more"
                textFormat: Text.PlainText
                color: Theme.secondary
                font.pixelSize: Theme.caption2
            }
        }
        AccentFill {
            id: pill
            objectName: "pricePill"
            anchors.right: chevron.left
            anchors.rightMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            width: Math.ceil(price.implicitWidth) + 16
            height: price.implicitHeight + 8
            radius: height / 2
            isHorizontal: true

            Text {
                id: price
                objectName: "price"
                anchors.centerIn: parent
                text: L10n.isGerman ? "Ab 8,99€/Mo" : "From 8.99€/mo"
                color: Theme.white
                font.pixelSize: Theme.caption2
                font.weight: Font.Bold
            }
        }
        Symbol {
            id: chevron
            objectName: "chevron"
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            name: "chevron.right"
            size: Theme.caption2
            color: Theme.tertiary
        }
    }
}
