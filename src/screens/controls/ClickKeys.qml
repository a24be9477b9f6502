import QtQuick

/// The keys that click a control, each once however long it is held down. For the `Keys.forwardTo` of that control.
Item {
    id: keys

    /// Space clicks as well. Buttons of the templates do that themselves, when it is released.
    property bool clicksBySpace: false

    signal clicked

    function press(isRepeated: bool): void {
        if (!isRepeated)
            clicked();
    }

    Keys.onReturnPressed: event => press(event.isAutoRepeat)
    Keys.onEnterPressed: event => press(event.isAutoRepeat)
    Keys.onSpacePressed: event => {
        event.accepted = clicksBySpace || event.isAutoRepeat;
        if (clicksBySpace)
            press(event.isAutoRepeat);
    }
    // While a key is held down it is released and pressed over and over.
    Keys.onReleased: event => event.accepted = event.isAutoRepeat && event.key === Qt.Key_Space
}
