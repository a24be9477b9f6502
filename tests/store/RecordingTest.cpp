#include "store/Recording.h"

#include "StoreFixture.h"

#include <QSet>
#include <QTest>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <limits>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace talvenor {

namespace {

/// True if `action`, done in a copy of this process, aborts that copy.
template<typename Action>
bool abortsTheProcess(Action action)
{
    const pid_t child = fork();
    if (child == 0) {
        // Neither a core file nor Qt Test's search for a debugger, which take seconds.
        prctl(PR_SET_DUMPABLE, 0);
        std::signal(SIGABRT, SIG_DFL);
        static_cast<void>(std::freopen("/dev/null", "w", stderr));
        action();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT;
}

QString timestampOf(double seconds)
{
    return TranscriptSegment{.id = QUuid(), .timestamp = seconds, .text = {}, .speaker = {}}
        .formattedTimestamp();
}

} // namespace

class RecordingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void durationIsTruncatedAndShowsHoursOnlyFromOneHourOn_data();
    void durationIsTruncatedAndShowsHoursOnlyFromOneHourOn();
    void timestampDoesNotFoldMinutesIntoHours_data();
    void timestampDoesNotFoldMinutesIntoHours();
    void aTimeThatNoIntegerHoldsEndsTheProcess_data();
    void aTimeThatNoIntegerHoldsEndsTheProcess();
    void statusesHaveTheirStringsInDeclarationOrder();
    void anUnknownStatusStringIsNone();
    void aTranscriptIsOneLineForEachSegment();
    void aTranscriptWithoutSegmentsIsEmpty();
    void theDateIsInTheSystemsLocaleAndZone();
    void participantsAreEqualByAllThreeFields();
    void newValuesHaveTheirDefaults();
    void aCopyDoesNotFollowItsOriginal();
};

void RecordingTest::durationIsTruncatedAndShowsHoursOnlyFromOneHourOn_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << QStringLiteral("00:00");
    QTest::newRow("below a minute") << 59.0 << QStringLiteral("00:59");
    QTest::newRow("a minute") << 60.0 << QStringLiteral("01:00");
    QTest::newRow("truncated") << 3599.9 << QStringLiteral("59:59");
    QTest::newRow("an hour") << 3600.0 << QStringLiteral("1:00:00");
    QTest::newRow("an hour and more") << 3725.0 << QStringLiteral("1:02:05");
    QTest::newRow("a hundred hours") << 360000.0 << QStringLiteral("100:00:00");
}

void RecordingTest::durationIsTruncatedAndShowsHoursOnlyFromOneHourOn()
{
    QFETCH(double, seconds);
    Recording recording;
    recording.duration = seconds;
    QTEST(recording.formattedDuration(), "text");
    QTEST(formatDuration(seconds), "text");
}

void RecordingTest::timestampDoesNotFoldMinutesIntoHours_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << QStringLiteral("00:00");
    QTest::newRow("truncated") << 59.999 << QStringLiteral("00:59");
    QTest::newRow("beyond an hour") << 3725.0 << QStringLiteral("62:05");
    QTest::newRow("beyond a hundred minutes") << 6000.0 << QStringLiteral("100:00");
}

void RecordingTest::timestampDoesNotFoldMinutesIntoHours()
{
    QFETCH(double, seconds);
    QTEST(timestampOf(seconds), "text");
}

void RecordingTest::aTimeThatNoIntegerHoldsEndsTheProcess_data()
{
    QTest::addColumn<double>("seconds");
    QTest::addColumn<bool>("ends");
    QTest::newRow("not a number") << std::nan("") << true;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << true;
    QTest::newRow("negative infinite") << -std::numeric_limits<double>::infinity() << true;
    QTest::newRow("two to the 63rd") << std::ldexp(1.0, 63) << true;
    QTest::newRow("below minus two to the 63rd") << -std::ldexp(1.0, 64) << true;
    QTest::newRow("the largest that fits") << std::nextafter(std::ldexp(1.0, 63), 0) << false;
    QTest::newRow("the smallest that fits") << -std::ldexp(1.0, 63) << false;
}

void RecordingTest::aTimeThatNoIntegerHoldsEndsTheProcess()
{
    QFETCH(double, seconds);
    QFETCH(bool, ends);
    QCOMPARE(abortsTheProcess([seconds] { static_cast<void>(timestampOf(seconds)); }), ends);
    QCOMPARE(abortsTheProcess([seconds] { static_cast<void>(formatDuration(seconds)); }), ends);
}

