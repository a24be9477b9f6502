import QtQuick
import Talvenor

/// What concerns the whole window: language and session.
Item {
    id: bar

    signal signOut

    implicitHeight: 52

    Row {
        anchors.right: parent.right
        anchors.rightMargin: 24
        anchors.verticalCenter: parent.verticalCenter
        spacing: 12

        LanguageSwitcher {
            anchors.verticalCenter: parent.verticalCenter
            selection: L10n.current
            onSelected: language => L10n.current = language
        }
        PushButton {
            anchors.verticalCenter: parent.verticalCenter
            text: L10n.isGerman ? "Abmelden" : "Sign Out"
            onClicked: bar.signOut()
        }
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 1
        color: Theme.divider
    }
}
