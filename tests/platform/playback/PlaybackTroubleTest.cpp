#include "PlaybackDesktop.h"

#include "audio/AudioCaptureService.h"
#include "audio/AudioPlayerService.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/media/FastStartRewriter.h"
#include "platform/linux/media/LibavAudioFile.h"
#include "platform/linux/media/LinuxMedia.h"
#include "platform/linux/playback/LinuxPlayback.h"
#include "support/Await.h"
#include "support/DecodedAudio.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <signal.h>

#include <cmath>

using namespace talvenor;
using namespace talvenor::test;

namespace {

/// Keeps the processes of the sound server from running while it lives.
class HungServer
{
public:
    HungServer() { signalAll(SIGSTOP); }
    ~HungServer() { goOn(); }
    Q_DISABLE_COPY_MOVE(HungServer)
    void goOn() { signalAll(SIGCONT); }

private:
    static void signalAll(int number)
    {
        QFile pids(qEnvironmentVariable("TALVENOR_DESKTOP") + QStringLiteral("/audio/pids"));
        if (!pids.open(QIODevice::ReadOnly))
            qFatal("the processes of the sound server are not known");
        const QList<QByteArray> lines = pids.readAll().split('\n');
        for (const QByteArray &line : lines)
            if (const int pid = line.toInt(); pid > 0)
                ::kill(pid, number);
    }
};

/// The level of a tone in the half second in which it is loudest: over longer times a sound that begins anew
/// may cancel itself out.
double loudestLevel(std::span<const float> samples, double frequency)
{
    constexpr auto kStep = std::size_t(kPlaybackRate / 2);
    double loudest = -200;
    for (std::size_t start = 0; start + kStep <= samples.size(); start += kStep)
        loudest = std::max(loudest, toneLevelDbfs(samples.subspan(start, kStep), kPlaybackRate, frequency));
    return loudest;
}

/// The longest that any of the calls made through it has taken, in milliseconds.
class CallMeter
{
public:
    template<typename Call>
    void run(Call call)
    {
        QElapsedTimer time;
        time.start();
        call();
        m_longest = std::max(m_longest, double(time.nsecsElapsed()) / 1e6);
    }
    [[nodiscard]] double longestMs() const { return m_longest; }

private:
    double m_longest = 0;
};

} // namespace

