#include "speech/TranscriptionError.h"

#include "foundation/ProgrammingError.h"
#include "settings/L10n.h"

namespace talvenor {

TranscriptionError::TranscriptionError(Case kind, QString message)
    : m_case(kind), m_message(std::move(message))
{
}

TranscriptionError TranscriptionError::recognitionFailed(QString message)
{
    return {Case::recognitionFailed, std::move(message)};
}

TranscriptionError TranscriptionError::recognizerUnavailable()
{
    return {Case::recognizerUnavailable, QString()};
}

TranscriptionError TranscriptionError::notAuthorized()
{
    return {Case::notAuthorized, QString()};
}

QString TranscriptionError::errorDescription() const
{
    const bool german = L10n::isGerman();
    switch (m_case) {
    case Case::recognitionFailed:
        return (german ? QStringLiteral("Transkription fehlgeschlagen: ")
                       : QStringLiteral("Transcription failed: ")) +
               m_message;
    case Case::recognizerUnavailable:
        return german ? QStringLiteral("Spracherkennung ist nicht verfuegbar fuer diese Sprache.")
                      : QStringLiteral("Speech recognition is not available for this language.");
    case Case::notAuthorized:
        return german ? QStringLiteral("Berechtigung fuer Spracherkennung wurde nicht erteilt.")
                      : QStringLiteral("Speech recognition permission was not granted.");
    }
    programmingError(QStringLiteral("a transcription error of no known case"));
}

} // namespace talvenor
