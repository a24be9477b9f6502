import QtQuick
import QtQuick.Templates as T
import Talvenor

/// The round button that starts and stops: a disc amid a glow and rings that are always in motion. Only the circle
/// around them takes clicks.
T.AbstractButton {
    id: button

    required property bool isRecording
    /// The input level, 0 to 1.
    required property real audioLevel
    /// Follows `isRecording`.
    property bool isPulsing: false
    readonly property bool isHovering: hovered
    readonly property alias ringRotation: motion.ringRotation
    readonly property alias glowPhase: motion.glowPhase
    readonly property alias isOnScreen: motion.isOnScreen
    readonly property int buttonSize: 140
    // How much of the recording look there is.
    property real look: isRecording ? 1 : 0
    property real glowLook: isRecording ? 1 : 0
    property real iconLook: isRecording ? 1 : 0

    implicitWidth: buttonSize + 60
    implicitHeight: buttonSize + 60
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: isRecording ? (L10n.isGerman ? "Stoppen" : "Stop") : (L10n.isGerman ? "Aufnehmen" : "Record")
    Accessible.onPressAction: if (enabled)
        button.clicked()
    Keys.forwardTo: [clickKeys]
    Component.onCompleted: isPulsing = isRecording
    onIsRecordingChanged: isPulsing = isRecording

    Behavior on look {
        SpringMotion {
            response: 0.4
            dampingFraction: 0.75
        }
    }
    Behavior on glowLook {
        EaseMotion {
            duration: 600
        }
    }
    Behavior on iconLook {
        SpringMotion {
            response: 0.35
            dampingFraction: 0.7
        }
    }

    containmentMask: QtObject {
        function contains(point: point): bool {
            const radius = button.width / 2;
            return Math.hypot(point.x - radius, point.y - button.height / 2) <= radius;
        }
    }

    ClickKeys {
        id: clickKeys
        onClicked: button.clicked()
    }
    RecordMotion {
        id: motion
        objectName: "motion"
        isFast: button.isRecording
    }

    // The ambient glow.
    RadialFill {
        objectName: "idleGlow"
        anchors.centerIn: parent
        width: button.buttonSize * 2.6
        height: width
        startRadius: button.buttonSize * 0.25
        endRadius: button.buttonSize * 1.3
        color: Theme.withOpacity(Theme.purple, 0.16)
        opacity: (0.12 + button.glowPhase * 0.04) / 0.16 * (1 - button.glowLook)
        visible: opacity > 0
    }
    RadialFill {
        objectName: "recordingGlow"
        anchors.centerIn: parent
        width: button.buttonSize * 2.6
        height: width
        startRadius: button.buttonSize * 0.25
        endRadius: button.buttonSize * 1.3
        color: Theme.withOpacity(Theme.recordingStart, 0.18)
        opacity: button.glowLook
        visible: opacity > 0
    }

    // The rings.
    RingStroke {
        objectName: "idleRing"
        anchors.centerIn: parent
        width: button.buttonSize + 22
        height: width
        lineWidth: 1.5
        colors: [Theme.withOpacity(Theme.purple, 0.22), Theme.withOpacity(Theme.blue, 0.12), Theme.withOpacity(Theme.purple, 0.06), Theme.withOpacity(Theme.blue, 0.22), Theme.withOpacity(Theme.purple, 0.22)]
        rotation: button.ringRotation * 0.15
        opacity: (0.7 + button.glowPhase * 0.3) * (1 - button.look)
        visible: opacity > 0
    }
    RecordingRings {
        objectName: "recordingRings"
        anchors.fill: parent
        buttonSize: button.buttonSize
        color: Theme.recordingStart
        audioLevel: button.audioLevel
        ringRotation: visible ? button.ringRotation : 0
        opacity: Math.min(1, button.look)
        visible: opacity > 0
    }

    // The main disc. The one of the recording look fades in over the other, so that nothing shines through.
    Item {
        objectName: "disc"
        anchors.centerIn: parent
        width: button.buttonSize
        height: button.buttonSize
        scale: button.isHovering ? 1.045 : 1

        Behavior on scale {
            SpringMotion {
                response: 0.35
                dampingFraction: 0.7
            }
        }

        RecordDisc {
            objectName: "idleDisc"
            anchors.fill: parent
            visible: button.look < 1
            startColor: Theme.purple
            endColor: Theme.blue
            shadowColor: Theme.withOpacity(Theme.purple, 0.35)
            shadowRadius: 24
            wideShadowColor: Theme.withOpacity(Theme.blue, 0.15)
        }
        RecordDisc {
            objectName: "recordingDisc"
            anchors.fill: parent
            opacity: Math.min(1, button.look)
            visible: opacity > 0
            startColor: Theme.recordingStart
            endColor: Theme.recordingEnd
            shadowColor: Theme.withOpacity(Theme.recordingStart, 0.4)
            shadowRadius: 32
            wideShadowColor: Theme.withOpacity(Theme.recordingStart, 0.15)
        }
    }
    FocusRing {
        anchors.fill: undefined
        anchors.margins: 0
        anchors.centerIn: parent
        width: button.buttonSize + 12
        height: width
        radius: width / 2
        visible: button.visualFocus
    }

    // The inner icon: a circle that becomes a square.
    SoftShadow {
        anchors.fill: icon
        color: Theme.withOpacity(Theme.black, 0.12)
        blurRadius: 4
        offsetY: 2
        cornerRadius: icon.radius
    }
    GradientFill {
        id: icon
        objectName: "icon"
        anchors.centerIn: parent
        width: 44 - 10 * button.iconLook
        height: width
        radius: 22 - 14 * button.iconLook
        startColor: Theme.white
    }
}
