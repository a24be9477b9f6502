import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A button with a label, or with a glyph and a spoken name. Enter, Space and the tree's press action click it.
T.Button {
    id: control

    enum Look {
        Accent,
        Secondary,
        Link,
        Glyph
    }

    property int look: PushButton.Secondary
    property real cornerRadius: look === PushButton.Glyph ? width / 2 : 8
    /// Shown in place of the label while something is under way.
    property bool isBusy: false
    /// What is spoken, where it is not the label.
    property string spokenName: text
    /// Follows the pointer.
    property bool isHovered: hovered
    readonly property color foreground: {
        if (look === PushButton.Accent)
            return Theme.white;
        if (look === PushButton.Link)
            return Theme.purple;
        return Theme.primary;
    }

    implicitWidth: look === PushButton.Glyph ? 28 : implicitContentWidth + leftPadding + rightPadding
    implicitHeight: look === PushButton.Glyph ? 28 : implicitContentHeight + topPadding + bottomPadding
    horizontalPadding: look === PushButton.Accent || look === PushButton.Secondary ? 14 : 2
    verticalPadding: look === PushButton.Accent || look === PushButton.Secondary ? 7 : 2
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.pixelSize: Theme.subheadline
    font.weight: look === PushButton.Accent || look === PushButton.Link ? Font.DemiBold : Font.Medium

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
        isCentered: true
        icon: control.isBusy ? "" : control.icon.name
        text: control.text
        font: control.font
        color: control.isBusy ? "transparent" : control.foreground
        opacity: control.enabled || control.look === PushButton.Accent ? 1 : 0.4

        Spinner {
            anchors.centerIn: parent
            visible: control.isBusy
            color: control.foreground
        }
    }
    background: Item {
        AccentFill {
            anchors.fill: parent
            radius: control.cornerRadius
            visible: control.look === PushButton.Accent
            opacity: control.isHovered ? 0.9 : 1
        }
        Rectangle {
            anchors.fill: parent
            radius: control.cornerRadius
            visible: control.look === PushButton.Secondary || control.look === PushButton.Glyph
            color: Theme.withOpacity(Theme.secondary, control.isHovered ? 0.22 : 0.14)
        }
        Rectangle {
            anchors.fill: parent
            visible: control.down && control.look !== PushButton.Link
            radius: control.cornerRadius
            color: Qt.rgba(0, 0, 0, 0.12)
        }
        FocusRing {
            radius: control.cornerRadius + 3
            visible: control.visualFocus
        }
    }
}
