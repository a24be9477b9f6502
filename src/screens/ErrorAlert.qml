import QtQuick
import Talvenor

/// The one alert for failures of recording, transcription, summary and export.
MessageAlert {
    objectName: "ErrorAlert"
    title: L10n.error
}
