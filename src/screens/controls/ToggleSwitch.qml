import QtQuick
import Talvenor

/// A text with a switch behind it, at the end of the line. To assistive technology it is a check box.
Item {
    id: control

    required property string text
    required property bool isOn
    property font font: Qt.font({
        pixelSize: Theme.caption
    })

    /// The user wants it otherwise; whoever holds the state changes it.
    signal toggled(bool isOn)

    function toggle() {
        if (enabled)
            toggled(!isOn);
    }

    implicitWidth: label.implicitWidth + 12 + track.width
    implicitHeight: Math.max(label.implicitHeight, track.height)
    opacity: enabled ? 1 : 0.5
    activeFocusOnTab: true
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: isOn
    Accessible.focusable: true
    Accessible.focused: activeFocus
    Accessible.onPressAction: toggle()
    Accessible.onToggleAction: toggle()
    Keys.forwardTo: [clickKeys]

    ClickKeys {
        id: clickKeys
        clicksBySpace: true
        onClicked: control.toggle()
    }
    Text {
        id: label
        anchors.left: parent.left
        anchors.right: track.left
        anchors.rightMargin: 12
        anchors.verticalCenter: parent.verticalCenter
        text: control.text
        color: Theme.primary
        font: control.font
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
    }
    Rectangle {
        id: track
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 34
        height: 20
        radius: 10
        color: Theme.withOpacity(Theme.secondary, 0.3)

        AccentFill {
            objectName: "on"
            anchors.fill: parent
            radius: 10
            isHorizontal: true
            opacity: control.isOn ? 1 : 0

            Behavior on opacity {
                NumberAnimation {
                    duration: 150
                    easing.type: Easing.InOutQuad
                }
            }
        }
        SoftShadow {
            anchors.fill: knob
            color: Qt.rgba(0, 0, 0, 0.25)
            blurRadius: 3
            offsetY: 1
            cornerRadius: 8
        }
        GradientFill {
            id: knob
            x: control.isOn ? 16 : 2
            y: 2
            width: 16
            height: 16
            radius: 8
            startColor: Theme.white

            Behavior on x {
                NumberAnimation {
                    duration: 150
                    easing.type: Easing.InOutQuad
                }
            }
        }
        FocusRing {
            radius: 13
            visible: control.activeFocus
        }
    }
    TapHandler {
        onTapped: control.toggle()
    }
}
