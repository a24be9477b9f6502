import QtQuick
import Talvenor

/// The application's icon in a square, or, where the program has none, a symbol in the light of the accent.
Item {
    id: icon

    property url source: AppIcon.source
    /// Of the square.
    property real size: 80
    /// Of the fallback: the glow's diameter and the symbol's font size, which is a text size.
    property real glowDiameter: 100
    property int symbolSize: 48
    readonly property bool hasPicture: picture.status === Image.Ready

    implicitWidth: hasPicture ? size : glowDiameter
    implicitHeight: implicitWidth

    Image {
        id: picture
        anchors.fill: parent
        visible: icon.hasPicture
        source: icon.source
        sourceSize.width: 2 * icon.size
        sourceSize.height: 2 * icon.size
        fillMode: Image.PreserveAspectFit
        mipmap: true
    }
    RadialFill {
        anchors.fill: parent
        visible: !icon.hasPicture
        color: Theme.withOpacity(Theme.purple, 0.15)
        startRadius: 10
        endRadius: icon.glowDiameter / 2
    }
    Symbol {
        anchors.centerIn: parent
        visible: !icon.hasPicture
        name: "waveform.circle.fill"
        size: Theme.scaled(icon.symbolSize)
        color: Theme.purple
    }
}
