#include "audio/AudioCaptureError.h"
#include "audio/AudioCaptureService.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/media/FastStartRewriter.h"
#include "platform/linux/media/LinuxMedia.h"
#include "support/Await.h"
#include "support/DecodedAudio.h"
#include "support/LogCapture.h"
#include "support/ToneAnalysis.h"
#include "support/TonePlayback.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <cmath>
#include <limits>
#include <optional>

using namespace talvenor;
using test::await;
using test::Tone;
using test::toneLevelDbfs;
using test::TonePlayback;

using test::ToneProcess;

namespace {

constexpr double rate = 48'000;
const QString channel = QStringLiteral("com.talvenor.app.AudioCapture");

void audioServer(const QString &command)
{
    static_cast<void>(test::outputOf(QStringLiteral(TALVENOR_TEST_SUPPORT "/audio-server"), {command}));
}

std::int64_t monotonicNanoseconds()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// A real file that also notes when its samples came.
class TimedFile final : public AudioFile
{
public:
    /// The reading of the monotonic clock at which sample zero was due: the least over all writes.
    static inline std::atomic<std::int64_t> origin = 0;

    explicit TimedFile(std::unique_ptr<AudioFile> file) : m_file(std::move(file))
    {
        origin = std::numeric_limits<std::int64_t>::max();
    }
    void write(const PcmBuffer &buffer) override
    {
        m_frames += buffer.frameLength();
        origin =
            std::min(origin.load(), monotonicNanoseconds() - std::int64_t(double(m_frames) / rate * 1e9));
        m_file->write(buffer);
    }

private:
    std::unique_ptr<AudioFile> m_file;
    std::int64_t m_frames = 0;
};

/// Measures the longest time for which the event loop did not turn.
class StallMeter
{
public:
    StallMeter()
    {
        m_sinceLast.start();
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            m_longest = std::max(m_longest, m_sinceLast.nsecsElapsed());
            m_sinceLast.start();
        });
        m_timer.start(1);
    }
    [[nodiscard]] double longestMs() const { return double(m_longest) / 1e6; }

private:
    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    qint64 m_longest = 0;
};

/// One recording from start to stop.
class Session
{
public:
    explicit Session(const QString &path) : m_path(path)
    {
        await(m_service.startRecording(path));
        m_clock.start();
    }

