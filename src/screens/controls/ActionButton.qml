import QtQuick
import QtQuick.Templates as T
import Talvenor

/// A small button with a symbol and a title, for what can be done with the thing that is shown.
FocusScope {
    id: control

    enum Style {
        Accent,
        Secondary
    }

    required property string title
    property string icon
    property int style: ActionButton.Secondary
    /// Follows the pointer, without an animation.
    property bool isHovered: button.hovered
    property alias isPressed: button.down

    signal clicked

    implicitWidth: button.implicitWidth
    implicitHeight: button.implicitHeight
    opacity: enabled ? 1 : 0.5

    T.Button {
        id: button
        anchors.fill: parent
        focus: true
        text: control.title
        implicitWidth: implicitContentWidth + leftPadding + rightPadding
        implicitHeight: implicitContentHeight + topPadding + bottomPadding
        horizontalPadding: 12
        verticalPadding: 6
        focusPolicy: Qt.StrongFocus
        hoverEnabled: true
        font.pixelSize: Theme.caption
        font.weight: Font.Medium
        onClicked: control.clicked()

        Accessible.name: control.title
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
            icon: control.icon
            text: control.title
            font: button.font
            color: control.style === ActionButton.Accent ? Theme.white : Theme.primary
        }
        background: Item {
            AccentFill {
                objectName: "accentFill"
                anchors.fill: parent
                visible: control.style === ActionButton.Accent
                radius: 8
                isHorizontal: true
                opacity: control.isHovered ? 0.9 : 1
            }
            Rectangle {
                anchors.fill: parent
                visible: control.style === ActionButton.Secondary
                radius: 8
                color: Theme.withOpacity(Theme.secondary, control.isHovered ? 0.15 : 0.1)
            }
            Rectangle {
                anchors.fill: parent
                visible: button.down
                radius: 8
                color: Qt.rgba(0, 0, 0, 0.12)
            }
            FocusRing {
                radius: 11
                visible: button.visualFocus
            }
        }
    }
}
