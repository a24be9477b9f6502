#pragma once

#include "foundation/LocalizedError.h"

namespace talvenor {

/// Why a transcription gave no transcript.
class TranscriptionError : public LocalizedError
{
public:
    enum class Case { recognitionFailed = 1, recognizerUnavailable, notAuthorized };

    /// The recogniser has failed; `message` is what it said of it.
    [[nodiscard]] static TranscriptionError recognitionFailed(QString message);
    /// There is no recogniser for the language, or it cannot be used now.
    [[nodiscard]] static TranscriptionError recognizerUnavailable();
    /// The user has not permitted recognition. Not thrown here: callers ask for the permission first.
    [[nodiscard]] static TranscriptionError notAuthorized();

    [[nodiscard]] Case kind() const { return m_case; }
    /// What `recognitionFailed` carries; empty for the other cases.
    [[nodiscard]] const QString &message() const { return m_message; }
    [[nodiscard]] QString errorDescription() const override;

private:
    TranscriptionError(Case kind, QString message);

    Case m_case;
    QString m_message;
};

} // namespace talvenor
