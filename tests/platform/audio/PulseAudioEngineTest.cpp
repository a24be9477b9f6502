#include "AudioDesktop.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/audio/PulseAudioEngine.h"
#include "support/Await.h"

#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QProcess>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstdlib>
#include <numeric>
#include <unistd.h>

using namespace talvenor;
using namespace talvenor::test;

namespace {

constexpr double kRate = 48000;

/// An engine whose microphone is being listened to.
struct Listening
{
    AudioFormat format;
    Recorded recorded;
    std::chrono::steady_clock::time_point startedAt;
    PulseAudioEngine engine; ///< ends first, for its end still delivers what is queued

    explicit Listening(std::function<void(PcmBuffer &)> also = {})
    {
        format = await(engine.inputFormat());
        if (format.sampleRate <= 0)
            throw std::runtime_error("no microphone");
        engine.installTap(4096, {format.sampleRate, 1}, [this, also](PcmBuffer &buffer) {
            recorded.append(buffer.floatChannelData()[0], buffer.frameLength());
            if (also)
                also(buffer);
        });
        engine.prepare();
        await(engine.start());
        startedAt = std::chrono::steady_clock::now();
    }

    bool waitForSeconds(double seconds)
    {
        const std::size_t wanted = recorded.count() + std::size_t(seconds * format.sampleRate);
        return waitUntil([&] { return recorded.count() >= wanted; }, int(seconds * 1000) + 15'000);
    }

    bool waitForTone(double frequency, double threshold = -40)
    {
        return waitUntil(
            [&] {
                return toneLevelDbfs(recorded.last(0.3, format.sampleRate), format.sampleRate, frequency) >
                       threshold;
            },
            20'000);
    }

    bool settles(double frequency, double levelDbfs) const
    {
        return toneSettles(recorded, format.sampleRate, frequency, levelDbfs, 0.5);
    }

    double level(double frequency, double seconds = 1)
    {
        return toneLevelDbfs(recorded.last(seconds, format.sampleRate), format.sampleRate, frequency);
    }
};

// As many samples as time has passed, whatever has happened to the device.
#define VERIFY_IN_TIME(microphone, rate)                                                                     \
    do {                                                                                                     \
        const double late = microphone.recorded.lateness(rate, microphone.startedAt);                        \
        QVERIFY2(std::abs(late) < 0.15, qPrintable(QString::number(late)));                                  \
    } while (false)

} // namespace

/// The microphone on a real sound server. A tone played into the room is what it hears.
class PulseAudioEngineTest : public QObject
{
    Q_OBJECT

private:
    bool m_isPulseAudio = false;

    static void onlyMicrophone(const QStringList &arguments)
    {
        audioServer({QStringLiteral("unplug")});
        if (!arguments.isEmpty())
            audioServer(QStringList{QStringLiteral("plug")} + arguments);
    }

private Q_SLOTS:
    void initTestCase() { m_isPulseAudio = audioServerKind() == u"pulseaudio"; }

    void cleanup()
    {
        // A test that has failed half-way must not take the others with it.
        audioServer({QStringLiteral("unplug")});
        audioServer({QStringLiteral("plug")});
    }

    void theMicrophoneIsHeardAtItsLevel()
    {
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        Listening microphone;
        QCOMPARE(microphone.format, (AudioFormat{kRate, 1}));
        QVERIFY(microphone.settles(1000, -20));
    }

    void theChannelsOfAMicrophoneAreAveragedAndNotSummed()
    {
        // The same on both sides stays as loud as it is; a sum would be 6 dB louder, a server's mix 3 dB.
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        onlyMicrophone({});
        pactl({QStringLiteral("load-module"), QStringLiteral("module-remap-source"),
               QStringLiteral("master=room.monitor"), QStringLiteral("source_name=stereo"),
               QStringLiteral("channels=2"), QStringLiteral("channel_map=front-left,front-right"),
               QStringLiteral("master_channel_map=front-left,front-right"), QStringLiteral("remix=no")});
        pactl({QStringLiteral("set-default-source"), QStringLiteral("stereo")});
        Listening microphone;
        QCOMPARE(microphone.format, (AudioFormat{kRate, 2}));
        QVERIFY(microphone.settles(1000, -20));
    }

