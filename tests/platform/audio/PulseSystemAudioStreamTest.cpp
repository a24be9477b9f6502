#include "AudioDesktop.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/audio/PulseSystemAudioStream.h"
#include "platform/linux/audio/ShareableSinks.h"
#include "support/Await.h"

#include <QTest>

#include <cmath>

using namespace talvenor;
using namespace talvenor::test;

namespace {

constexpr double kRate = 48000;
constexpr SystemAudioConfiguration kConfiguration{true, true, 1, 48000};

/// A stream that is being listened to.
struct Listening
{
    std::shared_ptr<RecordingOutput> output = std::make_shared<RecordingOutput>();
    std::unique_ptr<PulseSystemAudioStream> stream;
    std::chrono::steady_clock::time_point startedAt;
    double rate;

    explicit Listening(SystemAudioConfiguration configuration = kConfiguration)
        : stream(std::make_unique<PulseSystemAudioStream>(configuration)), rate(configuration.sampleRate)
    {
        output->expectedChannels = std::uint32_t(configuration.channelCount);
        stream->addStreamOutput(output, StreamOutputType::audio);
        await(stream->startCapture());
        startedAt = std::chrono::steady_clock::now();
    }

    Recorded &recorded() const { return output->recorded; }

    bool waitForSeconds(double seconds) const
    {
        const std::size_t wanted = recorded().count() + std::size_t(seconds * rate);
        return waitUntil([&] { return recorded().count() >= wanted; }, int(seconds * 1000) + 15'000);
    }

    bool waitForTone(double frequency, double threshold = -40) const
    {
        return waitUntil([&] { return level(frequency, 0.3) > threshold; }, 20'000);
    }

    double level(double frequency, double seconds = 1) const
    {
        return toneLevelDbfs(recorded().last(seconds, rate), rate, frequency);
    }

    bool settles(double frequency, double levelDbfs, double tolerance) const
    {
        return toneSettles(recorded(), rate, frequency, levelDbfs, tolerance);
    }
};

} // namespace

/// The sound of other programs, on a real sound server with real other programs.
class PulseSystemAudioStreamTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theSinksAreWhatCanBeListenedTo()
    {
        const ShareableContent content = await(shareableSinks());
        QStringList names;
        for (const ShareableDisplay &display : content.displays)
            names.append(display.identifier);
        QVERIFY(names.contains(QStringLiteral("speaker")));
        QVERIFY(names.contains(QStringLiteral("room")));
    }

    void silenceComesAtTheClocksPace()
    {
        const Listening system;
        QVERIFY(system.waitForSeconds(1.5));
        QCOMPARE(rmsDbfs(system.recorded().samples()), -200.0);
        const double late = system.recorded().lateness(kRate, system.startedAt);
        QVERIFY2(std::abs(late) < 0.1, qPrintable(QString::number(late)));
        QVERIFY(system.output->wasWellFormed);
        QVERIFY(system.output->wasOnNamedThread);
        // Twenty milliseconds each: never one huge delivery.
        QVERIFY(system.output->calls > 40);
    }

