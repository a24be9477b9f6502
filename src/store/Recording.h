#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

namespace talvenor {

/// Where a recording stands. `completed` says that the last step has ended well, not what the recording
/// holds.
enum class RecordingStatus { recording = 1, transcribing, summarizing, completed, failed };

/// All statuses in declaration order.
[[nodiscard]] const QList<RecordingStatus> &allRecordingStatuses();
/// The string that stands in the file.
[[nodiscard]] QString stringForm(RecordingStatus status);
/// The reverse; absent for any other string.
[[nodiscard]] std::optional<RecordingStatus> recordingStatusFromString(QStringView text);

/// One line of a transcript.
struct TranscriptSegment
{
    QUuid id = QUuid::createUuid();
    double timestamp = 0; ///< seconds from the start of the recording
    QString text;
    std::optional<QString> speaker;

    /// Minutes and seconds, truncated, "62:05" for 3725 seconds: minutes are not folded into hours.
    [[nodiscard]] QString formattedTimestamp() const;
};

/// One person of a meeting. Names need not be unique.
struct Participant
{
    QUuid id = QUuid::createUuid();
    QString name;
    bool isDetectedByAI = false; ///< the name came from a summary and not from the user

    friend bool operator==(const Participant &, const Participant &) = default;
};

/// A hash over all three fields.
[[nodiscard]] size_t qHash(const Participant &participant, size_t seed = 0) noexcept;

/// One meeting: everything about it but the sound. A value; recordings are compared by `id` alone.
struct Recording
{
    QUuid id = QUuid::createUuid();
    QString title;
    QDateTime date = QDateTime::currentDateTimeUtc(); ///< when the recording was started
    double duration = 0;                              ///< seconds, as the recorder's timer has counted them
    QString audioFileName;                            ///< without a folder
    RecordingStatus status = RecordingStatus::recording;
    QList<TranscriptSegment> transcriptSegments; ///< in transcript order
    std::optional<QString> summary;              ///< Markdown, the participants line taken out
    QList<Participant> participants;             ///< in order of adding

    /// `duration` as text, see `formatDuration`.
    [[nodiscard]] QString formattedDuration() const;
    /// `date` in medium date style and short time style, by the system's locale whatever the language of the
    /// application.
    [[nodiscard]] QString formattedDate() const;
    /// One line for each segment, "[time] [speaker] text", joined by line feeds; empty without segments.
    [[nodiscard]] QString fullTranscript() const;
};

/// A length of time as "mm:ss", or "h:mm:ss" from one hour on; truncated to whole seconds. A value that is
/// not finite or beyond 64 bits is a programming error.
[[nodiscard]] QString formatDuration(double seconds);

} // namespace talvenor
