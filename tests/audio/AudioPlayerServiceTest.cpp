#include "audio/AudioPlayerService.h"
#include "foundation/LocalizedError.h"
#include "platform/Platform.h"
#include "support/Await.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

#include <unistd.h>

#include <cmath>
#include <limits>

using namespace talvenor;
using test::waitUntil;

namespace {

/// What the service has asked of its players, and what they answer.
struct Device
{
    QStringList calls;
    double duration = 100;
    double currentTime = 0;
    bool isPlaying = false;
    int players = 0; ///< that exist
};

class FakePlayer final : public AudioPlayer
{
public:
    explicit FakePlayer(Device &device) : m_device(device) { ++m_device.players; }
    ~FakePlayer() override { --m_device.players; }

    double duration() const override { return m_device.duration; }
    double currentTime() const override
    {
        m_device.calls.append(QStringLiteral("currentTime?"));
        return m_device.currentTime;
    }
    void setCurrentTime(double seconds) override
    {
        m_device.currentTime = seconds;
        note(QStringLiteral("currentTime=%1").arg(seconds));
    }
    void setRate(float rate) override { note(QStringLiteral("rate=%1").arg(double(rate))); }
    void setEnableRate(bool isEnabled) override { note(QStringLiteral("enableRate=%1").arg(isEnabled)); }
    bool isPlaying() const override { return m_device.isPlaying; }
    void prepareToPlay() override { note(QStringLiteral("prepareToPlay")); }
    void play() override
    {
        m_device.isPlaying = true;
        note(QStringLiteral("play"));
    }
    void pause() override
    {
        m_device.isPlaying = false;
        note(QStringLiteral("pause"));
    }
    void stop() override
    {
        m_device.isPlaying = false;
        note(QStringLiteral("stop"));
    }

private:
    void note(const QString &call) { m_device.calls.append(call); }
    Device &m_device;
};

/// Keeps what is printed to standard output while it lives.
class PrintedOutput
{
public:
    PrintedOutput() : m_original(dup(STDOUT_FILENO))
    {
        static_cast<void>(fflush(stdout));
        if (!m_file.open() || dup2(m_file.handle(), STDOUT_FILENO) < 0)
            qFatal("standard output cannot be caught");
    }
    ~PrintedOutput() { giveBack(); }
    Q_DISABLE_COPY_MOVE(PrintedOutput)

    [[nodiscard]] QString text()
    {
        giveBack();
        m_file.seek(0);
        return QString::fromUtf8(m_file.readAll());
    }

private:
    void giveBack()
    {
        if (m_original < 0)
            return;
        static_cast<void>(fflush(stdout));
        dup2(m_original, STDOUT_FILENO);
        close(std::exchange(m_original, -1));
    }
    int m_original;
    QTemporaryFile m_file;
};

/// The signals of a service, in their order.
class Changes
{
public:
    explicit Changes(AudioPlayerService &service)
    {
        const auto note = [this, &service](auto signal, const char *name) {
            QObject::connect(&service, signal, &m_context,
                             [this, name] { m_names.append(QString::fromLatin1(name)); });
        };
        note(&AudioPlayerService::isPlayingChanged, "isPlaying");
        note(&AudioPlayerService::currentTimeChanged, "currentTime");
        note(&AudioPlayerService::durationChanged, "duration");
        note(&AudioPlayerService::playbackRateChanged, "playbackRate");
    }
    [[nodiscard]] QStringList take() { return std::exchange(m_names, {}); }

private:
    QObject m_context;
    QStringList m_names;
};

} // namespace

class AudioPlayerServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_device = Device();
        Platform::shared().createAudioPlayer = [this](const QString &path) {
            m_device.calls.append(QStringLiteral("open ") + path);
            return std::make_unique<FakePlayer>(m_device);
        };
    }

    void aNewServiceIsEmpty()
    {
        const AudioPlayerService service;
        QVERIFY(!service.isPlaying());
        QCOMPARE(service.currentTime(), 0.0);
        QCOMPARE(service.duration(), 0.0);
        QCOMPARE(service.playbackRate(), 1.0F);
        QCOMPARE(service.progress(), 0.0);
        QCOMPARE(service.formattedCurrentTime(), QStringLiteral("0:00"));
        QCOMPARE(service.formattedDuration(), QStringLiteral("0:00"));
    }

    void loadingPreparesAndTellsTheLength()
    {
        AudioPlayerService service;
        Changes changes(service);
        service.load(QStringLiteral("/a/b.m4a"));
        QCOMPARE(m_device.calls,
                 (QStringList{QStringLiteral("open /a/b.m4a"), QStringLiteral("prepareToPlay")}));
        QCOMPARE(service.duration(), 100.0);
        QVERIFY(!service.isPlaying());
        QCOMPARE(changes.take(), QStringList{QStringLiteral("duration")});
    }

    void loadingAnotherFileStartsAtItsBeginning()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.seek(50);
        m_device.duration = 30;
        Changes changes(service);
        service.load(QStringLiteral("b"));
        QCOMPARE(service.currentTime(), 0.0);
        QCOMPARE(service.duration(), 30.0);
        QCOMPARE(m_device.players, 1);
        QCOMPARE(changes.take(), (QStringList{QStringLiteral("duration"), QStringLiteral("currentTime")}));
    }

    void loadingLeavesPlayingAndItsPollAlone()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        service.load(QStringLiteral("b"));
        QVERIFY(service.isPlaying());
        // The poll goes on and finds that the new file does not play.
        m_device.isPlaying = false;
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
    }

    void aFileThatCannotBeLoadedIsPrintedAndChangesNothing()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.seek(40);
        Platform::shared().createAudioPlayer = [](const QString &) -> std::unique_ptr<AudioPlayer> {
            throw PlatformError(QStringLiteral("file"), 2, QStringLiteral("No such file."));
        };
        Changes changes(service);
        PrintedOutput output;
        service.load(QStringLiteral("/some/where/meeting one.m4a"));
        QCOMPARE(output.text(),
                 QStringLiteral("AudioPlayerService: failed to load meeting one.m4a: No such file.\n"));
        QCOMPARE(changes.take(), QStringList());
        QCOMPARE(service.duration(), 100.0);
        QCOMPARE(service.currentTime(), 40.0);
        // The earlier file is still there.
        m_device.calls.clear();
        service.play();
        QVERIFY(service.isPlaying());
        QCOMPARE(m_device.calls, (QStringList{QStringLiteral("rate=1"), QStringLiteral("play")}));
    }

    void afterAFailedFirstLoadNothingPlays()
    {
        Platform::shared().createAudioPlayer = [](const QString &) -> std::unique_ptr<AudioPlayer> {
            throw std::runtime_error("broken");
        };
        AudioPlayerService service;
        PrintedOutput output;
        service.load(QStringLiteral("x.m4a"));
        QCOMPARE(output.text(), QStringLiteral("AudioPlayerService: failed to load x.m4a: broken\n"));
        service.play();
        service.togglePlayPause();
        QVERIFY(!service.isPlaying());
        QCOMPARE(service.duration(), 0.0);
    }

    void withoutAFileNothingHappens()
    {
        AudioPlayerService service;
        Changes changes(service);
        service.play();
        service.pause();
        service.togglePlayPause();
        service.stop();
        QVERIFY(!service.isPlaying());
        QCOMPARE(changes.take(), QStringList());
        QCOMPARE(m_device.calls, QStringList());
    }

    void theOrderOfPlayPauseAndStop()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        m_device.calls.clear();
        Changes changes(service);
        service.play();
        QVERIFY(service.isPlaying());
        QCOMPARE(m_device.calls, (QStringList{QStringLiteral("rate=1"), QStringLiteral("play")}));
        QCOMPARE(changes.take(), QStringList{QStringLiteral("isPlaying")});

        m_device.calls.clear();
        service.pause();
        QVERIFY(!service.isPlaying());
        QCOMPARE(m_device.calls, QStringList{QStringLiteral("pause")});
        QCOMPARE(changes.take(), QStringList{QStringLiteral("isPlaying")});

        service.seek(10);
        service.togglePlayPause();
        QVERIFY(service.isPlaying());
        service.togglePlayPause();
        QVERIFY(!service.isPlaying());
        service.play();
        static_cast<void>(changes.take());
        m_device.calls.clear();
        service.stop();
        QCOMPARE(m_device.calls, QStringList{QStringLiteral("stop")});
        QCOMPARE(changes.take(), (QStringList{QStringLiteral("isPlaying"), QStringLiteral("currentTime"),
                                              QStringLiteral("duration")}));
        QCOMPARE(m_device.players, 0);
        QCOMPARE(service.formattedCurrentTime(), QStringLiteral("0:00"));
        QCOMPARE(service.formattedDuration(), QStringLiteral("0:00"));
        QCOMPARE(service.progress(), 0.0);
    }

    void seekingIsLimitedToTheFile_data()
    {
        QTest::addColumn<double>("target");
        QTest::addColumn<double>("expected");
        QTest::newRow("before it") << -5.0 << 0.0;
        QTest::newRow("behind it") << 100.5 << 100.0;
        QTest::newRow("within it") << 42.25 << 42.25;
        QTest::newRow("far behind it") << std::numeric_limits<double>::infinity() << 100.0;
        QTest::newRow("no number") << std::nan("") << 0.0;
    }
    void seekingIsLimitedToTheFile()
    {
        QFETCH(double, target);
        QFETCH(double, expected);
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.seek(7);
        service.seek(target);
        QCOMPARE(service.currentTime(), expected);
        QCOMPARE(m_device.currentTime, expected);
        QVERIFY(!service.isPlaying());
    }

    void seekingWithoutAFileGoesToZero()
    {
        AudioPlayerService service;
        Changes changes(service);
        service.seek(12);
        QCOMPARE(service.currentTime(), 0.0);
        service.skip(15);
        QCOMPARE(service.currentTime(), 0.0);
        QCOMPARE(changes.take(), QStringList());
    }

    void skippingIsLimitedTheSameWay()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.seek(10);
        service.skip(-15);
        QCOMPARE(service.currentTime(), 0.0);
        service.skip(15);
        QCOMPARE(service.currentTime(), 15.0);
        service.seek(95);
        service.skip(15);
        QCOMPARE(service.currentTime(), 100.0);
        QCOMPARE(m_device.currentTime, 100.0);
    }

    void progressIsTheShareThatIsBehind()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.seek(25);
        QCOMPARE(service.progress(), 0.25);
        service.stop();
        m_device.duration = 0;
        service.load(QStringLiteral("b"));
        service.seek(5);
        QCOMPARE(service.progress(), 0.0);
    }

    void timesReadLikeAClock_data()
    {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("a minute, nearly") << 59.9 << "0:59";
        QTest::newRow("a minute") << 60.0 << "1:00";
        QTest::newRow("an hour, nearly") << 3599.0 << "59:59";
        QTest::newRow("an hour") << 3600.0 << "1:00:00";
        QTest::newRow("more") << 3725.0 << "1:02:05";
        QTest::newRow("nothing") << 0.0 << "0:00";
        QTest::newRow("nine") << 9.99 << "0:09";
        QTest::newRow("days") << 360'000.0 << "100:00:00";
    }
    void timesReadLikeAClock()
    {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        m_device.duration = seconds;
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        QCOMPARE(service.formattedDuration(), text);
        service.seek(seconds);
        QCOMPARE(service.formattedCurrentTime(), text);
    }

    void theRateIsEnabledByItsFirstChoiceOnly()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        m_device.calls.clear();
        Changes changes(service);
        service.setRate(1.5F);
        // Not playing: the player gets the rate with the next play.
        QCOMPARE(m_device.calls, QStringList{QStringLiteral("enableRate=1")});
        QCOMPARE(changes.take(), QStringList{QStringLiteral("playbackRate")});
        service.play();
        service.setRate(0.75F);
        QCOMPARE(m_device.calls, (QStringList{QStringLiteral("enableRate=1"), QStringLiteral("rate=1.5"),
                                              QStringLiteral("play"), QStringLiteral("enableRate=1"),
                                              QStringLiteral("rate=0.75")}));
        QVERIFY(service.isPlaying());
    }

    void theRateOutlivesTheFileAndIsOffForTheNext()
    {
        AudioPlayerService service;
        service.setRate(2);
        QCOMPARE(service.playbackRate(), 2.0F);
        QCOMPARE(m_device.calls, QStringList());
        service.load(QStringLiteral("a"));
        service.stop();
        QCOMPARE(service.playbackRate(), 2.0F);
        service.load(QStringLiteral("b"));
        m_device.calls.clear();
        service.play();
        // The rate is handed over, but nobody has enabled it.
        QCOMPARE(m_device.calls, (QStringList{QStringLiteral("rate=2"), QStringLiteral("play")}));
    }

    void thePositionIsPolledWhilePlayingOnly()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        m_device.currentTime = 3.5;
        QVERIFY(waitUntil([&] { return service.currentTime() == 3.5; }));
        service.pause();
        // A poll that was on its way has gone by then.
        QCoreApplication::processEvents();
        m_device.calls.clear();
        m_device.currentTime = 4;
        QTest::qWait(350);
        QCOMPARE(m_device.calls, QStringList());
        QCOMPARE(service.currentTime(), 3.5);
    }

    void thePollComesTenTimesASecond()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        m_device.calls.clear();
        QElapsedTimer time;
        time.start();
        const auto polls = [this] { return m_device.calls.count(QStringLiteral("currentTime?")); };
        QVERIFY(waitUntil([&] { return polls() >= 10; }));
        // A busy machine is late, and never early.
        QVERIFY2(time.elapsed() >= 950, qPrintable(QString::number(time.elapsed())));
        QVERIFY2(time.elapsed() < 3'000, qPrintable(QString::number(time.elapsed())));
        // Playing again does not add a second poll.
        service.play();
        service.play();
        m_device.calls.clear();
        time.start();
        QVERIFY(waitUntil([&] { return polls() >= 10; }));
        QVERIFY2(time.elapsed() >= 950, qPrintable(QString::number(time.elapsed())));
    }

    void anUnchangedPositionIsNotAnnounced()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        m_device.currentTime = 1;
        QVERIFY(waitUntil([&] { return service.currentTime() == 1; }));
        Changes changes(service);
        m_device.calls.clear();
        QVERIFY(waitUntil([&] { return m_device.calls.size() >= 3; }));
        QCOMPARE(changes.take(), QStringList());
    }

    void theEndOfTheFileIsNoticed()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        m_device.currentTime = 100;
        m_device.isPlaying = false;
        Changes changes(service);
        QVERIFY(waitUntil([&] { return !service.isPlaying(); }));
        // The position comes first, and stays.
        QCOMPARE(changes.take(), (QStringList{QStringLiteral("currentTime"), QStringLiteral("isPlaying")}));
        QCOMPARE(service.currentTime(), 100.0);
        m_device.calls.clear();
        QTest::qWait(250);
        QCOMPARE(m_device.calls, QStringList()); // no poll any more
        service.togglePlayPause();
        QVERIFY(service.isPlaying());
        QVERIFY(m_device.calls.contains(QStringLiteral("play")));
    }

    void aStopBetweenAFiringAndItsWorkIsRespected()
    {
        AudioPlayerService service;
        service.load(QStringLiteral("a"));
        service.play();
        m_device.currentTime = 8;
        // Whoever hears of the position may end it all.
        connect(&service, &AudioPlayerService::currentTimeChanged, &service, [&] {
            if (service.currentTime() > 0)
                service.stop();
        });
        QVERIFY(waitUntil([&] { return m_device.players == 0; }));
        QVERIFY(!service.isPlaying());
        QCOMPARE(service.currentTime(), 0.0);
    }

    void aServiceThatGoesTakesItsPollAlong()
    {
        auto service = std::make_unique<AudioPlayerService>();
        service->load(QStringLiteral("a"));
        service->play();
        service.reset();
        QCOMPARE(m_device.players, 0);
        m_device.calls.clear();
        QTest::qWait(250);
        QCOMPARE(m_device.calls, QStringList());
    }

private:
    Device m_device;
};

QTEST_GUILESS_MAIN(AudioPlayerServiceTest)
#include "AudioPlayerServiceTest.moc"
