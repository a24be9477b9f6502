import QtQuick
import Talvenor

/// What concerns the whole window: the console, the plans, the account and the settings.
Item {
    id: bar

    required property ContentState content
    readonly property var user: content.currentUser
    readonly property color tierColor: {
        if (content.subscriptionTier === "premium")
            return Theme.systemPurpleText;
        return content.subscriptionTier === "basic" ? Theme.blue : Theme.secondary;
    }

    signal adminRequested
    signal subscriptionRequested
    signal accountRequested
    signal settingsRequested

    implicitHeight: 52

    Row {
        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 6

        ToolBarItem {
            objectName: "admin"
            visible: bar.content.isAdmin
            icon.name: "shield.fill"
            color: Theme.orange
            spokenName: L10n.isGerman ? "Admin-Panel" : "Admin Panel"
            tooltip: spokenName
            onClicked: bar.adminRequested()
        }
        ToolBarItem {
            objectName: "plans"
            icon.name: "crown.fill"
            text: "Plans"
            color: bar.user?.isFree ? Theme.purple : Theme.secondary
            font.pixelSize: Theme.caption
            font.weight: Font.Medium
            tooltip: L10n.isGerman ? "Abo-Pläne" : "Subscription Plans"
            onClicked: bar.subscriptionRequested()
        }
        ToolBarItem {
            objectName: "account"
            icon.name: "person.circle"
            badge: bar.user?.tierDisplayName ?? ""
            badgeColor: bar.tierColor
            spokenName: L10n.isGerman ? "Mein Konto" : "My Account"
            tooltip: spokenName
            onClicked: bar.accountRequested()
        }
        ToolBarItem {
            objectName: "settings"
            icon.name: "gearshape"
            spokenName: L10n.isGerman ? "Einstellungen" : "Settings"
            onClicked: bar.settingsRequested()
        }
    }
    Divider {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
    }
}
