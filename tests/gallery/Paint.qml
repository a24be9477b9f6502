import QtQuick
import Talvenor

/// The paint items.
Item {
    RadialFill {
        anchors.fill: parent
        center: Qt.point(0.35, 0.38)
        color: Theme.withOpacity(Theme.purple, Theme.isDark ? 0.07 : 0.035)
        startRadius: 40
        endRadius: 360
    }
    RadialFill {
        anchors.fill: parent
        center: Qt.point(0.68, 0.62)
        color: Theme.withOpacity(Theme.blue, Theme.isDark ? 0.056 : 0.028)
        startRadius: 30
        endRadius: 320
    }
    Row {
        x: 60
        y: 80
        spacing: 110

        Repeater {
            model: [false, true]
            delegate: Item {
                id: disc

                required property bool modelData

                width: 200
                height: 200

                RadialFill {
                    anchors.centerIn: parent
                    width: 364
                    height: 364
                    color: disc.modelData ? Theme.withOpacity(Theme.red, 0.18) : Theme.withOpacity(Theme.purple, 0.12)
                    startRadius: 35
                    endRadius: 182
                }
                RingStroke {
                    anchors.centerIn: parent
                    visible: !disc.modelData
                    width: 162
                    height: 162
                    lineWidth: 1.5
                    colors: [Theme.withOpacity(Theme.purple, 0.22), Theme.withOpacity(Theme.blue, 0.12), Theme.withOpacity(Theme.purple, 0.06), Theme.withOpacity(Theme.blue, 0.22), Theme.withOpacity(Theme.purple, 0.22)]
                }
                RingStroke {
                    anchors.centerIn: parent
                    visible: disc.modelData
                    width: 178
                    height: 178
                    lineWidth: 2.5
                    fraction: 0.65
                    hasRoundCaps: true
                    rotation: 20
                    colors: [Theme.withOpacity(Theme.red, 0), Theme.withOpacity(Theme.red, 0.55), Theme.withOpacity(Theme.red, 0)]
                }
                RingStroke {
                    anchors.centerIn: parent
                    visible: disc.modelData
                    width: 196
                    height: 196
                    lineWidth: 1.5
                    fraction: 0.45
                    hasRoundCaps: true
                    rotation: -60
                    colors: [Theme.withOpacity(Theme.red, 0), Theme.withOpacity(Theme.red, 0.25), Theme.withOpacity(Theme.red, 0)]
                }
                SoftShadow {
                    anchors.fill: face
                    color: disc.modelData ? Theme.withOpacity(Theme.red, 0.4) : Theme.withOpacity(Theme.purple, 0.35)
                    blurRadius: disc.modelData ? 32 : 24
                    offsetY: 10
                    cornerRadius: 70
                }
                SoftShadow {
                    anchors.fill: face
                    color: disc.modelData ? Theme.withOpacity(Theme.red, 0.15) : Theme.withOpacity(Theme.blue, 0.15)
                    blurRadius: 60
                    offsetY: 4
                    cornerRadius: 70
                }
                AccentFill {
                    id: face
                    anchors.centerIn: parent
                    width: 140
                    height: 140
                    radius: 70
                    isRecording: disc.modelData
                }
                GradientFill {
                    anchors.fill: face
                    radius: 70
                    startColor: Qt.rgba(1, 1, 1, 0.28)
                    middleColor: Qt.rgba(1, 1, 1, 0.05)
                    endColor: "transparent"
                    startPoint: Qt.point(0.5, 0)
                    endPoint: Qt.point(0.5, 0.5)
                }
                GradientFill {
                    anchors.fill: face
                    radius: 70
                    borderWidth: 1
                    isBorderVertical: true
                    borderStartColor: Qt.rgba(1, 1, 1, 0.3)
                    borderMiddleColor: "transparent"
                    borderEndColor: Qt.rgba(0, 0, 0, 0.08)
                }
                Symbol {
                    anchors.centerIn: parent
                    name: disc.modelData ? "stop.fill" : "waveform"
                    size: 44
                    color: Theme.white
                }
            }
        }
    }
    Material {
        x: 60
        y: 380
        width: 420
        height: 54
        radius: 10

        GradientFill {
            anchors.fill: parent
            radius: 10
            borderWidth: 0.5
            borderStartColor: Theme.withOpacity(Theme.purple, 0.3)
            borderEndColor: Theme.withOpacity(Theme.blue, 0.3)
        }
        IconLabel {
            anchors.centerIn: parent
            icon: "crown.fill"
            iconColor: Theme.yellow
            text: L10n.appName
        }
    }
    AccentFill {
        x: 60
        y: 460
        width: 200
        height: 44
        radius: 12
        isHorizontal: true
    }
    AccentFill {
        x: 280
        y: 460
        width: 200
        height: 44
        radius: 12
        isHorizontal: true
        isRecording: true
    }
    AccentFill {
        x: 500
        y: 460
        width: 200
        height: 44
        radius: 22
    }
    Rectangle {
        id: mover
        property bool isAway: false
        x: isAway ? 600 : 60
        y: 540
        width: 40
        height: 40
        radius: 8
        color: Theme.secondary

        Behavior on x {
            SpringMotion {
                response: 0.4
                dampingFraction: 0.75
            }
        }
        TapHandler {
            onTapped: mover.isAway = !mover.isAway
        }
    }
}
