#include "speech/TranscriptionService.h"

#include "FakeSpeechRecognizer.h"
#include "settings/AppSettings.h"
#include "speech/TranscriptionError.h"
#include "support/Await.h"
#include "support/LogCapture.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace talvenor;
using test::await;

namespace {

const QString kChannel = QStringLiteral("com.talvenor.app.Transcription");
const QString kDefault = QStringLiteral("default");
const QString kError = QStringLiteral("error");

SpeechResult makeResult(int wordCount, bool isFinal, const QString &suffix = QString())
{
    SpeechResult result;
    result.isFinal = isFinal;
    for (int index = 0; index < wordCount; ++index)
        result.segments.append({QStringLiteral("w%1").arg(index + 1) + suffix, 0.5 * index});
    return result;
}

test::FakeSpeechEngine::Script reporting(const std::vector<SpeechResult> &results,
                                         std::optional<SpeechError> error = std::nullopt)
{
    return [results, error](const SpeechRecognizer::ResultHandler &handler) {
        for (const SpeechResult &result : results)
            handler(&result, nullptr);
        if (error)
            handler(nullptr, &*error);
    };
}

QStringList textsOf(const QList<TranscriptSegment> &lines)
{
    QStringList texts;
    for (const TranscriptSegment &line : lines)
        texts.append(line.text);
    return texts;
}

/// Answers requests for the permission with one status, on another thread.
class FakeAuthorization : public Authorization
{
public:
    explicit FakeAuthorization(AuthorizationStatus status) : m_status(status) {}

    AuthorizationStatus microphoneStatus() override { return m_status; }
    void requestMicrophoneAccess(std::function<void(bool)> answer) override { answer(false); }
    AuthorizationStatus speechStatus() override { return m_status; }
    void requestSpeechAuthorization(std::function<void(AuthorizationStatus)> answer) override
    {
        std::thread([answer = std::move(answer), status = m_status] { answer(status); }).detach();
    }

private:
    AuthorizationStatus m_status;
};

} // namespace

