#include "PlaybackDesktop.h"

#include "audio/AudioPlayerService.h"
#include "platform/linux/media/LinuxMedia.h"
#include "platform/linux/playback/LinuxPlayback.h"
#include "support/Await.h"

#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cmath>

using namespace talvenor;
using namespace talvenor::test;

namespace {

constexpr double kToneFrequency = 1'000;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// The frequency near `frequency` at which a sound is strongest, to the hertz.
double strongestFrequency(std::span<const float> samples, double frequency)
{
    double best = 0;
    double bestLevel = -300;
    for (double candidate = frequency - 40; candidate <= frequency + 40; candidate += 1) {
        const double level = toneLevelDbfs(samples, kPlaybackRate, candidate);
        if (level > bestLevel) {
            bestLevel = level;
            best = candidate;
        }
    }
    return best;
}

std::span<const float> middleOf(const std::vector<float> &samples)
{
    const SoundExtent extent = soundExtent(samples);
    const std::size_t length = extent.end - extent.begin;
    return std::span(samples).subspan(extent.begin + length / 4, length / 2);
}

} // namespace

/// Playback on a real sound server, judged by what comes out of the speaker.
///
/// The expected times are those of the sound, counted in samples; how long the machine takes for it all plays
/// no role, but a virtual device that does not get its share of the processor may skip a moment.
class PlaybackSoundTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        installLinuxMedia(Platform::shared());
        installLinuxPlayback(Platform::shared());
        QVERIFY(m_folder.isValid());
        makeSteppedFile(m_steps, kSteps);
        makeToneFile(m_tone, kToneFrequency, kToneSeconds);
        makeToneFile(m_longTone, kToneFrequency, 12);
        m_ear.emplace();
    }
    void cleanupTestCase() { m_ear.reset(); }
    void init()
    {
        QVERIFY(m_ear->hearsNothing());
        m_ear->clear();
    }

    void aFilePlaysFromItsBeginningToItsEnd()
    {
        AudioPlayerService service;
        service.load(m_steps);
        QVERIFY2(std::abs(service.duration() - kSteps) < 0.05,
                 qPrintable(QString::number(service.duration())));
        double noticedAt = 0;
        connect(&service, &AudioPlayerService::isPlayingChanged, &service, [&] {
            if (!service.isPlaying())
                noticedAt = now();
        });
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }, 30'000));
        QCOMPARE(service.currentTime(), service.duration());
        QVERIFY(m_ear->listen(0.5));
        const std::vector<float> heard = m_ear->samples();
        const SoundExtent extent = soundExtent(heard);
        QVERIFY2(std::abs(extent.seconds() - kSteps) < 0.1, qPrintable(QString::number(extent.seconds())));
        for (int second = 0; second < kSteps; ++second) {
            const double seconds = heardSeconds(heard, stepFrequency(second));
            QVERIFY2(std::abs(seconds - 1) < 0.08,
                     qPrintable(QStringLiteral("%1: %2").arg(second).arg(seconds)));
        }
        const double level = toneLevelDbfs(std::span(heard).subspan(extent.begin + 9'600, 28'800),
                                           kPlaybackRate, stepFrequency(0));
        QVERIFY2(std::abs(level + 20) < 1, qPrintable(QString::number(level)));
        const double late = noticedAt - m_ear->clockAt(double(extent.end));
        qInfo("the end was noticed %.0f ms after the last sound", late * 1e3);
        QVERIFY(late > -0.3 && late < 0.3);
    }

    void afterTheEndItPlaysAgainFromTheBeginning()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.seek(kSteps - 0.5);
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        QCOMPARE(service.currentTime(), service.duration());
        QVERIFY(m_ear->hearsNothing());
        m_ear->clear();
        service.togglePlayPause();
        QVERIFY(service.isPlaying());
        QVERIFY(m_ear->hears(stepFrequency(1)));
        service.stop();
        const double first = heardSeconds(m_ear->samples(), stepFrequency(0));
        QVERIFY2(std::abs(first - 1) < 0.08, qPrintable(QString::number(first)));
    }

    void afterTheEndOneCanGoBack()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.seek(kSteps - 0.3);
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        service.skip(-2);
        QVERIFY(!service.isPlaying());
        QVERIFY(m_ear->hearsNothing());
        m_ear->clear();
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        QVERIFY(m_ear->listen(0.3));
        const double seconds = soundExtent(m_ear->samples()).seconds();
        QVERIFY2(std::abs(seconds - 2) < 0.1, qPrintable(QString::number(seconds)));
    }

    void aPauseLosesNothing()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        for (const double until : {0.7, 1.5, 2.2}) {
            QVERIFY(waitUntil([&] { return service.currentTime() >= until; }));
            service.pause();
            const double position = service.currentTime();
            QVERIFY(m_ear->hearsNothing());
            QVERIFY(m_ear->listen(0.3));
            QCOMPARE(service.currentTime(), position);
            QVERIFY(m_ear->hearsNothing());
            service.play();
        }
        QVERIFY(m_ear->hears(stepFrequency(4)));
        service.stop();
        const std::vector<float> heard = m_ear->samples();
        for (int second = 0; second < 4; ++second) {
            const double seconds = heardSeconds(heard, stepFrequency(second));
            QVERIFY2(std::abs(seconds - 1) < 0.1,
                     qPrintable(QStringLiteral("%1: %2").arg(second).arg(seconds)));
        }
    }

    void aSeekLeadsToItsPlaceWithin50Milliseconds_data()
    {
        QTest::addColumn<double>("target");
        QTest::addColumn<QString>("state");
        for (const char *state : {"fresh", "paused", "playing"})
            for (const double target : {0.4, 2.75, 3.95})
                QTest::addRow("%s, %.2f s", state, target) << target << QString::fromLatin1(state);
    }
    void aSeekLeadsToItsPlaceWithin50Milliseconds()
    {
        QFETCH(double, target);
        QFETCH(QString, state);
        AudioPlayerService service;
        service.load(m_steps);
        if (state != QStringLiteral("fresh")) {
            service.seek(kSteps - 1);
            service.play();
            QVERIFY(m_ear->hears(stepFrequency(kSteps - 1)));
        }
        if (state == QStringLiteral("paused")) {
            service.pause();
            QVERIFY(m_ear->hearsNothing());
        }
        service.seek(target);
        QCOMPARE(service.currentTime(), target);
        service.play();
        const int step = int(target);
        QVERIFY(m_ear->hears(stepFrequency(step + 1)));
        QVERIFY(std::abs(service.currentTime() - (step + 1)) < 0.5);
        service.stop();
        QVERIFY(m_ear->hearsNothing());
        // What is heard of the tone tells where it began, unless it was only touched.
        const std::vector<float> heard = m_ear->samples();
        const double seconds = heardSeconds(heard, stepFrequency(step));
        const double error = seconds - (step + 1 - target);
        qInfo("off by %.0f ms", error * 1e3);
        QVERIFY2(std::abs(error) < 0.05, qPrintable(QString::number(error)));
        for (int other = 0; other < kSteps - 1; ++other)
            if (other != step && other != step + 1)
                QVERIFY(heardSeconds(heard, stepFrequency(other)) < 0.03);
    }

    void aSkipLeadsOnAndBack()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.seek(1.25);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(1)));
        service.skip(2);
        const double target = service.currentTime();
        QVERIFY(target >= 3.25 && target < 4);
        QVERIFY(m_ear->hears(stepFrequency(4)));
        service.skip(-15);
        QCOMPARE(service.currentTime(), 0.0);
        QVERIFY(m_ear->hears(stepFrequency(0)));
        QVERIFY(service.isPlaying());
        QVERIFY(m_ear->hears(stepFrequency(1)));
        service.stop();
        const std::vector<float> heard = m_ear->samples();
        QVERIFY(std::abs(heardSeconds(heard, stepFrequency(3)) - (4 - target)) < 0.06);
        QVERIFY(std::abs(heardSeconds(heard, stepFrequency(0)) - 1) < 0.08);
        QVERIFY(heardSeconds(heard, stepFrequency(2)) < 0.03);
    }

    void aDragEndsWhereItEnds()
    {
        AudioPlayerService service;
        service.load(m_steps);
        service.play();
        QVERIFY(m_ear->hears(stepFrequency(0)));
        for (int step = 0; step <= 60; ++step)
            service.seek(0.5 + 0.05 * step);
        QCOMPARE(service.currentTime(), 3.5);
        // Not even the poll leads back while the player follows.
        double lowest = 100;
        connect(&service, &AudioPlayerService::currentTimeChanged, &service,
                [&] { lowest = std::min(lowest, service.currentTime()); });
        QVERIFY(m_ear->hears(stepFrequency(4)));
        QVERIFY2(lowest >= 3.45, qPrintable(QString::number(lowest)));
        service.stop();
        const double seconds = heardSeconds(m_ear->samples(), stepFrequency(3));
        QVERIFY2(std::abs(seconds - 0.5) < 0.08, qPrintable(QString::number(seconds)));
    }

    void eachRateKeepsThePitch_data()
    {
        QTest::addColumn<float>("rate");
        for (const float rate : {0.5F, 0.75F, 1.0F, 1.25F, 1.5F, 2.0F})
            QTest::addRow("%.2f", double(rate)) << rate;
    }
    void eachRateKeepsThePitch()
    {
        QFETCH(float, rate);
        AudioPlayerService service;
        service.load(m_tone);
        service.setRate(rate);
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }, 30'000));
        QVERIFY(m_ear->hearsNothing());
        const std::vector<float> heard = m_ear->samples();
        const double seconds = soundExtent(heard).seconds();
        const double frequency = strongestFrequency(middleOf(heard), kToneFrequency);
        const double level = toneLevelDbfs(middleOf(heard), kPlaybackRate, kToneFrequency);
        qInfo("rate %.2f: %.3f s, %.0f Hz at %.1f dBFS", double(rate), seconds, frequency, level);
        QVERIFY(std::abs(seconds - kToneSeconds / double(rate)) < 0.12);
        QVERIFY(std::abs(frequency - kToneFrequency) <= 2);
        QVERIFY(std::abs(level + 20) < 2);
        if (rate != 1.0F)
            QVERIFY(toneLevelDbfs(middleOf(heard), kPlaybackRate, kToneFrequency * double(rate)) < -45);
    }

    void theRateIsOffUntilItIsChosenForTheFile()
    {
        AudioPlayerService service;
        service.setRate(2);
        service.load(m_tone);
        service.play();
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }, 30'000));
        QVERIFY(m_ear->hearsNothing());
        const double seconds = soundExtent(m_ear->samples()).seconds();
        QVERIFY2(std::abs(seconds - kToneSeconds) < 0.12, qPrintable(QString::number(seconds)));
        QCOMPARE(service.playbackRate(), 2.0F);
    }

    void aChangeOfTheRateIsNoStutter()
    {
        AudioPlayerService service;
        service.load(m_longTone);
        service.play();
        QVERIFY(m_ear->hears(kToneFrequency));
        double last = service.currentTime();
        for (const float rate : {1.25F, 1.5F, 2.0F, 1.0F, 0.5F, 0.75F, 1.0F, 2.0F, 1.0F}) {
            const double before = service.currentTime();
            service.setRate(rate);
            QVERIFY(waitUntil([&] { return service.currentTime() > before + 0.6; }));
            QVERIFY(service.currentTime() >= last);
            last = service.currentTime();
        }
        const std::vector<float> heard = m_ear->samples();
        service.stop();
        const double gap = longestGap(heard, kToneFrequency);
        const double presence = heardSeconds(heard, kToneFrequency) / soundExtent(heard).seconds();
        qInfo("longest gap %.0f ms, %.1f%% of the time", gap * 1e3, presence * 100);
        QVERIFY(gap < 0.04);
        QVERIFY(presence > 0.97);
    }

private:
    static constexpr int kSteps = 6;
    static constexpr double kToneSeconds = 2;
    QTemporaryDir m_folder;
    const QString m_steps = m_folder.filePath(QStringLiteral("steps.m4a"));
    const QString m_tone = m_folder.filePath(QStringLiteral("tone.m4a"));
    const QString m_longTone = m_folder.filePath(QStringLiteral("long.m4a"));
    std::optional<SpeakerEar> m_ear;
};

QTEST_GUILESS_MAIN(PlaybackSoundTest)
#include "PlaybackSoundTest.moc"
