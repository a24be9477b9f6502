#include "CaptureFixture.h"

#include "audio/AudioCaptureError.h"

#include <atomic>

using namespace talvenor;
using namespace talvenor::test;

/// Starts, stops and ends of the service that fall into each other's waits.
class AudioCaptureOverlapTest : public CaptureFixture
{
    Q_OBJECT

private Q_SLOTS:
    void aStopDuringTheSetUpOfSystemAudioFindsNoStream()
    {
        const OneShot<void> gate;
        m_audio->nextStream->startGate = gate;
        bool ended = false;
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(someURL);
            ended = true;
        });
        QVERIFY(test::waitUntil([&] { return !m_audio->streams.empty(); }));
        stop();
        QVERIFY(!m_service->isRecording());
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended; }));
        // Nothing guards against it: the stream runs, though nothing is recorded.
        QVERIFY(m_service->hasSystemAudio());
        QVERIFY(!m_service->isRecording());
        QCOMPARE(m_audio->journal->count(QStringLiteral("stream.stopCapture")), 0);
        // The next stop finds it.
        stop();
        QVERIFY(!m_service->hasSystemAudio());
        QVERIFY(
            test::waitUntil([&] { return m_audio->journal->count(QStringLiteral("stream.destroy")) == 1; }));
        QCOMPARE(m_audio->journal->count(QStringLiteral("stream.stopCapture")), 1);
    }

    void aSecondStartReplacesEngineFileAndStream()
    {
        await(m_service->startRecording(someURL));
        deliver(0, {0.5F});
        const std::shared_ptr<test::FakeEngineState> first = m_audio->engines[0];
        await(m_service->startRecording(otherURL));
        QVERIFY(!first->tap);
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.destroy")), 1);
        QCOMPARE(m_audio->journal->count(QStringLiteral("file.finish")), 1);
        QVERIFY(m_audio->files[0]->finishedOn != std::this_thread::get_id()); // a disk may hang
        QCOMPARE(m_audio->journal->count(QStringLiteral("stream.destroy")), 1);
        deliver(1, {0.25F});
        QCOMPARE(m_audio->files[0]->samples, std::vector<float>{0.5F});
        QCOMPARE(m_audio->files[1]->samples, std::vector<float>{0.25F});
        QCOMPARE(stop(), otherURL);
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.destroy")), 2);
        QCOMPARE(m_audio->journal->count(QStringLiteral("file.finish")), 2);
    }

    void aSecondStartWaitsForTheMicrophoneOfTheFirst()
    {
        const OneShot<void> gate;
        m_audio->nextEngine->inputFormatGate = gate;
        int ended = 0;
        for (const QString &url : {someURL, otherURL}) {
            startTask(this, [this, &ended, url]() -> Task<> {
                co_await m_service->startRecording(url);
                ++ended;
            });
        }
        QVERIFY(test::waitUntil(
            [&] { return m_audio->journal->count(QStringLiteral("engine.inputFormat")) == 1; }));
        QCOMPARE(m_audio->engines.size(), 1UL);
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended == 2; }));
        QCOMPARE(m_audio->files.size(), 2UL);
        QCOMPARE(m_audio->files[0]->path, someURL);
        QCOMPARE(m_audio->files[1]->path, otherURL);
        QVERIFY(!m_audio->engines[0]->tap && m_audio->engines[1]->tap);
        QCOMPARE(m_log->texts(channel).count(QStringLiteral("Mic recording started")), 2);
        QCOMPARE(stop(), otherURL);
    }

    void aFailedStartLetsTheNextOneHaveItsTurn()
    {
        const OneShot<void> gate;
        m_audio->nextEngine->inputFormatGate = gate;
        m_audio->nextEngine->inputFormat = {0, 0};
        int failed = 0;
        int ended = 0;
        for (const QString &url : {someURL, otherURL}) {
            startTask(this, [this, &failed, &ended, url]() -> Task<> {
                try {
                    co_await m_service->startRecording(url);
                    ++ended;
                } catch (const AudioCaptureError &) {
                    ++failed;
                }
            });
        }
        QCoreApplication::processEvents();
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended == 1 && failed == 1; }));
        QVERIFY(m_service->isRecording());
    }

    void aStopWhileTheMicrophoneIsBeingSetUpEndsTheSetUp_data()
    {
        QTest::addColumn<bool>("starting");
        QTest::newRow("asking for the format") << false;
        QTest::newRow("starting the engine") << true;
    }

    void aStopWhileTheMicrophoneIsBeingSetUpEndsTheSetUp()
    {
        QFETCH(bool, starting);
        const OneShot<void> gate;
        (starting ? m_audio->nextEngine->startGate : m_audio->nextEngine->inputFormatGate) = gate;
        if (starting) // an engine that is stopped meanwhile may fail for that reason
            m_audio->nextEngine->startError = test::platformFailure(QStringLiteral("stopped"));
        bool ended = false;
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(someURL); // ends without an error
            ended = true;
        });
        const QString last = starting ? QStringLiteral("engine.start") : QStringLiteral("engine.inputFormat");
        QVERIFY(test::waitUntil([&] { return m_audio->journal->count(last) == 1; }));
        QCOMPARE(stop(), someURL);
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended; }));
        QVERIFY(!m_service->isRecording() && !m_service->hasSystemAudio());
        QCOMPARE(m_audio->journal->count(QStringLiteral("engine.destroy")), 1);
        QCOMPARE(m_audio->journal->count(QStringLiteral("content")), 0);
        QCOMPARE(m_audio->journal->count(QStringLiteral("file.create")),
                 m_audio->journal->count(QStringLiteral("file.finish")));
        await(m_service->startRecording(otherURL)); // nothing is left in the way
        QVERIFY(m_service->isRecording());
    }

    void aServiceMayGoAtEveryWait_data()
    {
        QTest::addColumn<QString>("where");
        for (const char *where : {"format", "file", "start", "content", "capture"})
            QTest::newRow(where) << QString::fromUtf8(where);
    }

    void aServiceMayGoAtEveryWait()
    {
        QFETCH(QString, where);
        const OneShot<void> gate;
        std::atomic<bool> letFileGo = false;
        QString last;
        if (where == QStringLiteral("format")) {
            m_audio->nextEngine->inputFormatGate = gate;
            last = QStringLiteral("engine.inputFormat");
        } else if (where == QStringLiteral("file")) {
            last = QStringLiteral("file.slow");
            auto create = Platform::shared().createAudioFile;
            Platform::shared().createAudioFile =
                [this, create, &letFileGo](const QString &path, const AudioFileSettings &settings) {
                    m_audio->journal->note(QStringLiteral("file.slow"));
                    while (!letFileGo)
                        QThread::yieldCurrentThread();
                    return create(path, settings);
                };
        } else if (where == QStringLiteral("start")) {
            m_audio->nextEngine->startGate = gate;
            last = QStringLiteral("engine.start");
        } else if (where == QStringLiteral("content")) {
            m_audio->contentGate = gate;
            last = QStringLiteral("content");
        } else {
            m_audio->nextStream->startGate = gate;
            last = QStringLiteral("stream.startCapture");
        }
        int ended = 0;
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(someURL);
            ++ended;
        });
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(otherURL); // may still be waiting for its turn
            ++ended;
        });
        QVERIFY(test::waitUntil([&] { return m_audio->journal->count(last) >= 1; }));
        m_service.reset();
        letFileGo = true;
        gate.resume();
        QVERIFY(test::waitUntil([&] { return ended == 2; }));
        // Nothing is left behind.
        const QStringList calls = m_audio->journal->calls();
        QCOMPARE(calls.count(QStringLiteral("engine.create")), calls.count(QStringLiteral("engine.destroy")));
        QCOMPARE(calls.count(QStringLiteral("file.create")), calls.count(QStringLiteral("file.finish")));
        QCOMPARE(calls.count(QStringLiteral("stream.create")), calls.count(QStringLiteral("stream.destroy")));
    }

    void aServiceThatGoesDuringAStartLeavesNothingRunning_data()
    {
        QTest::addColumn<bool>("systemAudio");
        QTest::newRow("starting the engine") << false;
        QTest::newRow("starting the stream") << true;
    }

    // As at the end of the program: whatever waits is never gone on with.
    void aServiceThatGoesDuringAStartLeavesNothingRunning()
    {
        QFETCH(bool, systemAudio);
        const OneShot<void> gate;
        (systemAudio ? m_audio->nextStream->startGate : m_audio->nextEngine->startGate) = gate;
        bool ended = false;
        startTask(this, [this, &ended]() -> Task<> {
            co_await m_service->startRecording(someURL);
            ended = true;
        });
        const QString last =
            systemAudio ? QStringLiteral("stream.startCapture") : QStringLiteral("engine.start");
        QVERIFY(test::waitUntil([&] { return m_audio->journal->count(last) == 1; }));
        QVERIFY(m_audio->engines[0]->tap);
        m_service.reset();
        const QStringList calls = m_audio->journal->calls();
        QVERIFY(!m_audio->engines[0]->tap);
        const qsizetype removed = calls.indexOf(QStringLiteral("engine.removeTap"));
        const qsizetype stopped = calls.indexOf(QStringLiteral("engine.stop"));
        QVERIFY(removed >= 0 && removed < stopped);
        QVERIFY(stopped < calls.indexOf(QStringLiteral("file.finish")));
        QCOMPARE(calls.count(QStringLiteral("file.finish")), 1);
        QCOMPARE(calls.count(QStringLiteral("stream.stopCapture")), systemAudio ? 1 : 0);
        QVERIFY(!ended);
        gate.resume(); // only so that the test itself leaks nothing
        QVERIFY(test::waitUntil([&] { return ended; }));
    }

    void aServiceThatGoesWhileRecordingFinishesItsFile()
    {
        await(m_service->startRecording(someURL));
        deliver(0, {0.5F});
        m_service.reset();
        QVERIFY(!m_audio->engines[0]->tap);
        const QStringList calls = m_audio->journal->calls();
        // What is said while a slow disk takes the rest is no part of it.
        const qsizetype end = calls.indexOf(QStringLiteral("engine.endIntake"));
        QVERIFY(end >= 0 && end < calls.indexOf(QStringLiteral("engine.removeTap")));
        QCOMPARE(calls.count(QStringLiteral("engine.destroy")), 1);
        QCOMPARE(calls.count(QStringLiteral("file.finish")), 1);
        QCOMPARE(calls.count(QStringLiteral("stream.destroy")), 1);
    }
};

QTEST_GUILESS_MAIN(AudioCaptureOverlapTest)
#include "AudioCaptureOverlapTest.moc"
