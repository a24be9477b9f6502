#include "CaptureFixture.h"

#include "audio/AudioCaptureError.h"
#include "settings/AppSettings.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <cmath>
#include <mutex>
#include <thread>

using namespace talvenor;
using namespace talvenor::test;

/// The life of a recording above the devices.
class AudioCaptureServiceTest : public CaptureFixture
{
    Q_OBJECT

private Q_SLOTS:
    void anIdleServiceHasNothingToShow()
    {
        QVERIFY(!m_service->isRecording());
        QCOMPARE(m_service->audioLevel(), 0.0F);
        QCOMPARE(m_service->audioLevels(), QList<float>());
        QVERIFY(!m_service->hasSystemAudio());
        QCOMPARE(AudioCaptureService::maxLevelSamples, 50);
    }

    void aStartTakesItsStepsInOrder()
    {
        m_audio->nextEngine->inputFormat = {44'100, 2};
        const std::shared_ptr<test::Journal> journal = m_audio->journal;
        connect(m_service.get(), &AudioCaptureService::isRecordingChanged, this,
                [journal] { journal->note(QStringLiteral("isRecording")); });
        connect(m_service.get(), &AudioCaptureService::hasSystemAudioChanged, this,
                [journal] { journal->note(QStringLiteral("hasSystemAudio")); });
        await(m_service->startRecording(someURL));
        QCOMPARE(journal->calls(),
                 (QStringList{QStringLiteral("engine.create"), QStringLiteral("engine.inputFormat"),
                              QStringLiteral("file.create"), QStringLiteral("engine.installTap"),
                              QStringLiteral("engine.prepare"), QStringLiteral("engine.start"),
                              QStringLiteral("isRecording"), QStringLiteral("content"),
                              QStringLiteral("stream.create"), QStringLiteral("stream.addStreamOutput audio"),
                              QStringLiteral("stream.startCapture"), QStringLiteral("hasSystemAudio")}));
        QCOMPARE(m_log->lines(),
                 (QStringList{channel + QStringLiteral(" default: Mic: 44100.000000Hz 2ch"),
                              channel + QStringLiteral(" default: Mic recording started"),
                              channel + QStringLiteral(
                                            " default: System audio capture started via ScreenCaptureKit")}));
        QVERIFY(m_service->isRecording() && m_service->hasSystemAudio());
    }

    void deviceFileAndStreamGetTheirSettings()
    {
        m_audio->nextEngine->inputFormat = {47'999.9, 6};
        await(m_service->startRecording(someURL));
        QCOMPARE(m_audio->engines[0]->tapBufferSize, 4'096U);
        QCOMPARE(m_audio->engines[0]->tapFormat, (AudioFormat{47'999.9, 1}));
        QCOMPARE(m_audio->files[0]->path, someURL);
        const AudioFileSettings &settings = m_audio->files[0]->settings;
        QCOMPARE(settings.formatID, 0x61616320U);
        QCOMPARE(settings.sampleRate, 47'999.9);
        QCOMPARE(settings.channelCount, 1U);
        QCOMPARE(int(settings.encoderAudioQuality), 96);
        QCOMPARE(m_audio->streams[0]->display.identifier, QStringLiteral("first"));
        const SystemAudioConfiguration &configuration = m_audio->streams[0]->configuration;
        QVERIFY(configuration.capturesAudio && configuration.excludesCurrentProcessAudio);
        QCOMPARE(configuration.channelCount, 1);
        QCOMPARE(configuration.sampleRate, 47'999); // cut off, not rounded
    }

    void theMicrophoneRecordsWhileSystemAudioIsBeingSetUp()
    {
        const OneShot<void> gate;
        m_audio->contentGate = gate;
        bool ended = false;
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(someURL);
            ended = true;
        });
        QVERIFY(test::waitUntil([&] { return m_service->isRecording(); }));
        QVERIFY(!ended && !m_service->hasSystemAudio());
        deliver(0, {0.5F});
        QCOMPARE(m_audio->files[0]->samples, std::vector<float>{0.5F});
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended; }));
        QVERIFY(m_service->hasSystemAudio());
    }

    void systemAudioIsMixedIntoTheMicrophone()
    {
        await(m_service->startRecording(someURL));
        deliverSystemAudio(0, {0.25F, 0.25F});
        deliver(0, {0.5F, 0.5F, 0.5F});
        QCOMPARE(m_audio->files[0]->samples, (std::vector<float>{0.75F, 0.75F, 0.5F}));
    }

    void noUsableInputIsAnErrorThatUndoesNothing_data()
    {
        QTest::addColumn<double>("rate");
        QTest::addColumn<uint>("channels");
        QTest::newRow("no rate") << 0.0 << 1U;
        QTest::newRow("no channels") << 48'000.0 << 0U;
        QTest::newRow("neither") << 0.0 << 0U;
        QTest::newRow("negative rate") << -1.0 << 1U;
        QTest::newRow("no number") << std::nan("") << 1U;
    }

    void noUsableInputIsAnErrorThatUndoesNothing()
    {
        QFETCH(double, rate);
        QFETCH(uint, channels);
        m_audio->nextEngine->inputFormat = {rate, channels};
        try {
            await(m_service->startRecording(someURL));
            QFAIL("no error");
        } catch (const AudioCaptureError &error) {
            QCOMPARE(error.reason(), AudioCaptureError::Case::noAudioInput);
            QCOMPARE(error.errorDescription(), QStringLiteral("No microphone found."));
        }
        QCOMPARE(m_audio->journal->calls(),
                 (QStringList{QStringLiteral("engine.create"), QStringLiteral("engine.inputFormat")}));
        QVERIFY(!m_service->isRecording());
        QCOMPARE(m_log->lines(), QStringList());
        // The engine stays until the next start replaces it, and the path is kept.
        await(m_service->startRecording(otherURL));
        QCOMPARE(m_audio->journal->calls().mid(2, 2),
                 (QStringList{QStringLiteral("engine.create"), QStringLiteral("engine.destroy")}));
        QVERIFY(m_service->isRecording());
    }

    void theKeptPathIsThatOfTheFailedStart()
    {
        m_audio->nextEngine->inputFormat = {0, 0};
        QVERIFY_EXCEPTION_THROWN(await(m_service->startRecording(someURL)), AudioCaptureError);
        QCOMPARE(stop(), someURL);
    }

    void aFileThatCannotBeCreatedPassesItsErrorOn()
    {
        m_audio->createFileError = test::platformFailure(QStringLiteral("no such folder"));
        try {
            await(m_service->startRecording(someURL));
            QFAIL("no error");
        } catch (const PlatformError &error) {
            QCOMPARE(error.errorDescription(), QStringLiteral("no such folder"));
        }
        QVERIFY(!m_audio->engines[0]->tap);
        QVERIFY(!m_service->isRecording());
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.destroy")), 0);
    }

    void anEngineThatDoesNotStartPassesItsErrorOnAndUndoesNothing()
    {
        m_audio->nextEngine->startError = test::platformFailure(QStringLiteral("device busy"));
        try {
            await(m_service->startRecording(someURL));
            QFAIL("no error");
        } catch (const PlatformError &error) {
            QCOMPARE(error.errorDescription(), QStringLiteral("device busy"));
        }
        QVERIFY(!m_service->isRecording());
        QVERIFY(m_audio->engines[0]->tap);                                   // still installed
        QCOMPARE(m_audio->journal->count(QStringLiteral("file.finish")), 0); // still open
        QCOMPARE(m_audio->journal->count(QStringLiteral("content")), 0);
        // No level is polled.
        QSignalSpy levels(m_service.get(), &AudioCaptureService::audioLevelsChanged);
        QTest::qWait(150);
        QCOMPARE(levels.count(), 0);
        await(m_service->startRecording(otherURL));
        QCOMPARE(m_audio->journal->count(QStringLiteral("file.finish")), 1);
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.destroy")), 1);
    }

    void withoutADisplayTheMicrophoneRecordsAlone()
    {
        m_audio->displays.clear();
        await(m_service->startRecording(someURL));
        QVERIFY(m_service->isRecording());
        QVERIFY(!m_service->hasSystemAudio());
        QVERIFY(m_log->contains(channel, QStringLiteral("error"),
                                QStringLiteral("No display found for system audio")));
        QVERIFY(m_audio->streams.empty());
    }

    void aFailureOfSystemAudioLeavesTheMicrophone_data()
    {
        QTest::addColumn<QString>("where");
        QTest::newRow("query") << QStringLiteral("query");
        QTest::newRow("output") << QStringLiteral("output");
        QTest::newRow("start") << QStringLiteral("start");
    }

    void aFailureOfSystemAudioLeavesTheMicrophone()
    {
        QFETCH(QString, where);
        const std::exception_ptr error = test::platformFailure(QStringLiteral("abgelehnt – nein"));
        if (where == QStringLiteral("query"))
            m_audio->contentError = error;
        else if (where == QStringLiteral("output"))
            m_audio->nextStream->addError = error;
        else
            m_audio->nextStream->startError = error;
        await(m_service->startRecording(someURL)); // no error
        QVERIFY(m_service->isRecording());
        QVERIFY(!m_service->hasSystemAudio());
        QVERIFY(m_log->contains(channel, QStringLiteral("error"),
                                QStringLiteral("System audio failed: abgelehnt – nein — mic-only mode")));
        deliver(0, {0.5F});
        QCOMPARE(m_audio->files[0]->samples, std::vector<float>{0.5F});
        // No stream is kept that a stop would have to stop.
        stop();
        QCoreApplication::processEvents();
        QCOMPARE(m_audio->journal->count(QStringLiteral("stream.stopCapture")), 0);
    }

    void aStopTakesItsStepsInOrder()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a.m4a"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(1'234, 'x'));
        file.close();
        await(m_service->startRecording(path));
        deliver(0, std::vector<float>(100, 0.5F));
        QVERIFY(test::waitUntil([&] { return !m_service->audioLevels().isEmpty(); }));
        deliverSystemAudio(0, std::vector<float>(10, 0.5F)); // never mixed
        m_audio->journal->clear();
        m_log->clear();
        const std::shared_ptr<test::Journal> journal = m_audio->journal;
        const auto noteChange = [&](auto signal, const char *name) {
            connect(m_service.get(), signal, this,
                    [journal, name] { journal->note(QString::fromUtf8(name)); });
        };
        noteChange(&AudioCaptureService::isRecordingChanged, "isRecording");
        noteChange(&AudioCaptureService::audioLevelChanged, "audioLevel");
        noteChange(&AudioCaptureService::audioLevelsChanged, "audioLevels");
        noteChange(&AudioCaptureService::hasSystemAudioChanged, "hasSystemAudio");
        const auto callsThat = [journal](auto wanted) {
            QStringList calls = journal->calls();
            calls.removeIf([&wanted](const QString &call) { return !wanted(call); });
            return calls;
        };
        const auto changes = [&] {
            return callsThat([](const QString &call) { return !call.contains(u'.'); });
        };
        const auto steps = [&] {
            return callsThat([](const QString &call) {
                return call.startsWith(QStringLiteral("engine.")) || call.startsWith(QStringLiteral("file."));
            });
        };

        QCOMPARE(m_service->stopRecording(), path);
        // What is seen changes at once, whatever the disk does.
        QCOMPARE(changes(), (QStringList{QStringLiteral("isRecording"), QStringLiteral("audioLevel"),
                                         QStringLiteral("audioLevels"), QStringLiteral("hasSystemAudio")}));
        await(m_service->finished());
        QCOMPARE(steps(), (QStringList{QStringLiteral("engine.endIntake"), QStringLiteral("engine.removeTap"),
                                       QStringLiteral("engine.stop"), QStringLiteral("engine.destroy"),
                                       QStringLiteral("file.finish")}));
        QCOMPARE(m_log->lines(), (QStringList{channel + QStringLiteral(" default: Stopped. Frames: 100"),
                                              channel + QStringLiteral(" default: File: 1234 bytes")}));
        QVERIFY(!m_service->isRecording() && !m_service->hasSystemAudio());
        QCOMPARE(m_service->audioLevel(), 0.0F);
        QCOMPARE(m_service->audioLevels(), QList<float>());
        QCOMPARE(m_audio->files[0]->samples.size(), 100UL);
        // The stream is told afterwards, and nobody waits for it.
        QVERIFY(test::waitUntil([&] { return journal->count(QStringLiteral("stream.destroy")) == 1; }));
        QCOMPARE(journal->calls().filter(QStringLiteral("stream.")),
                 (QStringList{QStringLiteral("stream.stopCapture"), QStringLiteral("stream.destroy")}));
        // A stopped recording publishes no levels.
        QTest::qWait(120);
        QCOMPARE(m_service->audioLevels(), QList<float>());
    }

    void aStopWaitsForNoDisk()
    {
        const auto disk = std::make_shared<std::mutex>();
        std::unique_lock hung(*disk);
        m_audio->nextFile->beforeWrite = [disk] { const std::lock_guard answer(*disk); };
        await(m_service->startRecording(someURL));
        std::thread tap([this, block = m_audio->engines[0]->tap] {
            PcmBuffer buffer = FakeAudio::block(std::vector<float>(100, 0.5F));
            m_audio->journal->note(QStringLiteral("tap"));
            block(buffer);
        });
        QVERIFY(test::waitUntil([&] { return m_audio->journal->count(QStringLiteral("tap")) == 1; }));

        QCOMPARE(m_service->stopRecording(), someURL); // or the test hangs
        QVERIFY(!m_service->isRecording());
        // Nor does what is said while the disk hangs come into the file.
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.endIntake")), 1);
        // The next recording is not begun before the sound of this one is safe.
        bool started = false;
        startTask(this, [this, &started]() -> Task<> {
            co_await m_service->startRecording(otherURL);
            started = true;
        });
        QCoreApplication::processEvents();
        QVERIFY(!started);
        QCOMPARE(m_audio->engines.size(), 1UL);

        hung.unlock();
        tap.join();
        QVERIFY(test::waitUntil([&] { return started; }));
        QCOMPARE(m_audio->files[0]->samples.size(), 100UL);
        const QStringList calls = m_audio->journal->calls();
        QVERIFY(calls.indexOf(QStringLiteral("file.finish")) <
                calls.lastIndexOf(QStringLiteral("engine.create")));
    }

    void aStreamThatCannotBeStoppedIsIgnored()
    {
        m_audio->nextStream->stopError = test::platformFailure(QStringLiteral("gone"));
        await(m_service->startRecording(someURL));
        stop();
        QVERIFY(
            test::waitUntil([&] { return m_audio->journal->count(QStringLiteral("stream.destroy")) == 1; }));
        QVERIFY(!m_log->texts(channel).join(u'\n').contains(QStringLiteral("gone")));
    }

    void aStopWithNothingRunningOnlyLogs()
    {
        QCOMPARE(stop(), std::nullopt);
        QCOMPARE(m_log->texts(channel), QStringList{QStringLiteral("Stopped. Frames: 0")});
        QCOMPARE(m_audio->journal->calls(), QStringList());

        await(m_service->startRecording(someURL));
        deliver(0, std::vector<float>(30, 0.0F));
        stop();
        QCoreApplication::processEvents();
        m_log->clear();
        m_audio->journal->clear();
        QSignalSpy recording(m_service.get(), &AudioCaptureService::isRecordingChanged);
        QSignalSpy level(m_service.get(), &AudioCaptureService::audioLevelChanged);
        QSignalSpy levels(m_service.get(), &AudioCaptureService::audioLevelsChanged);
        QSignalSpy systemAudio(m_service.get(), &AudioCaptureService::hasSystemAudioChanged);
        QCOMPARE(stop(), someURL); // kept; the file does not exist, which is not told
        QCOMPARE(m_log->texts(channel), QStringList{QStringLiteral("Stopped. Frames: 30")});
        QCOMPARE(m_audio->journal->calls(), QStringList());
        QCOMPARE(recording.count() + level.count() + levels.count() + systemAudio.count(), 0);
    }

    void theFrameCountStartsAgainWithEachRecording()
    {
        await(m_service->startRecording(someURL));
        deliver(0, std::vector<float>(30, 0.0F));
        stop();
        await(m_service->startRecording(otherURL));
        m_log->clear();
        deliver(1, std::vector<float>(5, 0.0F));
        QCOMPARE(m_log->texts(channel),
                 QStringList{QStringLiteral("Tap 1: 5f total=0")}); // the tap's counter, too
        m_log->clear();
        stop();
        QCOMPARE(m_log->texts(channel), QStringList{QStringLiteral("Stopped. Frames: 5")});
    }

    void theNextRecordingMayFirstShowTheOldLevel()
    {
        await(m_service->startRecording(someURL));
        deliver(0, std::vector<float>(64, 0.1F));
        stop();
        QCOMPARE(m_service->audioLevel(), 0.0F);
        await(m_service->startRecording(otherURL));
        QVERIFY(test::waitUntil([&] { return !m_service->audioLevels().isEmpty(); }));
        QCOMPARE(m_service->audioLevels().first(), levelOf(0.1F));
        QCOMPARE(m_service->audioLevel(), levelOf(0.1F));
        deliver(1, std::vector<float>(64, 0.01F));
        QVERIFY(test::waitUntil([&] { return m_service->audioLevel() == levelOf(0.01F); }));
    }

    void theHistoryHoldsFiftyLevelsAndDropsTheOldest()
    {
        await(m_service->startRecording(someURL));
        deliver(0, std::vector<float>(64, 0.1F));
        QSignalSpy changed(m_service.get(), &AudioCaptureService::audioLevelsChanged);
        qsizetype longest = 0;
        connect(m_service.get(), &AudioCaptureService::audioLevelsChanged, this, [this, &longest] {
            longest = std::max(longest, m_service->audioLevels().size());
            QCOMPARE(m_service->audioLevels().last(), m_service->audioLevel());
        });
        QVERIFY(test::waitUntil([&] { return m_service->audioLevels().size() == 50; }));
        const auto before = changed.count();
        QVERIFY(before <= 50); // exactly one signal for each level
        QVERIFY(m_service->audioLevels().first() == levelOf(0.1F));
        deliver(0, std::vector<float>(64, 0.01F));
        QVERIFY(test::waitUntil([&] { return m_service->audioLevels().first() == levelOf(0.01F); }));
        QCOMPARE(longest, 50);
        QCOMPARE(m_service->audioLevels(), QList<float>(50, levelOf(0.01F)));
    }

    void levelsComeTwentyTimesASecond()
    {
        await(m_service->startRecording(someURL));
        QSignalSpy changed(m_service.get(), &AudioCaptureService::audioLevelsChanged);
        deliver(0, std::vector<float>(64, 0.1F));
        QElapsedTimer time;
        time.start();
        QVERIFY(test::waitUntil([&] { return changed.count() >= 20; }));
        QVERIFY2(time.elapsed() > 900, qPrintable(QString::number(time.elapsed())));
    }

    void systemAudioLeftOverIsNotHeardInTheNextRecording()
    {
        await(m_service->startRecording(someURL));
        deliverSystemAudio(0, std::vector<float>(100, 0.5F));
        stop();
        await(m_service->startRecording(otherURL));
        deliver(1, std::vector<float>(100, 0.0F));
        QCOMPARE(m_audio->files[1]->samples, std::vector<float>(100, 0.0F));
    }

    void whatComesInAfterTheStopIsNotHeardEither()
    {
        await(m_service->startRecording(someURL));
        const std::shared_ptr<SystemAudioOutput> output = m_audio->streams[0]->output;
        stop();
        deliverTo(*output, std::vector<float>(100, 0.5F)); // the stream has not been told yet
        await(m_service->startRecording(otherURL));
        deliver(1, std::vector<float>(100, 0.0F));
        QCOMPARE(m_audio->files[1]->samples, std::vector<float>(100, 0.0F));
    }

    void eachRecordingHasAHandlerOfItsOwn()
    {
        for (std::size_t i = 0; i < 2; ++i) {
            await(m_service->startRecording(someURL));
            m_log->clear();
            deliverSystemAudio(i, {0.5F});
            QCOMPARE(m_log->texts(channel),
                     QStringList{QStringLiteral("SysAudio #1: 1 samples 48000.000000Hz 1ch")});
            stop();
        }
        QVERIFY(
            test::waitUntil([&] { return !m_audio->streams[0]->output && !m_audio->streams[1]->output; }));
    }

    void theFlagOfSystemAudioOutlivesTheStream()
    {
        await(m_service->startRecording(someURL));
        m_audio->streams[0]->output = nullptr; // it has died, and nobody is told
        deliver(0, {0.5F});
        QVERIFY(m_service->hasSystemAudio());
        QCOMPARE(m_audio->files[0]->samples, std::vector<float>{0.5F});
    }

    void aFullDiskDoesNotEndTheRecording()
    {
        await(m_service->startRecording(someURL));
        deliver(0, std::vector<float>(10, 0.5F));
        m_audio->files[0]->writeError = test::platformFailure(QStringLiteral("disk full"));
        deliver(0, std::vector<float>(10, 0.5F));
        QVERIFY(m_service->isRecording());
        QVERIFY(test::waitUntil([&] { return m_service->audioLevel() == levelOf(0.5F); }));
        stop();
        QVERIFY(m_log->contains(channel, QStringLiteral("error"), QStringLiteral("Write failed: disk full")));
        QVERIFY(m_log->contains(channel, QStringLiteral("default"), QStringLiteral("Stopped. Frames: 10")));
    }

    void theErrorsSpeakTheLanguageThatIsSet()
    {
        using Case = AudioCaptureError::Case;
        const AudioCaptureError noInput(Case::noAudioInput);
        const AudioCaptureError setUp(Case::captureSetupFailed);
        const AudioCaptureError permission(Case::permissionDenied);
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(noInput.errorDescription(), QStringLiteral("Kein Mikrofon gefunden."));
        QCOMPARE(setUp.errorDescription(), QStringLiteral("Audio-Setup fehlgeschlagen."));
        QCOMPARE(permission.errorDescription(), QStringLiteral("Mikrofon-Berechtigung fehlt."));
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        QCOMPARE(noInput.errorDescription(), QStringLiteral("No microphone found."));
        QCOMPARE(setUp.errorDescription(), QStringLiteral("Audio setup failed."));
        QCOMPARE(permission.errorDescription(), QStringLiteral("Microphone permission missing."));
    }
};

QTEST_GUILESS_MAIN(AudioCaptureServiceTest)
#include "AudioCaptureServiceTest.moc"