    void aMicrophoneIsHeardAtItsOwnRate_data()
    {
        QTest::addColumn<int>("native");
        QTest::addColumn<double>("told");
        QTest::newRow("16 kHz") << 16000 << 16000.0;
        QTest::newRow("44.1 kHz") << 44100 << 44100.0;
        QTest::newRow("96 kHz") << 96000 << 96000.0;
        QTest::newRow("192 kHz is brought down to 48") << 192000 << 48000.0;
    }

    void aMicrophoneIsHeardAtItsOwnRate()
    {
        QFETCH(const int, native);
        QFETCH(const double, told);
        onlyMicrophone({QStringLiteral("other"), QString::number(native)});
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        Listening microphone;
        QCOMPARE(microphone.format.sampleRate, told);
        QVERIFY(microphone.settles(1000, -20));
        VERIFY_IN_TIME(microphone, told);
    }

    void withoutAMicrophoneThereIsNoFormat()
    {
        onlyMicrophone({}); // the monitors of both sinks are left
        PulseAudioEngine engine;
        QCOMPARE(await(engine.inputFormat()), AudioFormat());
    }

    void aMonitorThatIsTheDefaultIsPassedOver()
    {
        pactl({QStringLiteral("set-default-source"), QStringLiteral("speaker.monitor")});
        const ToneProcess room({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        const ToneProcess speaker({.frequency = 3000, .levelDbfs = -20, .device = "speaker"});
        Listening microphone;
        QVERIFY(microphone.waitForTone(1000));
        QVERIFY(microphone.waitForSeconds(1.1));
        QVERIFY(microphone.level(3000) < -80);
    }

    void aMicrophoneThatHasGoneBeforeTheStartIsAnError()
    {
        PulseAudioEngine engine;
        const AudioFormat format = await(engine.inputFormat());
        engine.installTap(4096, {format.sampleRate, 1}, [](PcmBuffer &) {});
        audioServer({QStringLiteral("unplug")});
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(engine.start()));
    }

    void noBlockComesAfterTheTapIsGone()
    {
        std::atomic<bool> inside{false};
        std::atomic<int> calls{0};
        Listening microphone([&](PcmBuffer &) {
            inside = true;
            ++calls;
            QThread::msleep(30);
            inside = false;
        });
        QVERIFY(waitUntil([&] { return inside.load(); }));
        microphone.engine.removeTap(); // waits for the call that is under way
        QVERIFY(!inside);
        const int before = calls;
        QTest::qWait(300); // three blocks would have come by now
        QCOMPARE(calls.load(), before);
        microphone.engine.stop();
        QCOMPARE(calls.load(), before);
        microphone.engine.removeTap(); // a second time is nothing
        microphone.engine.stop();
    }

    void aSlowTapLosesNothing()
    {
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        std::atomic<bool> stall{false};
        Listening microphone([&](PcmBuffer &) {
            if (stall.exchange(false))
                QThread::msleep(1500); // a disk that takes its time
        });
        QVERIFY(microphone.waitForTone(1000));
        microphone.recorded.clear();
        stall = true;
        QVERIFY(waitUntil([&] { return !stall; }));
        QVERIFY(microphone.waitForSeconds(2.5));
        QVERIFY(microphone.recorded.longestPause() > 1.3);
        // Without what came meanwhile it would be less than a half; a busy machine's server may stumble a
        // bit.
        const double presence = tonePresence(microphone.recorded.samples(), kRate, 1000, -26);
        QVERIFY2(presence > 0.9, qPrintable(QString::number(presence)));
    }

    void stoppingDeliversWhatHasArrived()
    {
        std::atomic<bool> stall{true};
        Listening microphone([&](PcmBuffer &) {
            if (stall.exchange(false))
                QThread::msleep(1000);
        });
        QVERIFY(waitUntil([&] { return !stall; }));
        QTest::qWait(800); // the time that a block and more needs to queue up behind the slow one
        const std::size_t before = microphone.recorded.count();
        microphone.engine.removeTap(); // in the order of whoever finishes a file next
        const std::size_t after = microphone.recorded.count();
        microphone.engine.stop();
        QCOMPARE(microphone.recorded.count(), after);
        QVERIFY(microphone.recorded.count() > before + std::size_t(0.4 * kRate));
    }

    void whatIsSaidAfterTheEndOfTheIntakeIsNotHeard()
    {
        std::atomic<bool> stalled{true};
        std::atomic<bool> inside{false};
        Listening microphone([&](PcmBuffer &) {
            inside = true;
            while (stalled)
                QThread::msleep(10); // a disk that hangs
        });
        QVERIFY(waitUntil([&] { return inside.load(); }));
        QTest::qWait(800);
        const double heard =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - microphone.startedAt).count();
        microphone.engine.endIntake(); // waits for nothing, or the test hangs
        QTest::qWait(1500);
        stalled = false;
        microphone.engine.removeTap();
        const double delivered = double(microphone.recorded.count()) / kRate;
        QVERIFY2(delivered > heard - 0.3, qPrintable(QString::number(delivered))); // what came before
        QVERIFY2(delivered < heard + 0.3, qPrintable(QString::number(delivered)));
        microphone.engine.stop();
    }

