import QtQuick
import Talvenor

/// The cross that closes a sheet.
PlainButton {
    id: control

    spokenName: L10n.isGerman ? "Schließen" : "Close"
    implicitWidth: 28
    implicitHeight: 28

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: "xmark"
            size: Theme.scaled(12)
            weight: Symbol.Bold
            color: Theme.secondary
        }
    }
    background: GradientFill {
        radius: 14
        startColor: Theme.withOpacity(Theme.quaternary, control.isHovered || control.down ? 0.9 : 0.5)

        FocusRing {
            radius: width / 2
            visible: control.visualFocus
        }
    }
}
