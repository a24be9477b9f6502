pragma Singleton

import QtQuick

/// Colours, sizes and text styles that the screens share. Colours follow the palette of the desktop.
QtObject {
    id: theme

    readonly property SystemPalette palette: SystemPalette {}
    readonly property bool isDark: palette.window.hslLightness < 0.5

    readonly property color purple: Qt.rgba(0.42, 0.36, 0.91, 1)
    readonly property color blue: Qt.rgba(0.04, 0.52, 0.89, 1)
    readonly property color recordingStart: Qt.rgba(1, 0.23, 0.19, 1)
    readonly property color recordingEnd: Qt.rgba(0.91, 0.12, 0.39, 1)
    readonly property color red: isDark ? "#ff6961" : "#c9221a"
    readonly property color orange: isDark ? "#ffb340" : "#a85a00"
    readonly property color green: isDark ? "#30d158" : "#1b7a34"
    /// The accent where it is text: light enough for a dark window, and dark enough for a light one.
    readonly property color accentText: isDark ? "#a79ffb" : "#5a4bd1"

    readonly property color windowBackground: palette.window
    readonly property color primary: palette.windowText
    readonly property color secondary: withOpacity(primary, 0.66)
    readonly property color tertiary: withOpacity(primary, 0.56)
    readonly property color divider: withOpacity(primary, 0.14)
    readonly property color sheet: isDark ? Qt.lighter(palette.window, 1.25) : "#ffffff"
    readonly property color fieldFill: isDark ? Qt.rgba(1, 1, 1, 0.06) : Qt.rgba(0, 0, 0, 0.04)
    readonly property color surface: isDark ? Qt.rgba(1, 1, 1, 0.04) : Qt.rgba(0, 0, 0, 0.03)
    readonly property color selectedSurface: isDark ? Qt.rgba(1, 1, 1, 0.1) : withOpacity(purple, 0.12)
    readonly property color sidebar: isDark ? Qt.rgba(1, 1, 1, 0.02) : Qt.rgba(1, 1, 1, 0.45)
    readonly property color focusRing: isDark ? "#8f85ff" : purple

    readonly property int title: 25
    readonly property int title2: 20
    readonly property int title3: 17
    readonly property int body: 15
    readonly property int subheadline: 13
    readonly property int caption: 12
    readonly property int caption2: 11

    function withOpacity(colour: color, opacity: real): color {
        return Qt.rgba(colour.r, colour.g, colour.b, opacity);
    }

    /// The colour of a recording's status, given as it stands in the file.
    function statusColour(status: string): color {
        switch (status) {
        case "completed":
            return green;
        case "transcribing":
            return orange;
        case "summarizing":
            return accentText;
        default:
            return red;
        }
    }
}
