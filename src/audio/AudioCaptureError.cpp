#include "audio/AudioCaptureError.h"

#include "foundation/ProgrammingError.h"
#include "settings/L10n.h"

namespace talvenor {

QString AudioCaptureError::errorDescription() const
{
    switch (m_reason) {
    case Case::noAudioInput:
        return L10n::isGerman() ? QStringLiteral("Kein Mikrofon gefunden.")
                                : QStringLiteral("No microphone found.");
    case Case::captureSetupFailed:
        return L10n::isGerman() ? QStringLiteral("Audio-Setup fehlgeschlagen.")
                                : QStringLiteral("Audio setup failed.");
    case Case::permissionDenied:
        return L10n::isGerman() ? QStringLiteral("Mikrofon-Berechtigung fehlt.")
                                : QStringLiteral("Microphone permission missing.");
    }
    programmingError(QStringLiteral("an AudioCaptureError of no known case"));
}

} // namespace talvenor
