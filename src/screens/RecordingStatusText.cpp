#include "screens/RecordingStatusText.h"

#include "foundation/ProgrammingError.h"
#include "settings/L10n.h"

namespace talvenor {

QString statusText(RecordingStatus status)
{
    switch (status) {
    case RecordingStatus::recording:
        return L10n::statusRecording();
    case RecordingStatus::transcribing:
        return L10n::statusTranscribing();
    case RecordingStatus::summarizing:
        return L10n::statusSummarizing();
    case RecordingStatus::completed:
        return L10n::statusCompleted();
    case RecordingStatus::failed:
        return L10n::statusFailed();
    }
    programmingError(QStringLiteral("a status without a label"));
}

bool offersTranscription(const Recording &recording)
{
    return recording.status == RecordingStatus::completed && recording.transcriptSegments.isEmpty();
}

bool offersSummary(const Recording &recording)
{
    return recording.status == RecordingStatus::completed && !recording.transcriptSegments.isEmpty() &&
           !recording.summary;
}

} // namespace talvenor