    void silenceFillsTheTimeWithoutAMicrophone()
    {
        const ToneProcess speaker({.frequency = 3000, .levelDbfs = -20, .device = "speaker"});
        const ToneProcess room({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        Listening microphone;
        QVERIFY(microphone.waitForTone(1000));
        audioServer({QStringLiteral("unplug")});
        QVERIFY(waitUntil([&] { return rmsDbfs(microphone.recorded.last(0.2, kRate)) < -150; }));
        QVERIFY(microphone.waitForSeconds(1));
        // Silence: neither the room nor, worse, the speakers' monitor.
        QVERIFY(rmsDbfs(microphone.recorded.last(1, kRate)) < -150);
        audioServer({QStringLiteral("plug"), QStringLiteral("second")});
        QVERIFY(microphone.settles(1000, -20));
        QVERIFY(microphone.level(3000) < -80);
        VERIFY_IN_TIME(microphone, kRate);
    }

    void aMicrophoneOfAnotherShapeTakesOver()
    {
        const ToneProcess room({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        Listening microphone;
        QVERIFY(microphone.waitForTone(1000));
        onlyMicrophone({QStringLiteral("second"), QStringLiteral("44100")});
        QVERIFY(waitUntil([&] { return tonePresence(microphone.recorded.samples(), kRate, 1000, -30) < 1; }));
        QVERIFY(microphone.settles(1000, -20));
        VERIFY_IN_TIME(microphone, kRate);
    }

    void aServerThatDiesAndComesBackIsFoundAgain()
    {
        Listening microphone;
        QVERIFY(microphone.waitForSeconds(0.5));
        audioServer({QStringLiteral("kill")});
        QVERIFY(microphone.waitForSeconds(1)); // the clock goes on without it
        audioServer({QStringLiteral("start")});
        const ToneProcess room({.frequency = 1000, .levelDbfs = -20, .device = "room"});
        QVERIFY(microphone.settles(1000, -20));
        VERIFY_IN_TIME(microphone, kRate);
    }

    void anEngineThatGoesAwayDuringItsStartLeavesNothingBehind()
    {
        std::atomic<int> calls{0};
        auto engine = std::make_unique<PulseAudioEngine>();
        const AudioFormat format = await(engine->inputFormat());
        engine->installTap(4096, {format.sampleRate, 1}, [&](PcmBuffer &) { ++calls; });
        bool failed = false;
        bool ended = false;
        startTask(this, [&]() -> Task<> {
            try {
                co_await engine->start();
            } catch (const PlatformError &) {
                failed = true;
            }
            ended = true;
        });
        QCoreApplication::processEvents(); // the start is on its way
        engine.reset();
        QVERIFY(waitUntil([&] { return ended; }));
        const int before = calls;
        QTest::qWait(300);
        QCOMPARE(calls.load(), before);
        QVERIFY(failed || before >= 0);
    }

    void aHungServerBlocksNobody()
    {
        // Stopped in its tracks, the server accepts connections and never answers.
        QFile list(qEnvironmentVariable("TALVENOR_DESKTOP") + QStringLiteral("/audio/pids"));
        QVERIFY(list.open(QIODevice::ReadOnly));
        QList<pid_t> servers;
        for (const QByteArray &line : list.readAll().split('\n'))
            if (!line.isEmpty())
                servers.append(pid_t(line.toInt()));
        Listening microphone;
        QVERIFY(microphone.waitForSeconds(0.3));
        for (const pid_t server : servers)
            kill(server, SIGSTOP);
        QElapsedTimer clock;
        clock.start();
        PulseAudioEngine other;
        qint64 longestTurn = 0;
        bool answered = false;
        AudioFormat format{1, 1};
        startTask(this, [&]() -> Task<> {
            format = co_await other.inputFormat();
            answered = true;
        });
        while (!answered && clock.elapsed() < 15'000) {
            QElapsedTimer turn;
            turn.start();
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
            longestTurn = std::max(longestTurn, turn.elapsed());
        }
        QElapsedTimer stopping;
        stopping.start();
        microphone.engine.removeTap();
        microphone.engine.stop();
        const qint64 stopTook = stopping.elapsed();
        for (const pid_t server : servers)
            kill(server, SIGCONT);
        QVERIFY(answered);
        QCOMPARE(format, AudioFormat());
        QVERIFY2(longestTurn < 500, qPrintable(QString::number(longestTurn)));
        QVERIFY2(stopTook < 500, qPrintable(QString::number(stopTook)));
        // Meanwhile the clock went on for the recording that ran.
        QVERIFY(microphone.recorded.count() > std::size_t(2 * kRate));
    }

    void theEndOfTheProgramDoesNotWaitForAServerThatHangs()
    {
        // Whoever listens here and never speaks is a server that hangs.
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("silent"));
        QLocalServer server;
        QVERIFY(server.listen(path));
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:") + path);
        // The question that is open at the end is never gone on with, which is no leak.
        environment.insert(QStringLiteral("ASAN_OPTIONS"), QStringLiteral("detect_leaks=0"));
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--ask")});
        QVERIFY(waitUntil([&] { return server.hasPendingConnections(); }, 20'000));
        QElapsedTimer clock;
        clock.start();
        program.closeWriteChannel(); // the sign to end
        QVERIFY(waitUntil([&] { return program.state() == QProcess::NotRunning; }, 20'000));
        QVERIFY2(clock.elapsed() < 3'000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 0);
    }

    // The last one, since it takes the server away.
    void withoutAServerThereIsNoFormat()
    {
        audioServer({QStringLiteral("stop")});
        PulseAudioEngine engine;
        const AudioFormat format = await(engine.inputFormat());
        bool threw = false;
        try {
            await(engine.start());
        } catch (const PlatformError &error) {
            threw = !error.errorDescription().isEmpty();
        }
        audioServer({QStringLiteral("start")});
        QCOMPARE(format, AudioFormat());
        QVERIFY(threw);
    }
};

/// The program that a test ends while the sound server is being asked.
static int runWithOpenQuestion()
{
    PulseAudioEngine engine;
    startTask(qApp, [&engine]() -> Task<> { static_cast<void>(co_await engine.inputFormat()); });
    QSocketNotifier endSign(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&endSign, &QSocketNotifier::activated, qApp, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "--ask") == 0)
        return runWithOpenQuestion();
    PulseAudioEngineTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "PulseAudioEngineTest.moc"
