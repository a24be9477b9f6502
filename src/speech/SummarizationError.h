#pragma once

#include "foundation/LocalizedError.h"

namespace talvenor {

/// Why there is no summary. Failures of the service client are passed on as they are and are not of this
/// type.
class SummarizationError : public LocalizedError
{
public:
    enum class Case { networkError = 1, apiError, emptyTranscript };

    /// Defined with its text, thrown by nothing.
    [[nodiscard]] static SummarizationError networkError(QString message);
    /// Defined with its text, thrown by nothing.
    [[nodiscard]] static SummarizationError apiError(QString message);
    /// There is no text to summarise.
    [[nodiscard]] static SummarizationError emptyTranscript();

    [[nodiscard]] Case kind() const { return m_case; }
    /// What the first two cases carry; empty for the last.
    [[nodiscard]] const QString &message() const { return m_message; }
    [[nodiscard]] QString errorDescription() const override;

private:
    SummarizationError(Case kind, QString message);

    Case m_case;
    QString m_message;
};

} // namespace talvenor
