import QtQuick
import Talvenor

/// The root view: the sign-in screen while nobody is signed in, else the main window's content.
FocusScope {
    id: root

    required property ContentState content

    // Not by components with a common scope: those that are bound to theirs cannot be loaded in Qt 6.4.
    Loader {
        readonly property bool isLoggedIn: root.content.isLoggedIn
        property bool isReady: false

        function route() {
            if (isLoggedIn)
                setSource("MainContent.qml", {
                    "content": root.content
                });
            else
                setSource("LoginView.qml");
        }

        anchors.fill: parent
        focus: true
        onIsLoggedInChanged: if (isReady)
            route()
        Component.onCompleted: {
            isReady = true;
            route();
        }
    }
}
