#pragma once

#include "store/Recording.h"

namespace talvenor {

/// The label of a status in the language of the application.
[[nodiscard]] QString statusText(RecordingStatus status);

/// What a row of the list shows for where a recording stands and what it holds.
struct StatusMark
{
    QString symbol;
    QString color; ///< the name of the theme's property
    friend bool operator==(const StatusMark &, const StatusMark &) = default;
};

/// A completed recording has three marks: with a summary, with a transcript alone, with neither.
[[nodiscard]] StatusMark statusMark(RecordingStatus status, bool hasTranscript, bool hasSummary);

/// Whether a screen offers to transcribe the recording: it is completed and has no transcript.
[[nodiscard]] bool offersTranscription(const Recording &recording);

/// Whether a screen offers to summarise the recording: it is completed and has a transcript but no summary.
[[nodiscard]] bool offersSummary(const Recording &recording);

} // namespace talvenor
