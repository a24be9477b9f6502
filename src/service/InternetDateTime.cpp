#include "service/InternetDateTime.h"

#include <QRegularExpression>

namespace talvenor {

std::optional<QDateTime> parseInternetDateTime(const QString &text)
{
    // Qt's own reader takes bare dates and missing offsets too, which are no instants.
    static const QRegularExpression form(
        QStringLiteral(R"(\A(\d{4}-\d{2}-\d{2}T\d{2}:\d{2}:\d{2})(?:\.(\d+))?(Z|[+-]\d{2}:?\d{2})\z)"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString milliseconds = (match.captured(2) + QStringLiteral("000")).left(3);
    const QDateTime instant = QDateTime::fromString(
        match.captured(1) + QLatin1Char('.') + milliseconds + match.captured(3), Qt::ISODateWithMs);
    return instant.isValid() ? std::optional(instant.toUTC()) : std::nullopt;
}

} // namespace talvenor