/// What the service makes of all that a recogniser can report.
class TranscriptionServiceTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_folder;
    QString m_audio;

    // The error of a transcription that must fail.
    TranscriptionError failureOf(TranscriptionService &service, const QString &path)
    {
        try {
            static_cast<void>(await(service.transcribe(path, TranscriptionLanguage::english)));
        } catch (const TranscriptionError &error) {
            return error;
        }
        qFatal("the transcription has not failed");
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_audio = m_folder.filePath(QStringLiteral("meeting 100% done.m4a"));
        QFile file(m_audio);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(QByteArray(1234, 'x')), 1234);
    }

    void init() { AppSettings::shared().setAppLanguage(AppLanguage::english); }

    void aFinalResultBecomesLines()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(16, true)});
        engine.install();
        TranscriptionService service;
        const auto lines = await(service.transcribe(m_audio, TranscriptionLanguage::german));
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines[1].text, QStringLiteral("w16"));
        QCOMPARE(lines[1].timestamp, 7.5);
        QCOMPARE(engine.locales(), QStringList({QStringLiteral("de-DE")}));
    }

    void theLogTellsEachStepInOrder()
    {
        test::FakeSpeechEngine engine;
        engine.state = SpeechTaskState::finishing;
        QSemaphore isStarted;
        engine.script = [&isStarted](const SpeechRecognizer::ResultHandler &handler) {
            isStarted.acquire();
            const SpeechResult result = makeResult(16, true);
            handler(&result, nullptr);
        };
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        auto task = service.transcribe(m_audio, TranscriptionLanguage::english);
        QVERIFY(test::waitUntil([&] { return log.texts(kChannel).size() == 5; }));
        isStarted.release();
        static_cast<void>(await(std::move(task)));
        QCOMPARE(log.texts(kChannel),
                 QStringList({QStringLiteral("Transcribing locale=en-US file=meeting 100% done.m4a"),
                              QStringLiteral("Recognizer available=true onDevice=true"),
                              QStringLiteral("Audio file: 1234 bytes"),
                              QStringLiteral("Using on-device recognition"),
                              QStringLiteral("Recognition task started, state=2"),
                              QStringLiteral("Transcription complete: 16 segments")}));
        QVERIFY(log.contains(kChannel, kDefault, QStringLiteral("Audio file: 1234 bytes")));
    }

    void theRequestAsksForPartialResultsPunctuationAndDictation()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(1, true)});
        engine.install();
        TranscriptionService service;
        static_cast<void>(await(service.transcribe(m_audio, TranscriptionLanguage::english)));
        const SpeechRequest request = engine.requests().value(0);
        QCOMPARE(request.path, m_audio);
        QVERIFY(request.shouldReportPartialResults);
        QVERIFY(request.addsPunctuation);
        QVERIFY(request.taskHint == SpeechTaskHint::dictation);
        QVERIFY(request.requiresOnDeviceRecognition);
    }

    void withoutRecognitionOnTheDeviceAServerMayBeUsed()
    {
        test::FakeSpeechEngine engine;
        engine.isOnDevice = false;
        engine.script = reporting({makeResult(1, true)});
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        static_cast<void>(await(service.transcribe(m_audio, TranscriptionLanguage::english)));
        QVERIFY(!engine.requests().value(0).requiresOnDeviceRecognition);
        QVERIFY(log.contains(kChannel, kDefault, QStringLiteral("Using server-based recognition")));
        QVERIFY(log.contains(kChannel, kDefault, QStringLiteral("Recognizer available=true onDevice=false")));
    }

    void withoutARecognizerItFailsAndNothingChanges()
    {
        test::FakeSpeechEngine engine;
        engine.exists = false;
        engine.install();
        TranscriptionService service;
        const QSignalSpy transcribing(&service, &TranscriptionService::isTranscribingChanged);
        const QSignalSpy progress(&service, &TranscriptionService::progressChanged);
        const test::LogCapture log;
        const TranscriptionError error = failureOf(service, m_audio);
        QVERIFY(error.kind() == TranscriptionError::Case::recognizerUnavailable);
        QVERIFY(log.contains(kChannel, kError, QStringLiteral("Could not create recognizer for en-US")));
        QCoreApplication::processEvents();
        QCOMPARE(transcribing.count(), 0);
        QCOMPARE(progress.count(), 0);
    }

    void aRecognizerThatIsNotAvailableFailsAndNothingChanges()
    {
        test::FakeSpeechEngine engine;
        engine.isAvailable = false;
        engine.install();
        TranscriptionService service;
        const QSignalSpy transcribing(&service, &TranscriptionService::isTranscribingChanged);
        const test::LogCapture log;
        const TranscriptionError error = failureOf(service, m_audio);
        QVERIFY(error.kind() == TranscriptionError::Case::recognizerUnavailable);
        QCOMPARE(log.texts(kChannel).mid(1),
                 QStringList({QStringLiteral("Recognizer available=false onDevice=true"),
                              QStringLiteral("Recognizer not available")}));
        QVERIFY(log.contains(kChannel, kError, QStringLiteral("Recognizer not available")));
        QCoreApplication::processEvents();
        QCOMPARE(transcribing.count(), 0);
        QVERIFY(engine.requests().isEmpty());
    }

    void aMissingFileIsLeftToTheRecognizer()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({}, SpeechError{2, QStringLiteral("cannot be opened")});
        engine.install();
        TranscriptionService service;
        const QString path = m_folder.filePath(QStringLiteral("gone.m4a"));
        const test::LogCapture log;
        const TranscriptionError error = failureOf(service, path);
        QVERIFY(error.kind() == TranscriptionError::Case::recognitionFailed);
        QCOMPARE(error.message(), QStringLiteral("cannot be opened"));
        QVERIFY(log.contains(kChannel, kError, QStringLiteral("Audio file NOT FOUND: ") + path));
        QCOMPARE(engine.requests().size(), 1);
    }

    void theLatestOfSeveralCompleteListsCounts()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(3, false, QStringLiteral("?")), makeResult(1, false),
                                   makeResult(2, true, QStringLiteral("."))});
        engine.install();
        TranscriptionService service;
        QCOMPARE(textsOf(await(service.transcribe(m_audio, TranscriptionLanguage::english))),
                 QStringList({QStringLiteral("w1."), QStringLiteral("w2.")}));
    }

    void anEmptyFinalResultGivesNoLines()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(5, false), makeResult(0, true)});
        engine.install();
        TranscriptionService service;
        QVERIFY(await(service.transcribe(m_audio, TranscriptionLanguage::english)).isEmpty());
    }

    void callsAfterTheFinalResultDoNothing()
    {
        test::FakeSpeechEngine engine;
        engine.script = [](const SpeechRecognizer::ResultHandler &handler) {
            const SpeechResult first = makeResult(1, true);
            const SpeechResult second = makeResult(9, true);
            const SpeechError error{7, QStringLiteral("late")};
            handler(&first, nullptr);
            handler(&second, nullptr);
            handler(nullptr, &error);
        };
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        QCOMPARE(await(service.transcribe(m_audio, TranscriptionLanguage::english)).size(), 1);
        engine.join();
        QCOMPARE(log.texts(kChannel).filter(QStringLiteral("Transcription complete")).size(), 1);
        QVERIFY(log.texts(kChannel).filter(QStringLiteral("Recognition error")).isEmpty());
    }

    void callsAfterAnErrorDoNothing()
    {
        test::FakeSpeechEngine engine;
        engine.script = [](const SpeechRecognizer::ResultHandler &handler) {
            const SpeechError error{1101, QString()};
            const SpeechResult late = makeResult(9, true);
            handler(nullptr, &error);
            handler(&late, nullptr);
        };
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        QCOMPARE(await(service.transcribe(m_audio, TranscriptionLanguage::english)).size(), 1);
        engine.join();
        QVERIFY(log.texts(kChannel).filter(QStringLiteral("Transcription complete")).isEmpty());
    }

    void errorsThatMeanNoSpeech_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("description");
        QTest::addColumn<bool>("meansNoSpeech");
        const auto add = [](const char *name, int code, const char *text, bool means) {
            QTest::newRow(name) << code << QString::fromUtf8(text) << means;
        };
        add("1101", 1101, "anything", true);
        add("1110", 1110, "", true);
        add("1100", 1100, "anything", false);
        add("1111", 1111, "anything", false);
        add("English text", 1, "Error: No speech was found", true);
        add("German text", 1, "Es wurde kein Sprachsignal gefunden", true);
        add("English in small letters", 1, "no speech was found", false);
        add("German with a capital", 1, "Kein Sprachsignal", false);
    }

    void errorsThatMeanNoSpeech()
    {
        QFETCH(int, code);
        QFETCH(QString, description);
        QFETCH(bool, meansNoSpeech);
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(20, false)}, SpeechError{code, description});
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        if (meansNoSpeech) {
            const auto lines = await(service.transcribe(m_audio, TranscriptionLanguage::english));
            QCOMPARE(lines.size(), 2);
            QCOMPARE(lines[1].text, QStringLiteral("w16 w17 w18 w19 w20"));
            QVERIFY(
                log.contains(kChannel, kDefault, QStringLiteral("Partial result after error: 20 segments")));
        } else {
            const TranscriptionError error = failureOf(service, m_audio);
            QVERIFY(error.kind() == TranscriptionError::Case::recognitionFailed);
            QCOMPARE(error.message(), description);
            QVERIFY(log.contains(kChannel, kError,
                                 QStringLiteral("Recognition error: %1 code=%2").arg(description).arg(code)));
        }
    }

    void silenceGivesOneSentenceInTheLanguageOfTheApplication_data()
    {
        QTest::addColumn<bool>("isGerman");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("English") << false
                                 << QStringLiteral(
                                        "(No speech detected - try a longer recording with clear speech)");
        QTest::newRow("German") << true
                                << QStringLiteral("(Keine Sprache erkannt - versuche eine laengere "
                                                  "Aufnahme mit deutlicher Sprache)");
    }

    void silenceGivesOneSentenceInTheLanguageOfTheApplication()
    {
        QFETCH(bool, isGerman);
        QFETCH(QString, sentence);
        AppSettings::shared().setAppLanguage(isGerman ? AppLanguage::german : AppLanguage::english);
        test::FakeSpeechEngine engine;
        engine.script = reporting({}, SpeechError{1110, QString()});
        engine.install();
        TranscriptionService service;
        const test::LogCapture log;
        // The language that is spoken is the other one.
        const auto lines = await(service.transcribe(m_audio, isGerman ? TranscriptionLanguage::english
                                                                      : TranscriptionLanguage::german));
        QCOMPARE(textsOf(lines), QStringList({sentence}));
        QCOMPARE(lines[0].timestamp, 0.0);
        QVERIFY(!lines[0].speaker.has_value());
        QVERIFY(log.contains(kChannel, kDefault, QStringLiteral("No speech detected in audio")));
    }

    void aServiceThatIsGoneLeavesTheWordsUngrouped()
    {
        test::FakeSpeechEngine engine;
        QSemaphore serviceIsGone;
        engine.script = [&serviceIsGone](const SpeechRecognizer::ResultHandler &handler) {
            serviceIsGone.acquire();
            const SpeechResult result = makeResult(16, true);
            handler(&result, nullptr);
        };
        engine.install();
        auto service = std::make_unique<TranscriptionService>();
        auto task = service->transcribe(m_audio, TranscriptionLanguage::english);
        QVERIFY(test::waitUntil([&] { return !engine.requests().isEmpty(); }));
        service.reset();
        serviceIsGone.release();
        QCOMPARE(await(std::move(task)).size(), 16);
    }

    void aServiceThatIsGoneKeepsTheWordsBeforeANoSpeechError()
    {
        test::FakeSpeechEngine engine;
        QSemaphore serviceIsGone;
        engine.script = [&serviceIsGone](const SpeechRecognizer::ResultHandler &handler) {
            const SpeechResult result = makeResult(16, false);
            handler(&result, nullptr);
            serviceIsGone.acquire();
            const SpeechError error{1110, QString()};
            handler(nullptr, &error);
        };
        engine.install();
        auto service = std::make_unique<TranscriptionService>();
        auto task = service->transcribe(m_audio, TranscriptionLanguage::english);
        QVERIFY(test::waitUntil([&] { return !engine.requests().isEmpty(); }));
        service.reset();
        serviceIsGone.release();
        QCOMPARE(await(std::move(task)).size(), 16);
    }

    void thePropertiesFollowTheRecognition()
    {
        test::FakeSpeechEngine engine;
        QSemaphore mayEnd;
        engine.script = [&mayEnd](const SpeechRecognizer::ResultHandler &handler) {
            mayEnd.acquire();
            const SpeechResult result = makeResult(1, true);
            handler(&result, nullptr);
        };
        engine.install();
        TranscriptionService service;
        QVERIFY(!service.isTranscribing());
        QCOMPARE(service.progress(), 0.0);
        QList<QPair<bool, double>> states;
        const auto note = [&] { states.append({service.isTranscribing(), service.progress()}); };
        connect(&service, &TranscriptionService::isTranscribingChanged, this, note);
        connect(&service, &TranscriptionService::progressChanged, this, note);

        for (int round = 0; round < 2; ++round) {
            auto task = service.transcribe(m_audio, TranscriptionLanguage::english);
            QVERIFY(test::waitUntil([&] { return engine.requests().size() == round + 1; }));
            QVERIFY(service.isTranscribing());
            QCOMPARE(service.progress(), 0.0);
            mayEnd.release();
            static_cast<void>(await(std::move(task)));
            QVERIFY(test::waitUntil([&] { return !service.isTranscribing(); }));
            QCOMPARE(service.progress(), 1.0);
        }
        const QList<QPair<bool, double>> expected{{true, 0}, {false, 0}, {false, 1}, {true, 1},
                                                  {true, 0}, {false, 0}, {false, 1}};
        QCOMPARE(states, expected);
    }

    void theResultIsThereBeforeThePropertiesAreReset()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(1, true)});
        engine.install();
        TranscriptionService service;
        bool wasTranscribing = false;
        await([](TranscriptionService *transcription, QString path, bool *flag) -> Task<> {
            static_cast<void>(co_await transcription->transcribe(path, TranscriptionLanguage::english));
            *flag = transcription->isTranscribing();
        }(&service, m_audio, &wasTranscribing));
        QVERIFY(wasTranscribing);
        QVERIFY(test::waitUntil([&] { return !service.isTranscribing(); }));
    }

    void thePropertiesAreResetAfterAFailureToo()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({}, SpeechError{5, QStringLiteral("broken")});
        engine.install();
        TranscriptionService service;
        const QSignalSpy transcribing(&service, &TranscriptionService::isTranscribingChanged);
        static_cast<void>(failureOf(service, m_audio));
        QVERIFY(test::waitUntil([&] { return transcribing.count() == 2; }));
        QVERIFY(!service.isTranscribing());
        QCOMPARE(service.progress(), 1.0);
    }

    void theMainThreadIsLeftAlone()
    {
        test::FakeSpeechEngine engine;
        engine.script = reporting({makeResult(1, true)});
        engine.install();
        TranscriptionService service;
        static_cast<void>(await(service.transcribe(m_audio, TranscriptionLanguage::english)));
        QVERIFY(engine.makingThread() != std::this_thread::get_id());
    }

    void onlyTheStatusAuthorizedIsAPermission_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("isGranted");
        QTest::newRow("not determined") << 0 << false;
        QTest::newRow("restricted") << 1 << false;
        QTest::newRow("denied") << 2 << false;
        QTest::newRow("authorized") << 3 << true;
    }

    void onlyTheStatusAuthorizedIsAPermission()
    {
        QFETCH(int, status);
        QFETCH(bool, isGranted);
        Platform::shared().authorization =
            std::make_shared<FakeAuthorization>(static_cast<AuthorizationStatus>(status));
        TranscriptionService service;
        QCOMPARE(await(service.requestAuthorization()), isGranted);
        Platform::shared().authorization.reset();
    }

    void errorsSpeakTheLanguageThatIsSetWhenTheyAreRead()
    {
        const TranscriptionError failed = TranscriptionError::recognitionFailed(QStringLiteral("why"));
        QCOMPARE(failed.errorDescription(), QStringLiteral("Transcription failed: why"));
        QCOMPARE(TranscriptionError::recognizerUnavailable().errorDescription(),
                 QStringLiteral("Speech recognition is not available for this language."));
        QCOMPARE(TranscriptionError::notAuthorized().errorDescription(),
                 QStringLiteral("Speech recognition permission was not granted."));
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(failed.errorDescription(), QStringLiteral("Transkription fehlgeschlagen: why"));
        QCOMPARE(TranscriptionError::recognizerUnavailable().errorDescription(),
                 QStringLiteral("Spracherkennung ist nicht verfuegbar fuer diese Sprache."));
        QCOMPARE(TranscriptionError::notAuthorized().errorDescription(),
                 QStringLiteral("Berechtigung fuer Spracherkennung wurde nicht erteilt."));
    }
};

QTEST_GUILESS_MAIN(TranscriptionServiceTest)
#include "TranscriptionServiceTest.moc"
