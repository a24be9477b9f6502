import QtQuick
import Talvenor

/// A symbol followed by a text, centred on one line; the text is elided where the label is made narrower than it is.
Item {
    id: label

    property string icon
    property string text
    property color color: Theme.primary
    property color iconColor: color
    property font font: Qt.font({
        pixelSize: Theme.body
    })
    property real iconSize: font.pixelSize
    property real spacing: 6
    /// In the middle of a label that is wider than its content, else at its left edge.
    property bool isCentered: false
    /// False where what the label belongs to has its name.
    property bool isSpoken: true

    // From the parts' own sizes: the row follows the label's.
    implicitWidth: (symbol.visible ? symbol.implicitWidth + spacing : 0) + Math.ceil(words.implicitWidth)
    implicitHeight: Math.max(symbol.visible ? symbol.implicitHeight : 0, words.implicitHeight)
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: !isSpoken

    Row {
        id: row
        anchors.verticalCenter: parent.verticalCenter
        x: label.isCentered ? Math.round((label.width - width) / 2) : 0
        spacing: label.spacing

        Symbol {
            id: symbol
            anchors.verticalCenter: parent.verticalCenter
            visible: label.icon.length > 0
            name: label.icon
            size: label.iconSize
            color: label.iconColor
            weight: {
                if (label.font.weight >= Font.Bold)
                    return Symbol.Bold;
                if (label.font.weight >= Font.DemiBold)
                    return Symbol.Semibold;
                return label.font.weight >= Font.Medium ? Symbol.Medium : Symbol.Regular;
            }
        }
        Text {
            id: words
            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            width: Math.min(implicitWidth, label.width - (symbol.visible ? symbol.width + label.spacing : 0))
            text: Theme.oneLine(label.text)
            color: label.color
            font: label.font
            textFormat: Text.PlainText
            elide: Text.ElideRight
            maximumLineCount: 1
        }
    }
}