/// Playback while something goes wrong, and while a recording runs; on a real sound server.
class PlaybackTroubleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        installLinuxAudio(Platform::shared());
        installLinuxMedia(Platform::shared());
        installLinuxPlayback(Platform::shared());
    }
    void init()
    {
        m_folder.emplace();
        m_steps = m_folder->filePath(QStringLiteral("steps.m4a"));
        makeSteppedFile(m_steps, 6);
        m_ear.emplace();
    }
    void cleanup()
    {
        m_ear.reset();
        m_folder.reset();
    }

    void aFileThatIsReplacedPlaysOn()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        const QString other = m_folder->filePath(QStringLiteral("other.m4a"));
        makeToneFile(other, 5'000, 2);
        QVERIFY(QFile::remove(m_steps));
        QVERIFY(QFile::rename(other, m_steps));
        service.seek(4.5);
        QVERIFY(m_ear->hears(stepFrequency(5)));
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        // The new file is what the next load finds.
        service.load(m_steps);
        QVERIFY(std::abs(service.duration() - 2) < 0.05);
        service.play();
        QVERIFY(m_ear->hears(5'000));
    }

    void aFileThatIsDeletedPlaysOnAndIsThenMissed()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        QVERIFY(QFile::remove(m_steps));
        service.seek(3.2);
        QVERIFY(m_ear->hears(stepFrequency(4)));
        service.stop();
        service.load(m_steps);
        QCOMPARE(service.duration(), 0.0);
        service.play();
        QVERIFY(!service.isPlaying());
    }

    void aFileThatIsCutOffInPlaceEnds()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        QVERIFY(QFile::resize(m_steps, 5'000));
        service.seek(4);
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
    }

    void aFileThatIsOverwrittenByNonsenseEnds()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        QFile file(m_steps);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QCOMPARE(file.write(QByteArray(int(file.size()), '\x5a')), file.size());
        QVERIFY(file.flush());
        service.seek(4);
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
    }

    void aRecordingThatIsBeingWrittenPlaysToWhatWasThere()
    {
        const QString path = m_folder->filePath(QStringLiteral("growing.m4a"));
        LibavAudioFile file(path, {.sampleRate = kPlaybackRate});
        int step = 0;
        const auto record = [&](int seconds) {
            for (int end = step + seconds; step < end; ++step) {
                PcmBuffer second(AudioFormat{kPlaybackRate, 1}, std::uint32_t(kPlaybackRate));
                for (int frame = 0; frame < int(kPlaybackRate); ++frame)
                    second.floatChannelData()[0][frame] =
                        0.1F * float(std::sin(2 * M_PI * stepFrequency(step) * frame / kPlaybackRate));
                file.write(second);
            }
        };
        record(4);
        AudioPlayerService service;
        service.load(path);
        const double told = service.duration();
        QVERIFY2(told > 2.5 && told < 4.1, qPrintable(QString::number(told)));
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(1)));
        record(3);
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        QCOMPARE(service.currentTime(), told);
        QVERIFY(m_ear->hearsNothing());
        const double seconds = soundExtent(m_ear->samples()).seconds();
        QVERIFY2(std::abs(seconds - told) < 0.1, qPrintable(QString::number(seconds)));
        service.load(path);
        QVERIFY(service.duration() > told + 2);
        service.seek(5.5);
        m_ear->clear();
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(5)));
    }

    void aLostServerEndsPlaybackAndANewOneTakesItUp()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.seek(1.2);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(1)));
        m_ear.reset();
        audioServer({QStringLiteral("kill")});
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        const double position = service.currentTime();
        QVERIFY2(position > 1.1 && position < 4, qPrintable(QString::number(position)));
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        QVERIFY(std::abs(service.currentTime() - position) < 0.05);
        audioServer({QStringLiteral("start")});
        m_ear.emplace();
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(int(position) + 1)));
        const double rest = heardSeconds(m_ear->samples(), stepFrequency(int(position)));
        const double error = rest - (int(position) + 1 - position);
        QVERIFY2(std::abs(error) < 0.08, qPrintable(QString::number(error)));
    }

    void aServerThatHangsHoldsNobodyUp()
    {
        CallMeter calls;
        {
            AudioPlayerService service;
            AudioPlayerService second;
            service.load(m_steps);
            service.play();
            QVERIFY(m_ear->hears(stepFrequency(0)));
            HungServer server;
            for (int count = 0; count < 5; ++count) {
                calls.run([&] { service.pause(); });
                calls.run([&] { service.seek(2.5); });
                calls.run([&] { service.setRate(1.5); });
                calls.run([&] { service.play(); });
                calls.run([&] { second.load(m_steps); });
                calls.run([&] { second.play(); });
                calls.run([&] { second.skip(1); });
                QTest::qWait(50);
                calls.run([&] { second.stop(); });
            }
            calls.run([&] { service.stop(); });
            calls.run([&] { service.load(m_steps); });
            QVERIFY(std::abs(service.duration() - 6) < 0.05);
            server.goOn();
            // With the server the sound comes back.
            m_ear->clear();
            service.seek(3);
            service.play();
            QVERIFY(m_ear->hears(stepFrequency(3)));
        }
        qInfo("the longest call took %.1f ms", calls.longestMs());
        QVERIFY(calls.longestMs() < 500);
    }

    void aPlayerThatEndsWhileTheServerHangsIsNotWaitedFor()
    {
        auto service = std::make_unique<AudioPlayerService>();
        service->load(m_steps);
        service->play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        HungServer server;
        QTest::qWait(300);
        CallMeter calls;
        calls.run([&] { service.reset(); });
        qInfo("it took %.1f ms", calls.longestMs());
        QVERIFY(calls.longestMs() < 500);
    }

    void theStreamBearsOurNameAndProcess()
    {
        AudioPlayerService service;
        service.load(m_steps);
        // Nothing stands in anybody's mixer before something plays.
        const QString own =
            QStringLiteral("application.process.id = \"%1\"").arg(QCoreApplication::applicationPid());
        QVERIFY(!pactl({QStringLiteral("list"), QStringLiteral("sink-inputs")}).contains(own));
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        const QString inputs = pactl({QStringLiteral("list"), QStringLiteral("sink-inputs")});
        QVERIFY2(inputs.contains(own), qPrintable(inputs));
        QVERIFY(inputs.contains(QStringLiteral("application.name = \"Talvenor\"")));
        QVERIFY(!inputs.contains(QStringLiteral("mpv")));
        service.stop();
        QVERIFY(waitUntil([&] {
            return !pactl({QStringLiteral("list"), QStringLiteral("sink-inputs")}).contains(own);
        }));
    }

    void aRecordingLeavesOurPlaybackOut()
    {
        const QString tone = m_folder->filePath(QStringLiteral("own.m4a"));
        makeToneFile(tone, 3'100, 20);
        const ToneProcess farSide({.frequency = 1'700, .levelDbfs = -26, .device = "speaker"});
        AudioPlayerService player;
        player.load(tone);
        player.play();
        QVERIFY(m_ear->hears(3'100));
        const QString path = m_folder->filePath(QStringLiteral("meeting.m4a"));
        AudioCaptureService capture;
        await(capture.startRecording(path));
        QVERIFY(capture.hasSystemAudio());
        QVERIFY(m_ear->listen(2.5));
        // A stream that begins while the recording runs, and other speeds, are left out as well.
        player.pause();
        player.setRate(1.5F);
        player.play();
        QVERIFY(m_ear->listen(2.5));
        QVERIFY(heardSeconds(m_ear->samples(), 3'100) > 4);
        player.stop();
        player.load(tone);
        player.play();
        QVERIFY(m_ear->hears(3'100));
        QVERIFY(m_ear->listen(1.5));
        QCOMPARE(capture.stopRecording(), path);
        await(capture.finished());
        waitForFastStartRewrites();

        const std::vector<float> samples = decodedAudio(path);
        QVERIFY(samples.size() > std::size_t(5 * kPlaybackRate));
        const auto heard = std::span(samples).subspan(std::size_t(kPlaybackRate));
        const double other = loudestLevel(heard, 1'700);
        const double own = loudestLevel(heard, 3'100);
        qInfo("the far side is at %.1f dB, our own playback at %.1f dB", other, own);
        QVERIFY(heardSeconds(heard, 1'700) > 0.9 * double(heard.size()) / kPlaybackRate);
        QVERIFY(own < -70);
    }

private:
    std::optional<QTemporaryDir> m_folder;
    QString m_steps;
    std::optional<SpeakerEar> m_ear;
};

QTEST_GUILESS_MAIN(PlaybackTroubleTest)
#include "PlaybackTroubleTest.moc"
