pragma Singleton

import QtQuick
import Talvenor

/// Colours, sizes and text styles that the screens share; the one place for each of them.
///
/// Colours follow the colour scheme of the desktop. The hierarchical colours are opaque, so that their contrast can be
/// counted on: on the window's background and on a sheet, secondary has at least 4.5 to 1 and tertiary 3 to 1 (WCAG 2).
QtObject {
    id: theme

    readonly property bool isDark: Appearance.isDark

    // The accent, and the colours of a running recording.
    readonly property color purple: "#6b5ce8"
    readonly property color blue: "#0a85e3"
    readonly property color recordingStart: "#ff3b30"
    readonly property color recordingEnd: "#e81f63"

    // Named colours, for symbols and fills: bright, as a sign should be.
    readonly property color red: isDark ? "#ff4a40" : "#f5342a"
    readonly property color orange: isDark ? "#ffa01a" : "#f58a00"
    readonly property color yellow: isDark ? "#ffd426" : "#f0b400"
    readonly property color green: isDark ? "#30d158" : "#28b34d"
    readonly property color systemPurple: isDark ? "#c065f5" : "#a64fd6"

    // The same where they are text, in shades that can be read in their scheme.
    readonly property color redText: isDark ? "#ff6961" : "#c9221a"
    readonly property color orangeText: isDark ? "#ffb340" : "#a85400"
    readonly property color greenText: isDark ? "#30d158" : "#1b7a34"
    readonly property color systemPurpleText: isDark ? "#cc80f7" : "#8944ab"
    readonly property color white: "#ffffff"
    readonly property color black: "#000000"
    readonly property color clear: "transparent"

    // What is in front, by its rank.
    readonly property color primary: isDark ? "#f2f2f5" : "#1d1d1f"
    readonly property color secondary: isDark ? "#a6a6ad" : "#5f5f66"
    readonly property color tertiary: isDark ? "#84848b" : "#808087"
    readonly property color quaternary: isDark ? "#4e4e54" : "#c9c9ce"
    /// The accent where it is text: light enough for a dark window, and dark enough for a light one.
    readonly property color accentText: isDark ? "#a79ffb" : "#5a4bd1"
    readonly property color focusRing: isDark ? "#8f85ff" : purple
    readonly property color divider: withOpacity(primary, isDark ? 0.12 : 0.1)

    // What lies behind.
    readonly property color windowBackground: isDark ? "#1e1e20" : "#f5f5f7"
    readonly property color sheet: isDark ? "#28282b" : "#fafafc"
    /// Menus, tooltips and lists that drop down.
    readonly property color popup: isDark ? "#323236" : "#ffffff"
    readonly property color popupBorder: isDark ? Qt.rgba(1, 1, 1, 0.12) : Qt.rgba(0, 0, 0, 0.12)
    /// Over the window while a sheet is up.
    readonly property color scrim: Qt.rgba(0, 0, 0, isDark ? 0.5 : 0.28)
    /// The ultra-thin material: of what lies behind, this much is let through. There is no blur in it.
    readonly property color material: isDark ? Qt.rgba(0.2, 0.2, 0.21, 0.6) : Qt.rgba(1, 1, 1, 0.6)
    readonly property color surface: isDark ? Qt.rgba(1, 1, 1, 0.04) : Qt.rgba(0, 0, 0, 0.03)
    readonly property color selectedSurface: isDark ? Qt.rgba(1, 1, 1, 0.08) : withOpacity(purple, 0.08)
    readonly property color cardFill: isDark ? Qt.rgba(1, 1, 1, 0.04) : "#ffffff"
    readonly property color cardBorder: isDark ? Qt.rgba(1, 1, 1, 0.06) : Qt.rgba(0, 0, 0, 0.04)
    readonly property color cardShadow: Qt.rgba(0, 0, 0, isDark ? 0 : 0.04)
    readonly property color playerBar: isDark ? Qt.rgba(1, 1, 1, 0.02) : Qt.rgba(0, 0, 0, 0.02)
    readonly property color fieldFill: isDark ? Qt.rgba(1, 1, 1, 0.06) : Qt.rgba(0, 0, 0, 0.04)
    readonly property color sidebar: isDark ? Qt.rgba(1, 1, 1, 0.02) : Qt.rgba(1, 1, 1, 0.45)

    /// Text sizes are given for a screen that is looked at from nearer; here they are this many hundredths of it, and
    /// with them the sheets that are made for their texts.
    readonly property int textScale: 115
    readonly property int title: scaled(22)
    readonly property int title2: scaled(17)
    readonly property int title3: scaled(15)
    /// Goes with Font.Bold.
    readonly property int headline: scaled(13)
    readonly property int body: scaled(13)
    readonly property int subheadline: scaled(11)
    readonly property int caption: scaled(10)
    readonly property int caption2: scaled(10)
    /// For numbers that change in place.
    readonly property string monospaced: Appearance.monospacedFamily

    /// A text size, or the size of a sheet, as it is here; rounded half up, in whole numbers so that no half is lost.
    function scaled(size: int): int {
        return Math.floor((size * textScale + 50) / 100);
    }

    /// The colour with that fraction of its own opacity.
    function withOpacity(colour: color, opacity: real): color {
        return Qt.rgba(colour.r, colour.g, colour.b, colour.a * opacity);
    }

    /// The text as what fits into one line can show it: line breaks and control characters as spaces, and cut where no
    /// screen is that wide, so that a name of megabytes is not laid out whole.
    function oneLine(text: string): string {
        const beginning = text.length > 1000 ? text.slice(0, 1000) + "…" : text;
        return beginning.replace(/[\u0000-\u001f\u007f-\u009f\u2028\u2029]+/g, " ");
    }

    /// The text, cut where nobody reads on; for messages that come from elsewhere.
    function bounded(text: string): string {
        return text.length > 4000 ? text.slice(0, 4000) + "…" : text;
    }

    /// The colour of a recording's status, given as it stands in the file.
    function statusColour(status: string): color {
        switch (status) {
        case "completed":
            return greenText;
        case "transcribing":
            return orangeText;
        case "summarizing":
            return systemPurpleText;
        default:
            return redText;
        }
    }
}
