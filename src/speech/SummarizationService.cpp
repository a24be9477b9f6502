#include "speech/SummarizationService.h"

#include "service/APIService.h"
#include "settings/L10n.h"
#include "speech/SummarizationError.h"

#include <QPointer>
#include <QScopeGuard>

namespace talvenor {

SummarizationService::SummarizationService(QObject *parent) : QObject(parent)
{
}

void SummarizationService::setIsSummarizing(bool summarizing)
{
    if (m_isSummarizing == summarizing)
        return;
    m_isSummarizing = summarizing;
    Q_EMIT isSummarizingChanged();
}

Task<QString> SummarizationService::summarize(QString transcript)
{
    // Only the empty string counts as nothing: blanks are sent like any text.
    if (transcript.isEmpty())
        throw SummarizationError::emptyTranscript();

    setIsSummarizing(true);
    const auto reset = qScopeGuard([self = QPointer<SummarizationService>(this)] {
        if (self.isNull())
            return;
        startTask(self, [self]() -> Task<> {
            self->setIsSummarizing(false);
            co_return;
        });
    });

    // The interface language decides, whatever language was spoken.
    const QString language = L10n::isGerman() ? QStringLiteral("de") : QStringLiteral("en");
    co_return co_await APIService::shared().summarize(transcript, language);
}

} // namespace talvenor
