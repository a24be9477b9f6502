#pragma once

#include "store/Recording.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <vector>

namespace talvenor {

/// One recording as it stands in `recordings.json`: a JSON object, pretty-printed one level deep, keys
/// sorted, UTF-8, without a line feed at its end.
///
/// Dates are ISO 8601 in UTC in whole seconds, identifiers upper-case, absent texts left out. Numbers read
/// back as the same value. Half a surrogate pair becomes U+FFFD. A number that is not finite, or a date
/// without a year of four digits, is a programming error.
[[nodiscard]] QByteArray encodeRecording(const Recording &recording);

/// Turns lists into the text of `recordings.json`, and keeps each recording's text for the next time.
///
/// Saves come one after the other and differ in one recording, so nearly all of the text is there already.
/// Whether a recording has changed is told by its parts being the very same shared data, which costs no look
/// at the text. Used by one thread at a time.
class RecordingsEncoder
{
public:
    /// The text of `list` in pieces, which are valid until the next call.
    [[nodiscard]] const std::vector<QByteArrayView> &encode(const QList<Recording> &list);

private:
    struct Entry
    {
        Recording recording; ///< holds on to the shared data, so that its address is not used again
        QByteArray text;
    };

    std::vector<Entry> m_entries; ///< of the last list, in its order
    std::vector<QByteArrayView> m_pieces;
};

} // namespace talvenor
