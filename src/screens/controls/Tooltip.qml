import QtQuick
import QtQuick.Templates as T
import Talvenor

/// Tells what a control is for while the pointer rests on it: put into the control, with `isWanted` bound to its
/// hovering. Decoration to those who cannot see it: controls have names and descriptions.
T.ToolTip {
    id: tip

    property bool isWanted: false

    delay: 800
    visible: isWanted && text.length > 0
    y: parent ? parent.height + 6 : 0
    x: parent ? Math.round((parent.width - width) / 2) : 0
    margins: 6
    horizontalPadding: 8
    verticalPadding: 5
    implicitWidth: Math.min(320, implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: Text {
        text: Theme.oneLine(tip.text)
        color: Theme.primary
        font.pixelSize: Theme.subheadline
        // What is shown can come from elsewhere: it is no markup.
        textFormat: Text.PlainText
        wrapMode: Text.Wrap
        maximumLineCount: 6
        elide: Text.ElideRight
    }
    background: PopupBackground {
        radius: 6
    }
}
