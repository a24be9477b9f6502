#pragma once

#include "foundation/Task.h"

#include <QObject>
#include <QString>

namespace talvenor {

/// Gets the summary of a transcript from the hosted service. Made and used on the main thread.
class SummarizationService : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool isSummarizing READ isSummarizing NOTIFY isSummarizingChanged)

public:
    explicit SummarizationService(QObject *parent = nullptr);

    /// True while a summary is being made, and until shortly after it is there. With several calls at once
    /// it follows the latest change.
    [[nodiscard]] bool isSummarizing() const { return m_isSummarizing; }

    /// Gives the summary as Markdown, in the language of the application.
    ///
    /// Throws SummarizationError for the empty string, to which alone nothing is sent; failures of the
    /// service client pass through as they are.
    Task<QString> summarize(QString transcript);

Q_SIGNALS:
    void isSummarizingChanged();

private:
    void setIsSummarizing(bool summarizing);

    bool m_isSummarizing = false;
};

} // namespace talvenor
