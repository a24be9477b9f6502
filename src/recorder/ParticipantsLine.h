#pragma once

#include <QString>
#include <QStringList>

namespace talvenor {

/// A summary with its participants line taken out, and the names that the line held.
struct ParsedSummary
{
    QString cleaned;
    QStringList names;
};

/// Takes the lines that begin with "PARTICIPANTS:", in whatever case, out of a summary.
///
/// The service closes a summary with such a line; it is found anywhere. Of several the last one decides, an
/// empty one included. What is left has no white space at its two ends and is otherwise untouched.
[[nodiscard]] ParsedSummary parseParticipants(const QString &summary);

} // namespace talvenor
