import QtQuick
import Talvenor

/// The wide button at the end of a form, which sends it. It is dimmed while there is something missing in the form, and
/// not while it is sent.
PushButton {
    /// The form can be sent.
    required property bool isReady

    look: PushButton.Accent
    verticalPadding: 12
    cornerRadius: 10
    font.pixelSize: Theme.body
    enabled: isReady && !isBusy
    opacity: isReady ? 1 : 0.6
}
