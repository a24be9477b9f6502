import QtQuick
import Talvenor

/// Ends the session: a wide button in the colour of what cannot be taken back.
PlainButton {
    id: control

    verticalPadding: 10
    cornerRadius: 10
    text: L10n.isGerman ? "Abmelden" : "Sign Out"
    icon.name: "rectangle.portrait.and.arrow.right"
    color: Theme.redText
    font.pixelSize: Theme.subheadline

    contentItem: IconLabel {
        isSpoken: false
        isCentered: true
        icon: control.icon.name
        text: control.text
        font: control.font
        color: control.color
    }
    background: Rectangle {
        radius: 10
        color: Theme.withOpacity(Theme.red, control.isHovered || control.down ? 0.14 : 0.08)

        FocusRing {
            radius: 13
            visible: control.visualFocus
        }
    }
}
