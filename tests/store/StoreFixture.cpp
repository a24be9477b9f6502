#include "StoreFixture.h"

#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace talvenor::test {

namespace {

QUuid numbered(quint32 kind, quint32 number)
{
    return {kind, quint16(number >> 16), quint16(number & 0xFFFF), 0x80, 1, 2, 3, 4, 5, 6, 7};
}

} // namespace

Recording fullRecording()
{
    Recording recording;
    recording.id = QUuid(QStringLiteral("{0a1b2c3d-4e5f-6789-abcd-ef0123456789}"));
    recording.title = QStringLiteral("Weekly \"sync\" – Straße/№ 5");
    recording.date = QDateTime(QDate(2026, 3, 9), QTime(8, 5, 7), Qt::UTC);
    recording.duration = 3725;
    recording.audioFileName = QStringLiteral("meeting_2026-03-09_08-05-07.m4a");
    recording.status = RecordingStatus::completed;
    recording.transcriptSegments = {
        {.id = numbered(1, 1), .timestamp = 0, .text = QStringLiteral("Hello."), .speaker = std::nullopt},
        {.id = numbered(1, 2),
         .timestamp = 62.25,
         .text = QStringLiteral("Moin, grüß dich."),
         .speaker = QStringLiteral("Jörg")},
    };
    recording.summary = QStringLiteral("## Summary\nShort.");
    recording.participants = {
        {.id = numbered(2, 1), .name = QStringLiteral("Anna"), .isDetectedByAI = false},
        {.id = numbered(2, 2), .name = QStringLiteral("Jörg"), .isDetectedByAI = true},
    };
    return recording;
}

Recording longMeeting(int minutes, int seed)
{
    const auto base = quint32(seed) * 4096;
    Recording recording;
    recording.id = numbered(3, quint32(seed));
    recording.title = QStringLiteral("Meeting %1").arg(seed);
    recording.date = QDateTime(QDate(2026, 1, 1), QTime(9, 0), Qt::UTC).addSecs(qint64(seed) * 7200);
    recording.duration = minutes * 60;
    recording.audioFileName = QStringLiteral("meeting_%1.m4a").arg(seed);
    recording.status = RecordingStatus::completed;
    recording.transcriptSegments.reserve(minutes * 12);
    for (int i = 0; i < minutes * 12; ++i) {
        recording.transcriptSegments.append(TranscriptSegment{
            .id = numbered(4, base + quint32(i)),
            .timestamp = i * 5 + 0.37,
            .text = QStringLiteral("We said thing %1 of meeting %2, and then we talked for a while about the "
                                   "size of the für and wider.")
                        .arg(i)
                        .arg(seed),
            .speaker = std::nullopt});
    }
    recording.summary = QStringLiteral("## Summary\nMeeting %1 was long.\n").arg(seed);
    for (int i = 0; i < 4; ++i)
        recording.participants.append(Participant{.id = numbered(5, base + quint32(i)),
                                                  .name = QStringLiteral("Person %1").arg(i),
                                                  .isDetectedByAI = i % 2 == 0});
    return recording;
}

bool isSameRecording(const Recording &a, const Recording &b)
{
    const auto sameSegment = [](const TranscriptSegment &left, const TranscriptSegment &right) {
        return left.id == right.id && left.timestamp == right.timestamp && left.text == right.text &&
               left.speaker == right.speaker;
    };
    return a.id == b.id && a.title == b.title && a.date.toSecsSinceEpoch() == b.date.toSecsSinceEpoch() &&
           a.duration == b.duration && a.audioFileName == b.audioFileName && a.status == b.status &&
           a.summary == b.summary && a.participants == b.participants &&
           std::equal(a.transcriptSegments.begin(), a.transcriptSegments.end(), b.transcriptSegments.begin(),
                      b.transcriptSegments.end(), sameSegment);
}

bool isSameList(const QList<Recording> &a, const QList<Recording> &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSameRecording);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
}

StandardOutputCapture::StandardOutputCapture()
{
    static_cast<void>(std::fflush(stdout));
    QByteArray name = qgetenv("TMPDIR") + "/stdout-XXXXXX";
    m_file = mkstemp(name.data());
    m_original = dup(STDOUT_FILENO);
    if (m_file < 0 || m_original < 0 || dup2(m_file, STDOUT_FILENO) < 0)
        qFatal("standard output cannot be captured");
    unlink(name.constData());
}

StandardOutputCapture::~StandardOutputCapture()
{
    if (m_original >= 0)
        static_cast<void>(take());
}

QByteArray StandardOutputCapture::take()
{
    dup2(m_original, STDOUT_FILENO);
    close(m_original);
    m_original = -1;
    QByteArray text;
    text.resize(qsizetype(lseek(m_file, 0, SEEK_END)));
    const ssize_t count = pread(m_file, text.data(), std::size_t(text.size()), 0);
    text.truncate(std::max<ssize_t>(count, 0));
    close(m_file);
    return text;
}

} // namespace talvenor::test