    [[nodiscard]] double seconds() const { return double(m_clock.elapsed()) / 1'000; }
    void until(double second) const
    {
        while (seconds() < second)
            QTest::qWait(std::max(1, int((second - seconds()) * 1'000)));
    }
    [[nodiscard]] const AudioCaptureService &service() const { return m_service; }

    /// Ends it and gives what is in the file.
    [[nodiscard]] std::vector<float> stop()
    {
        const double wanted = seconds();
        QElapsedTimer time;
        time.start();
        const std::optional<QString> url = m_service.stopRecording();
        m_stopMs = double(time.nsecsElapsed()) / 1e6;
        if (url != m_path)
            throw std::runtime_error("the recording has another path");
        await(m_service.finished());
        waitForFastStartRewrites();
        std::vector<float> samples = test::decodedAudio(m_path);
        if (std::abs(double(samples.size()) / rate - wanted) > 1)
            throw std::runtime_error("the file is " + std::to_string(double(samples.size()) / rate) +
                                     " s long after " + std::to_string(wanted) + " s");
        return samples;
    }
    [[nodiscard]] double stopMs() const { return m_stopMs; }

private:
    QString m_path;
    AudioCaptureService m_service;
    QElapsedTimer m_clock;
    double m_stopMs = 0;
};

std::span<const float> between(const std::vector<float> &samples, double from, double to)
{
    return std::span(samples).subspan(std::size_t(from * rate), std::size_t((to - from) * rate));
}

double onset(const std::vector<float> &samples, double from, double to, double frequency, double threshold)
{
    const std::optional<double> found =
        test::toneOnset(between(samples, from, to), rate, frequency, threshold);
    return found ? *found + from : std::nan("");
}

/// A short tone on each side, begun as nearly together as two programs can.
class Event
{
public:
    Event()
        : m_near({.frequency = 1'300, .levelDbfs = -20, .device = "room"}),
          m_far({.frequency = 2'300, .levelDbfs = -20, .device = "speaker"})
    {
    }

    /// By how many milliseconds the far side is later in the file than it was in the world.
    [[nodiscard]] static double offsetMs(const std::vector<float> &samples, double from, double to,
                                         std::int64_t nearStart, std::int64_t farStart)
    {
        const double inFile = onset(samples, from, to, 2'300, -30) - onset(samples, from, to, 1'300, -30);
        return inFile * 1e3 - double(farStart - nearStart) / 1e6;
    }

    std::int64_t nearStart() const { return m_near.startedAt(); }
    std::int64_t farStart() const { return m_far.startedAt(); }

private:
    TonePlayback m_near;
    ToneProcess m_far;
};

struct EventTimes
{
    double second;
    std::int64_t nearStart;
    std::int64_t farStart;
};

EventTimes playEvent(const Session &session)
{
    const double second = session.seconds();
    const Event event;
    QTest::qWait(700);
    return {second, event.nearStart(), event.farStart()};
}

bool isTogether(const std::vector<float> &samples, const EventTimes &event)
{
    const double offset = Event::offsetMs(samples, std::max(0.0, event.second - 0.5), event.second + 3,
                                          event.nearStart, event.farStart);
    const double heardAfter =
        (double(TimedFile::origin) - double(event.farStart)) / 1e6 +
        onset(samples, std::max(0.0, event.second - 0.5), event.second + 3, 2'300, -30) * 1e3;
    qInfo("event at %.1f s: far side %+.0f ms from the near side, in the file %.0f ms after it began",
          event.second, offset, heardAfter);
    return std::abs(offset) < 250 && heardAfter < 150;
}

/// The levels of a tone in steps of a quarter of a second. A virtual device that does not get its share of
/// the processor skips a moment, which turns the phase: over longer times the tone would seem to be weaker.
std::vector<double> courseOf(const std::vector<float> &samples, double from, double to, double frequency)
{
    constexpr double step = 0.25;
    std::vector<double> levels;
    for (double second = from; second + step <= to; second += step)
        levels.push_back(toneLevelDbfs(between(samples, second, second + step), rate, frequency));
    return levels;
}

/// True if the tone has this level, within 1 dB, between two seconds of the file, but for one step in twenty,
/// and at least for one, in which the devices may stumble; else tells how it went.
bool hasLevel(const std::vector<float> &samples, double from, double to, double frequency, double levelDbfs)
{
    const std::vector<double> levels = courseOf(samples, from, to, frequency);
    const auto wrong = std::size_t(std::count_if(
        levels.begin(), levels.end(), [levelDbfs](double level) { return std::abs(level - levelDbfs) > 1; }));
    if (levels.size() >= 3 && wrong <= std::max<std::size_t>(1, levels.size() / 20))
        return true;
    QStringList course;
    for (const double level : levels)
        course.append(QString::number(level, 'f', 1));
    qInfo("%.0f Hz is not at %.0f dB between %.2f s and %.2f s, but: %s", frequency, levelDbfs, from, to,
          qPrintable(course.join(u' ')));
    return false;
}

double median(std::vector<double> values)
{
    std::nth_element(values.begin(), values.begin() + std::ptrdiff_t(values.size() / 2), values.end());
    return values[values.size() / 2];
}

} // namespace

/// Whole recordings, all real, on a real sound server.
///
/// What the near side says is played to the room by this process, whose own sound is no system audio: so it
/// comes to the file through the microphone alone, while another program's would come twice.
class RecordingOnServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        installLinuxAudio(Platform::shared());
        installLinuxMedia(Platform::shared());
        const auto create = Platform::shared().createAudioFile;
        Platform::shared().createAudioFile = [create](const QString &path,
                                                      const AudioFileSettings &settings) {
            return std::make_unique<TimedFile>(create(path, settings));
        };
    }
    void init() { m_folder.emplace(); }
    void cleanup() { m_folder.reset(); }

    void aMinuteOfBothSidesAtTheirLevels()
    {
        const test::LogCapture log;
        const TonePlayback nearSide({.frequency = 700, .levelDbfs = -20, .device = "room"});
        const ToneProcess farSide(
            {.frequency = 1'700, .levelDbfs = -26, .device = "speaker", .rate = 44'100});
        const TonePlayback own({.frequency = 3'100, .levelDbfs = -12, .device = "speaker"});
        Session session(path());
        QVERIFY(session.service().isRecording() && session.service().hasSystemAudio());
        QVERIFY(log.contains(channel, QStringLiteral("default"), QStringLiteral("Mic: 48000.000000Hz 1ch")));
        session.until(3);
        const EventTimes early = playEvent(session);
        session.until(55);
        const EventTimes late = playEvent(session);
        session.until(60);
        QVERIFY(session.service().audioLevel() > 0.5F);
        const std::vector<float> samples = session.stop();

        QVERIFY(hasLevel(samples, 2, 59, 700, -20));
        QVERIFY(hasLevel(samples, 2, 59, 1'700, -26));
        const double nearLevel = median(courseOf(samples, 2, 59, 700));
        const double farLevel = median(courseOf(samples, 2, 59, 1'700));
        const double ownLevel = toneLevelDbfs(between(samples, 2, 59), rate, 3'100);
        qInfo("near %.2f dB, far %.2f dB, own %.1f dB, stop %.1f ms", nearLevel, farLevel, ownLevel,
              session.stopMs());
        QVERIFY(std::abs(nearLevel + 20) < 0.5);
        QVERIFY(std::abs(farLevel + 26) < 0.5);
        QVERIFY(ownLevel < -60);
        QVERIFY(isTogether(samples, early));
        QVERIFY(isTogether(samples, late));
    }

    void aMinuteWithBothSidesTooLoud()
    {
        const TonePlayback own({.frequency = 3'100, .levelDbfs = -3, .device = "speaker"});
        Session session(path());
        QVERIFY(session.service().hasSystemAudio());
        session.until(4);
        {
            // One hertz apart: in phase once a second, whatever their start.
            const TonePlayback nearSide({.frequency = 800, .levelDbfs = -1, .device = "room"});
            const ToneProcess farSide({.frequency = 801, .levelDbfs = -1, .device = "speaker"});
            session.until(34);
        }
        session.until(40);
        const EventTimes early = playEvent(session); // an application that starts to play after a silence
        session.until(56);
        const EventTimes late = playEvent(session);
        session.until(60);
        const std::vector<float> samples = session.stop();

        // The sum would reach 1.78. A wrapped one would jump by nearly 2 from one sample to the next, a
        // thousand times a second; a limited one is a sine with flat tops, which the encoder rounds a little.
        const auto loud = between(samples, 10, 30);
        float highest = 0;
        std::size_t jumps = 0;
        for (std::size_t i = 1; i < loud.size(); ++i) {
            highest = std::max(highest, std::abs(loud[i]));
            if (std::abs(loud[i] - loud[i - 1]) > 1)
                ++jumps;
        }
        // Of the tops, those of the moments in phase: the tone itself then exceeds full scale, and its third
        // harmonic shows that they are flat.
        const std::vector<double> tone = courseOf(samples, 10, 30, 800);
        const std::vector<double> harmonic = courseOf(samples, 10, 30, 2'400);
        const auto loudest = std::max_element(tone.begin(), tone.end()) - tone.begin();
        const double ownLevel = toneLevelDbfs(loud, rate, 3'100);
        const double ownLater = toneLevelDbfs(between(samples, 45, 55), rate, 3'100);
        qInfo("highest %.3f, %zu jumps, in phase the tone has %.1f dB and its third harmonic %.1f dB, own "
              "%.1f dB and "
              "%.1f dB, stop %.1f ms",
              double(highest), jumps, tone[std::size_t(loudest)], harmonic[std::size_t(loudest)], ownLevel,
              ownLater, session.stopMs());
        QVERIFY(highest > 0.97F && highest < 1.25F);
        QVERIFY(jumps < 50);
        QVERIFY(tone[std::size_t(loudest)] > 0.5 &&
                tone[std::size_t(loudest)] < 2.2); // 2.1 is a square wave's
        QVERIFY(harmonic[std::size_t(loudest)] > -25);
        QVERIFY(ownLevel < -60);
        QVERIFY(ownLater < -60);
        QVERIFY(isTogether(samples, early));
        QVERIFY(isTogether(samples, late));
    }

    void anUnpluggedMicrophoneCostsOnlyItsGap()
    {
        const TonePlayback nearSide({.frequency = 700, .levelDbfs = -20, .device = "room"});
        const ToneProcess farSide({.frequency = 1'700, .levelDbfs = -26, .device = "speaker"});
        Session session(path());
        session.until(2.5);
        audioServer(QStringLiteral("unplug"));
        const double unplugged = session.seconds();
        session.until(unplugged + 2.5);
        const double plugging = session.seconds();
        audioServer(QStringLiteral("plug"));
        const double plugged = session.seconds();
        session.until(plugged + 4);
        const double end = session.seconds();
        const std::vector<float> samples = session.stop();

        QVERIFY(hasLevel(samples, 1, 2, 700, -20));
        const double inTheGap = toneLevelDbfs(between(samples, unplugged + 0.5, plugging - 0.2), rate, 700);
        QVERIFY2(inTheGap < -60, qPrintable(QString::number(inTheGap)));
        QVERIFY(hasLevel(samples, plugged + 2, end - 0.5, 700, -20));
        // The other side is heard all the time.
        QVERIFY(hasLevel(samples, 1, end - 0.5, 1'700, -26));
        const double back = onset(samples, plugging, end - 0.5, 700, -26);
        qInfo("the microphone was heard again %.2f s after it was plugged in", back - plugged);
    }

    void aRestartedServerCostsOnlyItsGap()
    {
        std::optional<TonePlayback> firstNearSide(std::in_place, Tone{.frequency = 700, .device = "room"});
        std::optional<ToneProcess> firstFarSide(std::in_place, Tone{.frequency = 1'700, .levelDbfs = -26});
        Session session(path());
        session.until(3);
        audioServer(QStringLiteral("kill"));
        firstNearSide.reset();
        firstFarSide.reset();
        QTest::qWait(300);
        audioServer(QStringLiteral("start"));
        const double restarted = session.seconds();
        const TonePlayback nearSide({.frequency = 900, .levelDbfs = -20, .device = "room"});
        const ToneProcess farSide({.frequency = 1'900, .levelDbfs = -26, .device = "speaker"});
        session.until(restarted + 6);
        QVERIFY(session.service().isRecording() && session.service().hasSystemAudio());
        const double end = session.seconds();
        const std::vector<float> samples = session.stop();

        QVERIFY(hasLevel(samples, 1.5, 2.8, 700, -20));
        QVERIFY(hasLevel(samples, 1.5, 2.8, 1'700, -26));
        QVERIFY(hasLevel(samples, restarted + 4, end - 0.5, 900, -20));
        QVERIFY(hasLevel(samples, restarted + 4, end - 0.5, 1'900, -26));
        qInfo("after the restart the near side is back after %.2f s, the far side after %.2f s",
              onset(samples, restarted, end - 0.5, 900, -26) - restarted,
              onset(samples, restarted, end - 0.5, 1'900, -32) - restarted);
    }

    void severalShortRecordingsOneAfterTheOther()
    {
        const TonePlayback nearSide({.frequency = 700, .levelDbfs = -20, .device = "room"});
        AudioCaptureService service; // one for all, as the program has it
        const StallMeter stalls;
        for (int i = 0; i < 3; ++i) {
            const QString target = m_folder->filePath(QStringLiteral("%1.m4a").arg(i));
            await(service.startRecording(target));
            QVERIFY(service.isRecording() && service.hasSystemAudio());
            QTest::qWait(1'500);
            QCOMPARE(service.stopRecording(), target);
            await(service.finished());
        }
        qInfo("longest stall of the main thread in three recordings, starts and stops: %.1f ms",
              stalls.longestMs());
        QVERIFY(stalls.longestMs() < 250);
        waitForFastStartRewrites();
        for (int i = 0; i < 3; ++i) {
            const std::vector<float> samples =
                test::decodedAudio(m_folder->filePath(QStringLiteral("%1.m4a").arg(i)));
            QVERIFY(std::abs(double(samples.size()) / rate - 1.5) < 0.5);
            QVERIFY(hasLevel(samples, 0.5, 1.25, 700, -20));
        }
    }

    void onlyMonitorsAreNoMicrophone()
    {
        audioServer(QStringLiteral("unplug"));
        expectNoMicrophone();
        audioServer(QStringLiteral("plug"));
    }

    void noServerIsNoMicrophone()
    {
        audioServer(QStringLiteral("stop"));
        expectNoMicrophone();
        audioServer(QStringLiteral("start"));
        // And with one it works again.
        const TonePlayback nearSide({.frequency = 700, .levelDbfs = -20, .device = "room"});
        Session session(path());
        session.until(3);
        QVERIFY(hasLevel(session.stop(), 1, 2, 700, -20));
    }

private:
    [[nodiscard]] QString path() const { return m_folder->filePath(QStringLiteral("a.m4a")); }

    void expectNoMicrophone() const
    {
        AudioCaptureService service;
        try {
            await(service.startRecording(path()));
            QFAIL("no error");
        } catch (const AudioCaptureError &error) {
            QCOMPARE(error.reason(), AudioCaptureError::Case::noAudioInput);
            QCOMPARE(error.errorDescription(), QStringLiteral("No microphone found."));
        }
        QVERIFY(!service.isRecording());
        QVERIFY(!QFile::exists(path()));
    }

    std::optional<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(RecordingOnServerTest)
#include "RecordingOnServerTest.moc"