    void anotherProgramIsHeardAtItsLevel()
    {
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20});
        const Listening system;
        QVERIFY(system.settles(1000, -20, 0.3));
    }

    void ourOwnSoundIsNotHeard()
    {
        const TonePlayback own({.frequency = 3000, .levelDbfs = -6});
        const ToneProcess other({.frequency = 1000, .levelDbfs = -20});
        const Listening system;
        QVERIFY(system.settles(1000, -20, 0.3));
        const double level = system.level(3000);
        QVERIFY2(level < -80, qPrintable(QString::number(level)));
    }

    void ourOwnSoundIsHeardIfItIsNotExcluded()
    {
        const TonePlayback own({.frequency = 3000, .levelDbfs = -20});
        const Listening system({true, false, 1, 48000});
        QVERIFY(system.settles(3000, -20, 0.3));
    }

    void theSoundsOfAllProgramsAddUp()
    {
        const ToneProcess first({.frequency = 1000, .levelDbfs = -20});
        const ToneProcess second({.frequency = 1000, .levelDbfs = -20});
        const ToneProcess third({.frequency = 2500, .levelDbfs = -30, .channels = 1, .rate = 44100});
        const ToneProcess fourth({.frequency = 4000, .levelDbfs = -40});
        const Listening system;
        QVERIFY(system.waitForTone(1000));
        QVERIFY(system.settles(2500, -30, 0.5));
        QVERIFY(system.settles(4000, -40, 0.3));
        // Two tones of one frequency add up to anything between nothing and 6 dB more.
        QVERIFY(system.level(1000) < -13.5);
    }

    void theRateAndTheChannelsAskedForAreDelivered()
    {
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20});
        const Listening system({true, true, 2, 16000});
        QVERIFY(system.settles(1000, -20, 0.5));
        QVERIFY(system.output->wasWellFormed);
        QVERIFY(std::abs(system.recorded().lateness(16000, system.startedAt)) < 0.1);
    }

    void aProgramThatStartsLaterIsHeardAtOnce()
    {
        const Listening system;
        QVERIFY(system.waitForSeconds(0.5));
        // A machine that is busy with other things may be late once, but not again and again.
        int inTime = 0;
        for (int round = 0; round < 8 && inTime < 3; ++round) {
            const double frequency = 1000 + 500 * round;
            const ToneProcess tone({.frequency = frequency, .levelDbfs = -20});
            QVERIFY(system.waitForTone(frequency));
            QVERIFY(system.waitForSeconds(0.5));
            const auto onset = toneOnset(system.recorded().samples(), kRate, frequency, -30);
            QVERIFY(onset);
            const double began = double(tone.startedAt() - system.recorded().origin(kRate)) / 1e9;
            const double delay = *onset - began;
            qInfo("heard %.0f ms after it began", delay * 1000);
            QVERIFY2(delay > -0.15, qPrintable(QString::number(delay))); // nobody hears the future
            if (delay < 0.15)
                ++inTime;
        }
        QCOMPARE(inTime, 3);
    }

    void soundThatMovesToAnotherSinkIsStillHeard()
    {
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20});
        const Listening system;
        QVERIFY(system.waitForTone(1000));
        const QString index =
            pactl({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
                .section(u'\t', 0, 0);
        for (const QString &sink : {QStringLiteral("room"), QStringLiteral("speaker")}) {
            pactl({QStringLiteral("move-sink-input"), index, sink});
            QTest::qWait(400); // a gap may follow the move; it is over by then
            QVERIFY(system.settles(1000, -20, 0.3));
        }
    }

    void aSinkThatVanishesTakesNothingWithIt()
    {
        const QString module = pactl({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                                      QStringLiteral("sink_name=headset")});
        QVERIFY(waitUntil([] {
            return pactl({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sinks")})
                .contains(QStringLiteral("headset"));
        }));
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20, .device = "headset"});
        const Listening system;
        QVERIFY(system.waitForTone(1000));
        pactl({QStringLiteral("unload-module"), module});
        // The server moves the sound to the speaker, or ends it; either way another one is heard.
        const ToneProcess other({.frequency = 2500, .levelDbfs = -20});
        QVERIFY(system.settles(2500, -20, 0.3));
    }

    void loopbacksAreLeftOut()
    {
        // The microphone sent to the speakers would put the near side into the recording twice.
        const QString module = pactl({QStringLiteral("load-module"), QStringLiteral("module-loopback"),
                                      QStringLiteral("source=room.monitor"), QStringLiteral("sink=speaker"),
                                      QStringLiteral("latency_msec=50")});
        const ToneProcess room({.frequency = 3000, .levelDbfs = -12, .device = "room"});
        const Listening system;
        // The program itself is heard; through the loopback it would be there twice.
        const bool settles = system.settles(3000, -12, 0.3);
        pactl({QStringLiteral("unload-module"), module});
        QVERIFY(settles);
    }

    void aProgramThatStopsLeavesSilence()
    {
        const Listening system;
        {
            const ToneProcess tone({.frequency = 1000, .levelDbfs = -20});
            QVERIFY(system.waitForTone(1000));
        }
        QVERIFY(waitUntil([&] { return rmsDbfs(system.recorded().last(0.3, kRate)) < -150; }));
    }

    void aServerThatDiesAndComesBackIsFoundAgain()
    {
        const Listening system;
        QVERIFY(system.waitForSeconds(0.3));
        audioServer({QStringLiteral("kill")});
        QVERIFY(system.waitForSeconds(0.8)); // silence goes on
        audioServer({QStringLiteral("start")});
        const ToneProcess tone({.frequency = 1000, .levelDbfs = -20});
        QVERIFY(system.settles(1000, -20, 0.3));
        const double late = system.recorded().lateness(kRate, system.startedAt);
        QVERIFY2(std::abs(late) < 0.1, qPrintable(QString::number(late)));
    }

    void nothingIsDeliveredAfterTheStop()
    {
        Listening system;
        QVERIFY(system.waitForSeconds(0.2));
        await(system.stream->stopCapture());
        const int before = system.output->calls;
        QTest::qWait(200); // ten deliveries would have come by now
        QCOMPARE(system.output->calls.load(), before);
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(system.stream->stopCapture()));
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(system.stream->startCapture()));
    }

    void destroyingTheStreamStopsIt()
    {
        Listening system;
        QVERIFY(system.waitForSeconds(0.2));
        system.stream.reset();
        const int before = system.output->calls;
        QCOMPARE(system.output.use_count(), 1L); // the stream has let go of it
        QTest::qWait(200);
        QCOMPARE(system.output->calls.load(), before);
    }

    void aStreamThatGoesAwayDuringItsStartLeavesNothingBehind()
    {
        const auto output = std::make_shared<RecordingOutput>();
        auto stream = std::make_unique<PulseSystemAudioStream>(kConfiguration);
        stream->addStreamOutput(output, StreamOutputType::audio);
        bool ended = false;
        startTask(this, [&]() -> Task<> {
            try {
                co_await stream->startCapture();
            } catch (const PlatformError &) {
                // As it should be if the end came first.
            }
            ended = true;
        });
        QCoreApplication::processEvents();
        stream.reset();
        QVERIFY(waitUntil([&] { return ended; }));
        QVERIFY(waitUntil([&] { return output.use_count() == 1; }));
        const int before = output->calls;
        QTest::qWait(100);
        QCOMPARE(output->calls.load(), before);
    }

    void whatCannotBeDeliveredIsRefused()
    {
        PulseSystemAudioStream stream(kConfiguration);
        QVERIFY_THROWS_EXCEPTION(PlatformError, stream.addStreamOutput(std::make_shared<RecordingOutput>(),
                                                                       StreamOutputType::screen));
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(stream.stopCapture()));
        PulseSystemAudioStream withoutRate({true, true, 1, 0});
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(withoutRate.startCapture()));
        PulseSystemAudioStream withoutChannels({true, true, 0, 48000});
        QVERIFY_THROWS_EXCEPTION(PlatformError, await(withoutChannels.startCapture()));
    }

    // The last one, since it takes the server away.
    void withoutAServerItsWordsAreTheError()
    {
        audioServer({QStringLiteral("stop")});
        QString content;
        QString capture;
        try {
            await(shareableSinks());
        } catch (const PlatformError &error) {
            content = error.errorDescription();
        }
        PulseSystemAudioStream stream(kConfiguration);
        try {
            await(stream.startCapture());
        } catch (const PlatformError &error) {
            capture = error.errorDescription();
        }
        audioServer({QStringLiteral("start")});
        QCOMPARE(content, QStringLiteral("Connection refused"));
        QCOMPARE(capture, QStringLiteral("Connection refused"));
    }
};

QTEST_GUILESS_MAIN(PulseSystemAudioStreamTest)
#include "PulseSystemAudioStreamTest.moc"