void RecordingTest::statusesHaveTheirStringsInDeclarationOrder()
{
    QStringList forms;
    for (const RecordingStatus status : allRecordingStatuses()) {
        forms.append(stringForm(status));
        QCOMPARE(recordingStatusFromString(stringForm(status)), std::optional(status));
    }
    const QStringList expected{QStringLiteral("recording"), QStringLiteral("transcribing"),
                               QStringLiteral("summarizing"), QStringLiteral("completed"),
                               QStringLiteral("failed")};
    QCOMPARE(forms, expected);
}

void RecordingTest::anUnknownStatusStringIsNone()
{
    for (const QStringView form : {u"", u"Completed", u"completed ", u"done"})
        QVERIFY(!recordingStatusFromString(form));
}

void RecordingTest::aTranscriptIsOneLineForEachSegment()
{
    QCOMPARE(test::fullRecording().fullTranscript(),
             QStringLiteral("[00:00] Hello.\n[01:02] [Jörg] Moin, grüß dich."));
    Recording emptyFirstLine;
    emptyFirstLine.transcriptSegments = {
        {.id = {}, .timestamp = 0, .text = {}, .speaker = QString()},
        {.id = {}, .timestamp = 1, .text = QStringLiteral("b"), .speaker = {}}};
    QCOMPARE(emptyFirstLine.fullTranscript(), QStringLiteral("[00:00] [] \n[00:01] b"));
}

void RecordingTest::aTranscriptWithoutSegmentsIsEmpty()
{
    QCOMPARE(Recording().fullTranscript(), QString());
}

void RecordingTest::theDateIsInTheSystemsLocaleAndZone()
{
    // Which locales give what is the formatting's own matter and tested there.
    const QByteArray locale = qgetenv("LC_ALL");
    const QByteArray zone = qgetenv("TZ");
    qputenv("LC_ALL", "de_DE.UTF-8");
    qputenv("TZ", "Europe/Berlin");
    const QString text = test::fullRecording().formattedDate();
    qputenv("LC_ALL", locale);
    qputenv("TZ", zone);
    QCOMPARE(text, QStringLiteral("09.03.2026, 09:05"));
}

void RecordingTest::participantsAreEqualByAllThreeFields()
{
    const Participant one{.id = QUuid::createUuid(), .name = QStringLiteral("A"), .isDetectedByAI = false};
    Participant other = one;
    QVERIFY(one == other);
    QCOMPARE(qHash(one), qHash(other));
    other.isDetectedByAI = true;
    QVERIFY(one != other);
    other = one;
    other.name = QStringLiteral("B");
    QVERIFY(one != other);
    other = one;
    other.id = QUuid::createUuid();
    QVERIFY(one != other);
    const QSet<Participant> set{one, one, other};
    QCOMPARE(set.size(), 2);
}

void RecordingTest::newValuesHaveTheirDefaults()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const Recording recording;
    QVERIFY(recording.date >= before && recording.date <= QDateTime::currentDateTimeUtc());
    QVERIFY(!recording.id.isNull());
    QVERIFY(recording.id != Recording().id);
    QVERIFY(recording.title.isEmpty());
    QVERIFY(recording.audioFileName.isEmpty());
    QCOMPARE(recording.duration, 0.0);
    QCOMPARE(recording.status, RecordingStatus::recording);
    QVERIFY(recording.transcriptSegments.isEmpty());
    QVERIFY(recording.participants.isEmpty());
    QVERIFY(!recording.summary);
    QVERIFY(!TranscriptSegment().id.isNull());
    QVERIFY(!TranscriptSegment().speaker);
    QVERIFY(!Participant().id.isNull());
    QVERIFY(!Participant().isDetectedByAI);
}

void RecordingTest::aCopyDoesNotFollowItsOriginal()
{
    Recording original = test::fullRecording();
    const Recording copy = original;
    original.title = QStringLiteral("other");
    original.transcriptSegments[0].text = QStringLiteral("other");
    original.participants.clear();
    QVERIFY(test::isSameRecording(copy, test::fullRecording()));
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::RecordingTest)
#include "RecordingTest.moc"
