// The longest time for which the main thread is busy at a stretch, in a whole session with a long list.
//
//   tests/support/virtual-desktop -- build/release/bench/StallBench
//
// Held against one frame at 60 Hz. A list of 300 meetings of an hour is loaded; then a meeting is recorded,
// stopped, transcribed, summarised, renamed and deleted. The devices are scripted: what is measured is the
// program's own work between two visits to the event loop, the saves included.

#include "platform/Platform.h"
#include "recorderfakes/RecorderFixture.h"
#include "settings/AppSettings.h"
#include "store/StorageService.h"
#include "support/Await.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>

using namespace talvenor;

namespace {

/// Measures each stretch between waking and waiting again, and remembers the longest of a phase.
class BusyMeter : public QObject
{
public:
    BusyMeter()
    {
        const QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { m_stretch.start(); });
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] { endStretch(); });
    }

    /// Ends a phase: prints its longest stretch in milliseconds.
    void report(const char *phase)
    {
        endStretch();
        std::printf("%-44s %8.2f ms\n", phase, double(m_longestNs) / 1e6);
        m_longestOfAllNs = std::max(m_longestOfAllNs, m_longestNs);
        m_longestNs = 0;
        m_stretch.start();
    }

    [[nodiscard]] double longestOfAllMs() const { return double(m_longestOfAllNs) / 1e6; }

private:
    void endStretch()
    {
        if (m_stretch.isValid())
            m_longestNs = std::max(m_longestNs, m_stretch.nsecsElapsed());
        m_stretch.invalidate();
    }

    QElapsedTimer m_stretch;
    qint64 m_longestNs = 0;
    qint64 m_longestOfAllNs = 0;
};

/// Runs the event loop as an application does, which blocks between events, until the condition holds.
template<typename Condition>
void runUntil(Condition condition)
{
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (condition())
            loop.quit();
    });
    poll.start(2);
    loop.exec();
}

Recording meetingOfAnHour(int number)
{
    Recording recording;
    recording.title = QStringLiteral("Meeting %1").arg(number);
    recording.date = recording.date.addDays(-number - 1);
    recording.duration = 3600;
    recording.audioFileName = QStringLiteral("meeting_%1.m4a").arg(number);
    recording.status = RecordingStatus::completed;
    for (int line = 0; line < 720; ++line) {
        recording.transcriptSegments.append(
            {QUuid::createUuid(), line * 5.0,
             QStringLiteral("line %1 of the meeting number %2 holds as many words as people say in it")
                 .arg(line)
                 .arg(number),
             std::nullopt});
    }
    recording.summary = QStringLiteral("## Summary\nA meeting.\n").repeated(20);
    return recording;
}

QStringList wordsOfAnHour()
{
    QStringList words;
    for (int word = 0; word < 9000; ++word)
        words.append(word % 12 == 11 ? QStringLiteral("done.") : QStringLiteral("word"));
    return words;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    test::RecorderFixture fixture;
    fixture.signIn();
    fixture.service->answer(
        QStringLiteral("POST /summarize"), 200,
        {{QStringLiteral("summary"), QStringLiteral("## Summary\nx\nPARTICIPANTS: Anna, Ben")}});
    QList<Recording> list;
    for (int number = 0; number < 300; ++number)
        list.append(meetingOfAnHour(number));
    fixture.writeList(list);
    list.clear();
    AppSettings::shared().setAutoTranscribe(true);
    AppSettings::shared().setAutoSummarize(true);

    QElapsedTimer loading;
    loading.start();
    RecorderViewModel &viewModel = fixture.start();
    std::printf("%-44s %8.2f ms\n", "load and sort, before the window is there",
                double(loading.nsecsElapsed()) / 1e6);

    BusyMeter meter;
    viewModel.setSelectedRecording(viewModel.recordings().first());
    meter.report("select");
    viewModel.startRecording();
    runUntil([&] { return viewModel.isRecording(); });
    meter.report("start a recording");
    runUntil([&] { return viewModel.recordingDuration() >= 3; });
    meter.report("three seconds of it");
    viewModel.stopRecording();
    runUntil([&] { return fixture.speech.started() == 1; });
    meter.report("stop, save, begin to transcribe");
    // Recognisers answer on threads of their own.
    generalPool().start([&fixture] { fixture.speech.finish(0, wordsOfAnHour()); });
    runUntil([&] { return !viewModel.isProcessing(); });
    meter.report("transcript of an hour, summary, four saves");
    viewModel.renameRecording(viewModel.recordings().first(), QStringLiteral("renamed"));
    test::await(StorageService::shared().allSaved());
    meter.report("rename");
    viewModel.deleteRecording(viewModel.recordings().first());
    test::await(StorageService::shared().allSaved());
    meter.report("delete");
    std::printf("%-44s %8.2f ms   (one frame at 60 Hz: 16.67 ms)\n", "longest of all",
                meter.longestOfAllMs());
    return meter.longestOfAllMs() > 0 ? 0 : 1;
}
