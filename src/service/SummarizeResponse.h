#pragma once

#include <QJsonValue>
#include <QString>

namespace talvenor {

/// The service's summary of a transcript.
struct SummarizeResponse
{
    QString summary; ///< Markdown

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static SummarizeResponse fromJson(const QJsonValue &json);
};

} // namespace talvenor
