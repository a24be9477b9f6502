#pragma once

#include "store/Recording.h"

namespace talvenor {

/// The label of a status in the language of the application.
[[nodiscard]] QString statusText(RecordingStatus status);

/// Whether a screen offers to transcribe the recording: it is completed and has no transcript.
[[nodiscard]] bool offersTranscription(const Recording &recording);

/// Whether a screen offers to summarise the recording: it is completed and has a transcript but no summary.
[[nodiscard]] bool offersSummary(const Recording &recording);

} // namespace talvenor
