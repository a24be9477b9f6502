import QtQuick
import Talvenor

/// Says what is being recorded: the microphone alone, or the machine's own sound with it.
Material {
    id: indicator

    required property bool hasSystemAudio

    implicitWidth: 12 + dot.width + 6 + words.implicitWidth + 12
    implicitHeight: words.implicitHeight + 10
    radius: height / 2

    Behavior on implicitWidth {
        EaseMotion {}
    }

    Rectangle {
        id: dot
        objectName: "sourceDot"
        anchors.verticalCenter: parent.verticalCenter
        x: 12
        width: 6
        height: 6
        radius: 3
        color: indicator.hasSystemAudio ? Theme.green : Theme.orange

        Behavior on color {
            ColorAnimation {
                duration: 350
            }
        }
    }
    StaticText {
        id: words
        objectName: "source"
        anchors.verticalCenter: parent.verticalCenter
        x: 24
        width: indicator.width - 36
        elide: Text.ElideRight
        color: Theme.secondary
        font.pixelSize: Theme.scaled(11)
        text: {
            if (indicator.hasSystemAudio)
                return L10n.isGerman ? "Mikrofon + System-Audio" : "Microphone + System Audio";
            return L10n.isGerman ? "Nur Mikrofon (System-Audio nicht verfuegbar)" : "Microphone only (System audio unavailable)";
        }
    }
}
