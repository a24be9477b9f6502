import QtQuick
import Talvenor

/// The input level as a bar. It can be asked for in the accessibility tree and is not announced there.
Rectangle {
    id: meter

    /// 0 to 1.
    required property real level
    readonly property real minimumValue: 0
    readonly property real maximumValue: 1
    readonly property real value: level

    implicitWidth: 340
    implicitHeight: 8
    radius: 4
    color: Theme.withOpacity(Theme.primary, 0.1)
    Accessible.role: Accessible.ProgressBar
    Accessible.name: L10n.isGerman ? "Eingangspegel" : "Input Level"

    AccentFill {
        width: Math.max(meter.level > 0 ? meter.height : 0, meter.width * Math.min(1, Math.max(0, meter.level)))
        height: parent.height
        radius: 4
        isHorizontal: true
    }
}
