#include "speech/SummarizationError.h"

#include "foundation/ProgrammingError.h"
#include "settings/L10n.h"

namespace talvenor {

SummarizationError::SummarizationError(Case kind, QString message)
    : m_case(kind), m_message(std::move(message))
{
}

SummarizationError SummarizationError::networkError(QString message)
{
    return {Case::networkError, std::move(message)};
}

SummarizationError SummarizationError::apiError(QString message)
{
    return {Case::apiError, std::move(message)};
}

SummarizationError SummarizationError::emptyTranscript()
{
    return {Case::emptyTranscript, QString()};
}

QString SummarizationError::errorDescription() const
{
    const bool german = L10n::isGerman();
    switch (m_case) {
    case Case::networkError:
        return (german ? QStringLiteral("Netzwerkfehler: ") : QStringLiteral("Network error: ")) + m_message;
    case Case::apiError:
        return QStringLiteral("API: ") + m_message;
    case Case::emptyTranscript:
        return german ? QStringLiteral("Kein Transkript vorhanden.")
                      : QStringLiteral("No transcript available.");
    }
    programmingError(QStringLiteral("a summarization error of no known case"));
}

} // namespace talvenor
