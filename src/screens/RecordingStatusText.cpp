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

StatusMark statusMark(RecordingStatus status, bool hasTranscript, bool hasSummary)
{
    switch (status) {
    case RecordingStatus::recording:
        return {QStringLiteral("waveform"), QStringLiteral("red")};
    case RecordingStatus::transcribing:
        return {QStringLiteral("text.bubble"), QStringLiteral("orange")};
    case RecordingStatus::summarizing:
        return {QStringLiteral("sparkles"), QStringLiteral("systemPurple")};
    case RecordingStatus::completed:
        if (hasSummary)
            return {QStringLiteral("checkmark.circle.fill"), QStringLiteral("green")};
        if (hasTranscript)
            return {QStringLiteral("text.badge.checkmark"), QStringLiteral("blue")};
        return {QStringLiteral("waveform"), QStringLiteral("secondary")};
    case RecordingStatus::failed:
        return {QStringLiteral("exclamationmark.triangle.fill"), QStringLiteral("red")};
    }
    programmingError(QStringLiteral("a status without a mark"));
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
