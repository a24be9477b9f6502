import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A button without any look of its own but the ring of the keyboard's focus: a text with the symbol `icon.name` before
/// it, or what the content item shows. Enter, Space and the tree's press action click it.
T.Button {
    id: control

    property color color: Theme.primary
    /// What is spoken, where it is not the text.
    property string spokenName: text
    /// Follows the pointer.
    property bool isHovered: hovered
    /// Of the ring.
    property real cornerRadius: 6

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.pixelSize: Theme.caption

    Accessible.name: spokenName
    Accessible.onPressAction: if (enabled)
        control.clicked()
    Keys.forwardTo: [clickKeys]

    ClickKeys {
        id: clickKeys
        onClicked: control.clicked()
    }

    contentItem: IconLabel {
        isSpoken: false
        icon: control.icon.name
        text: control.text
        font: control.font
        color: control.color
        opacity: control.enabled ? (control.isHovered || control.down ? 0.8 : 1) : 0.5
    }
    background: Item {
        FocusRing {
            radius: control.cornerRadius + 3
            visible: control.visualFocus
        }
    }
}
