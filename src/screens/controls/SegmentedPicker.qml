pragma ComponentBehavior: Bound

import QtQuick
import Talvenor

/// A choice of one among a few, all of which are seen: a row of segments of equal widths. To assistive technology it
/// is a group of radio buttons.
Rectangle {
    id: picker

    /// What can be chosen, and under the same index what it is called.
    required property var options
    required property var titles
    required property string selection
    /// The group's name.
    required property string name

    signal selected(string option)

    readonly property int selectedIndex: options.indexOf(selection)
    readonly property real segmentWidth: (width - 4) / Math.max(1, options.length)

    implicitWidth: segments.widest * options.length + 4
    implicitHeight: 28
    radius: 7
    color: Theme.withOpacity(Theme.secondary, 0.14)
    opacity: enabled ? 1 : 0.5
    Accessible.role: Accessible.Grouping
    Accessible.name: name

    SoftShadow {
        anchors.fill: thumb
        visible: thumb.visible
        color: Qt.rgba(0, 0, 0, Theme.isDark ? 0.3 : 0.14)
        blurRadius: 3
        offsetY: 1
        cornerRadius: 5.5
    }
    Rectangle {
        id: thumb
        visible: picker.selectedIndex >= 0
        x: 2 + Math.max(0, picker.selectedIndex) * picker.segmentWidth
        y: 2
        width: picker.segmentWidth
        height: picker.height - 4
        radius: 5.5
        color: Theme.isDark ? "#636369" : "#ffffff"

        Behavior on x {
            NumberAnimation {
                duration: 200
                easing.type: Easing.InOutQuad
            }
        }
    }
    Row {
        id: segments

        readonly property real widest: {
            let width = 48;
            for (let i = 0; i < children.length; ++i)
                width = Math.max(width, children[i].implicitWidth);
            return width;
        }

        x: 2
        y: 2

        Repeater {
            model: picker.options
            delegate: Item {
                id: segment

                required property int index
                required property string modelData
                readonly property bool isSelected: index === picker.selectedIndex

                function choose() {
                    if (picker.enabled)
                        picker.selected(modelData);
                }

                function chooseNeighbour(step: int) {
                    const next = index + step;
                    if (next < 0 || next >= picker.options.length)
                        return;
                    nextItemInFocusChain(step > 0).forceActiveFocus(Qt.TabFocusReason);
                }

                implicitWidth: label.implicitWidth + 24
                width: picker.segmentWidth
                height: picker.height - 4
                activeFocusOnTab: true
                Accessible.role: Accessible.RadioButton
                Accessible.name: label.text
                Accessible.checkable: true
                Accessible.checked: isSelected
                Accessible.focusable: true
                Accessible.focused: activeFocus
                Accessible.onPressAction: choose()
                Accessible.onToggleAction: choose()
                Keys.onReturnPressed: choose()
                Keys.onEnterPressed: choose()
                Keys.onSpacePressed: choose()
                Keys.onLeftPressed: chooseNeighbour(-1)
                Keys.onRightPressed: chooseNeighbour(1)

                Rectangle {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    visible: segment.index < picker.options.length - 1 && !segment.isSelected && segment.index + 1 !== picker.selectedIndex
                    width: 1
                    height: 14
                    color: Theme.divider
                }
                Text {
                    id: label
                    anchors.centerIn: parent
                    width: Math.min(implicitWidth, parent.width - 8)
                    text: picker.titles[segment.index] ?? segment.modelData
                    color: segment.isSelected ? Theme.primary : Theme.secondary
                    font.pixelSize: Theme.subheadline
                    font.weight: segment.isSelected ? Font.Medium : Font.Normal
                    textFormat: Text.PlainText
                    elide: Text.ElideRight
                }
                FocusRing {
                    anchors.margins: 0
                    radius: 5.5
                    visible: segment.activeFocus
                }
                TapHandler {
                    onTapped: segment.choose()
                }
            }
        }
    }
}
