import QtQuick
import Talvenor

/// Shows a sheet while it is presented. Each showing makes it anew, so that it begins as if it had never been open; it
/// goes with the screen on which it hangs.
Item {
    id: presenter

    required property bool isPresented
    /// The file of the sheet.
    required property string source
    /// What is set on the sheet as it is made.
    property var properties: ({})
    property Sheet sheet: null
    readonly property bool isInWindow: Window.window !== null

    /// The sheet was closed by its user or by itself; whoever presents it changes that.
    signal dismissed

    function follow(): void {
        if (!isInWindow || isPresented === (sheet !== null))
            return;
        if (!isPresented) {
            sheet.close();
            return;
        }
        const component = Qt.createComponent(Qt.resolvedUrl(source));
        if (component.status !== Component.Ready) {
            console.error(component.errorString());
            return;
        }
        sheet = component.createObject(presenter, properties);
        sheet.closed.connect(end);
        sheet.open();
    }

    function end(): void {
        const closed = sheet;
        sheet = null;
        closed.destroy();
        if (isPresented)
            dismissed();
    }

    onIsPresentedChanged: follow()
    onIsInWindowChanged: follow()
    Component.onCompleted: follow()
    // A sheet that goes with its screen was not closed by anybody.
    Component.onDestruction: if (sheet)
        sheet.closed.disconnect(end)
}
