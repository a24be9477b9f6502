#pragma once

#include "store/Recording.h"

namespace talvenor {

/// Joins recognised words into the lines of a transcript.
///
/// A line ends at a word whose last character is ".", "?", "!" or ":", and at its fifteenth word. Words are
/// joined by one blank; a line has the timestamp of its first word, an `id` of its own and no speaker. Any
/// thread.
[[nodiscard]] QList<TranscriptSegment> groupSegments(const QList<TranscriptSegment> &words);

} // namespace talvenor
