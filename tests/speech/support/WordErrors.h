#pragma once

#include <QList>
#include <QPair>
#include <QStringList>

namespace talvenor::test {

/// How two lists of words lie best beside each other.
struct WordAlignment
{
    int errors = 0; ///< substitutions, insertions and deletions together
    /// Positions in the reference and in the hypothesis of the words that are the same.
    QList<QPair<qsizetype, qsizetype>> matches;
};

/// Aligns by the least edit distance between words.
[[nodiscard]] WordAlignment alignWords(const QStringList &reference, const QStringList &hypothesis);

} // namespace talvenor::test
