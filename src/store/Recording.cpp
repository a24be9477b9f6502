#include "store/Recording.h"

#include "foundation/ProgrammingError.h"
#include "platform/Formatting.h"

#include <QHashFunctions>

#include <array>
#include <cmath>

namespace talvenor {

namespace {

struct StatusRow
{
    RecordingStatus status;
    QStringView form;
};

constexpr std::array statusRows{
    StatusRow{RecordingStatus::recording, u"recording"},
    StatusRow{RecordingStatus::transcribing, u"transcribing"},
    StatusRow{RecordingStatus::summarizing, u"summarizing"},
    StatusRow{RecordingStatus::completed, u"completed"},
    StatusRow{RecordingStatus::failed, u"failed"},
};

qint64 wholeSeconds(double seconds)
{
    // 2^63 is the first double that no 64-bit integer holds.
    constexpr double limit = 9223372036854775808.0;
    if (!std::isfinite(seconds) || seconds >= limit || seconds < -limit)
        programmingError(QStringLiteral("a time that no clock shows: %1 seconds").arg(seconds));
    return qint64(seconds);
}

QString twoDigits(qint64 number)
{
    return QString::asprintf("%02lld", static_cast<long long>(number));
}

} // namespace

const QList<RecordingStatus> &allRecordingStatuses()
{
    static const QList<RecordingStatus> all = [] {
        QList<RecordingStatus> list;
        for (const StatusRow &row : statusRows)
            list.append(row.status);
        return list;
    }();
    return all;
}

QString stringForm(RecordingStatus status)
{
    for (const StatusRow &row : statusRows) {
        if (row.status == status)
            return row.form.toString();
    }
    programmingError(QStringLiteral("a recording status outside its enumeration"));
}

std::optional<RecordingStatus> recordingStatusFromString(QStringView text)
{
    for (const StatusRow &row : statusRows) {
        if (row.form == text)
            return row.status;
    }
    return std::nullopt;
}

QString TranscriptSegment::formattedTimestamp() const
{
    const qint64 whole = wholeSeconds(timestamp);
    return twoDigits(whole / 60) + u':' + twoDigits(whole % 60);
}

size_t qHash(const Participant &participant, size_t seed) noexcept
{
    return qHashMulti(seed, participant.id, participant.name, participant.isDetectedByAI);
}

QString formatDuration(double seconds)
{
    const qint64 whole = wholeSeconds(seconds);
    const qint64 hours = whole / 3600;
    const QString minutesAndSeconds = twoDigits(whole % 3600 / 60) + u':' + twoDigits(whole % 60);
    return hours > 0 ? QString::number(hours) + u':' + minutesAndSeconds : minutesAndSeconds;
}

QString Recording::formattedDuration() const
{
    return formatDuration(duration);
}

QString Recording::formattedDate() const
{
    return formatMediumDateShortTime(date);
}

QString Recording::fullTranscript() const
{
    QString text;
    for (const TranscriptSegment &segment : transcriptSegments) {
        if (!text.isEmpty())
            text += u'\n';
        text += u'[' + segment.formattedTimestamp() + QStringLiteral("] ");
        if (segment.speaker)
            text += u'[' + *segment.speaker + QStringLiteral("] ");
        text += segment.text;
    }
    return text;
}

} // namespace talvenor
