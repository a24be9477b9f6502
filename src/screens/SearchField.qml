import QtQuick
import Talvenor

/// The field that filters the list, with a button that empties it.
///
/// Its text is what was put in; line breaks in it are shown as spaces. It ends where no title does: laying out a field of
/// pasted megabytes in many scripts takes minutes.
FocusScope {
    id: field

    property alias text: input.text
    required property string placeholder

    implicitWidth: 248
    implicitHeight: Math.ceil(input.implicitHeight) + 14

    Material {
        anchors.fill: parent
        radius: 9
        // On a light window the material alone can hardly be made out.
        border.width: 1
        border.color: Theme.cardBorder
    }
    Symbol {
        id: glass
        objectName: "searchSymbol"
        anchors.left: parent.left
        anchors.leftMargin: 10
        anchors.verticalCenter: parent.verticalCenter
        name: "magnifyingglass"
        size: Theme.caption
        color: Theme.tertiary
    }
    Text {
        anchors.fill: input
        visible: input.length === 0 && input.preeditText.length === 0
        text: field.placeholder
        color: Theme.tertiary
        font: input.font
        textFormat: Text.PlainText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
    }
    TextInput {
        id: input
        objectName: "searchInput"
        anchors.left: glass.right
        anchors.leftMargin: 8
        anchors.right: clear.visible ? clear.left : parent.right
        anchors.rightMargin: clear.visible ? 8 - clear.padding : 10
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        focus: true
        activeFocusOnTab: true
        clip: true
        maximumLength: 10000
        color: Theme.primary
        selectionColor: Theme.purple
        selectedTextColor: Theme.white
        selectByMouse: true
        font.pixelSize: Theme.subheadline
        verticalAlignment: TextInput.AlignVCenter
        Accessible.role: Accessible.EditableText
        Accessible.name: field.placeholder
    }
    PlainButton {
        id: clear
        objectName: "clearSearch"
        anchors.right: parent.right
        // The symbol stands at the padding of the field, and what takes clicks reaches further.
        anchors.rightMargin: 10 - padding
        anchors.verticalCenter: parent.verticalCenter
        visible: input.length > 0
        padding: 6
        icon.name: "xmark.circle.fill"
        color: Theme.tertiary
        cornerRadius: 6
        font.pixelSize: Theme.caption
        spokenName: L10n.isGerman ? "Suche leeren" : "Clear Search"
        onClicked: {
            input.clear();
            input.forceActiveFocus();
        }
    }
    FocusRing {
        anchors.margins: 0
        radius: 9
        visible: input.activeFocus
    }
    HoverHandler {
        cursorShape: clear.hovered ? Qt.ArrowCursor : Qt.IBeamCursor
    }
}
