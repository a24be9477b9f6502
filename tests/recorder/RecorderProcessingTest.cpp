#include "recorderfakes/RecorderFixture.h"

#include "platform/Platform.h"
#include "settings/AppSettings.h"
#include "store/StorageService.h"
#include "support/Await.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <mutex>

using namespace talvenor;
using test::RecorderFixture;
using test::waitUntil;

namespace {

const QString summarizeRoute = QStringLiteral("POST /summarize");

Recording finishedEntry(const QString &title, int secondsAgo = 0)
{
    Recording recording;
    recording.title = title;
    recording.date =
        QDateTime::fromString(QStringLiteral("2026-03-01T10:00:00Z"), Qt::ISODate).addSecs(-secondsAgo);
    recording.audioFileName = title + QStringLiteral(".m4a");
    recording.status = RecordingStatus::completed;
    return recording;
}

Recording transcribedEntry(const QString &title)
{
    Recording recording = finishedEntry(title);
    recording.transcriptSegments = {{QUuid::createUuid(), 1.0, QStringLiteral("old words"), std::nullopt}};
    return recording;
}

/// Starts the operation as the screens do, as a task of its own.
void transcribe(RecorderFixture &fixture, const Recording &recording)
{
    startTask(fixture.viewModel.get(), [viewModel = fixture.viewModel.get(), recording] {
        return viewModel->transcribeRecording(recording);
    });
}

QString statusOnDisk(RecorderFixture &fixture, int index = 0)
{
    return fixture.savedList().at(index)[QStringLiteral("status")].toString();
}

} // namespace

/// From the stopped recording to the finished one, with every way out.
class RecorderProcessingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anAutomaticRunPassesThroughAllStatusesAndSavesEach()
    {
        RecorderFixture fixture;
        fixture.signIn();
        AppSettings::shared().setAutoSummarize(true);
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        fixture.service->answer(
            summarizeRoute, 200,
            {{QStringLiteral("summary"), QStringLiteral("## Summary\nFine.\nPARTICIPANTS: Anna")}});
        fixture.service->hold(summarizeRoute);
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        QStringList statuses;
        connect(&viewModel, &RecorderViewModel::recordingsChanged, this, [&] {
            const QString status = stringForm(viewModel.recordings().first().status);
            if (statuses.isEmpty() || statuses.last() != status)
                statuses.append(status);
        });

        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        QVERIFY(viewModel.isProcessing());
        QCOMPARE(viewModel.processingStatus(), QStringLiteral("Transcribing..."));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("transcribing"));
        // The selection keeps the older copy meanwhile.
        QCOMPARE(viewModel.selectedRecording()->status, RecordingStatus::completed);

        fixture.speech.finish(0, {QStringLiteral("Hello"), QStringLiteral("there.")});
        QVERIFY(waitUntil([&] { return fixture.service->requests(summarizeRoute).size() == 1; }));
        QVERIFY(viewModel.isProcessing());
        QCOMPARE(viewModel.processingStatus(), QStringLiteral("Creating summary..."));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("summarizing"));
        QCOMPARE(viewModel.selectedRecording()->transcriptSegments.size(), 1);
        QCOMPARE(viewModel.selectedRecording()->status, RecordingStatus::completed);
        const auto request = fixture.service->requests(summarizeRoute).first();
        QCOMPARE(request.body[QStringLiteral("transcript")].toString(),
                 QStringLiteral("[00:00] Hello there."));
        QCOMPARE(request.body[QStringLiteral("language")].toString(), QStringLiteral("en"));

        fixture.service->release(summarizeRoute);
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.processingStatus(), QString());
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("completed"));
        QCOMPARE(viewModel.selectedRecording()->summary, std::optional(QStringLiteral("## Summary\nFine.")));
        QCOMPARE(viewModel.selectedRecording()->participants.first().name, QStringLiteral("Anna"));
        QVERIFY(!viewModel.showError());
        QCOMPARE(statuses, QStringList({QStringLiteral("transcribing"), QStringLiteral("completed"),
                                        QStringLiteral("summarizing"), QStringLiteral("completed")}));
    }

    void aUserOfTheFreePlanEndsWithATranscriptAndNoMessage()
    {
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("free")}});
        AppSettings::shared().setAutoSummarize(true);
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("completed"));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
        QVERIFY(!viewModel.recordings().first().summary);
        QVERIFY(!viewModel.showError());
        QVERIFY(fixture.service->requests(summarizeRoute).isEmpty());
    }

    void theRecogniserGetsTheLanguageOfTheSettings()
    {
        RecorderFixture fixture;
        AppSettings::shared().setTranscriptionLanguage(TranscriptionLanguage::german);
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        QCOMPARE(fixture.speech.locales(), QStringList({QStringLiteral("de-DE")}));
        fixture.speech.finish(0, {});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
    }

    void refusedSpeechRecognitionFailsAndLeavesTheStatusText_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("statusText");
        QTest::newRow("English") << AppLanguage::english
                                 << QStringLiteral("Speech recognition not authorized.")
                                 << QStringLiteral("Transcribing...");
        QTest::newRow("German") << AppLanguage::german << QStringLiteral("Spracherkennung nicht autorisiert.")
                                << QStringLiteral("Transkribiere...");
    }

    void refusedSpeechRecognitionFailsAndLeavesTheStatusText()
    {
        QFETCH(const AppLanguage, language);
        QFETCH(const QString, message);
        QFETCH(const QString, statusText);
        RecorderFixture fixture;
        AppSettings::shared().setAppLanguage(language);
        fixture.authorization->speech = AuthorizationStatus::denied;
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QCOMPARE(viewModel.errorMessage(), std::optional(message));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
        QVERIFY(!viewModel.isProcessing());
        QCOMPARE(viewModel.processingStatus(), statusText);
        QCOMPARE(fixture.speech.started(), 0);
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
    }

    void aFailedRecognitionIsToldAndKeepsTheOlderTranscript()
    {
        RecorderFixture fixture;
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        fixture.speech.fail(0, 5, QStringLiteral("the engine broke"));
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QCOMPARE(viewModel.errorMessage(),
                 std::optional(QStringLiteral("Transcription failed: the engine broke")));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
        QVERIFY(!viewModel.isProcessing());
        QCOMPARE(viewModel.processingStatus(), QString());
        QCOMPARE(viewModel.recordings().first().transcriptSegments.first().text, QStringLiteral("old words"));
        // After a failure the selection keeps the older copy.
        QCOMPARE(viewModel.selectedRecording()->status, RecordingStatus::completed);
    }

    void aLanguageWithoutRecogniserIsTold()
    {
        RecorderFixture fixture;
        Platform::shared().createSpeechRecognizer = [](const QString &) { return nullptr; };
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QCOMPARE(viewModel.errorMessage(),
                 std::optional(QStringLiteral("Speech recognition is not available for this language.")));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
    }

    void anEntryThatIsGoneAtTheStartHasNoEffect()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        QSignalSpy processing(&viewModel, &RecorderViewModel::isProcessingChanged);
        test::await(viewModel.transcribeRecording(finishedEntry(QStringLiteral("gone"))));
        test::await(viewModel.summarizeRecording(transcribedEntry(QStringLiteral("gone"))));
        QVERIFY(processing.isEmpty());
        QVERIFY(!viewModel.showError());
        QVERIFY(fixture.service->requests(summarizeRoute).isEmpty());
    }

    void aSummaryAskedForWithoutTheRightChangesNothing_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QString>("message");
        QTest::newRow("English") << AppLanguage::english
                                 << QStringLiteral("AI summary is a premium feature.");
        QTest::newRow("German") << AppLanguage::german
                                << QStringLiteral("KI-Zusammenfassung ist eine Premium-Funktion.");
    }

    void aSummaryAskedForWithoutTheRightChangesNothing()
    {
        QFETCH(const AppLanguage, language);
        QFETCH(const QString, message);
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("free")},
                        {QStringLiteral("role"), QStringLiteral("admin")}});
        AppSettings::shared().setAppLanguage(language);
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        QCOMPARE(viewModel.errorMessage(), std::optional(message));
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::completed);
        QVERIFY(!viewModel.isProcessing());
    }

    void anEmptyTranscriptFailsWithItsText_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QString>("message");
        QTest::newRow("English") << AppLanguage::english << QStringLiteral("No transcript available.");
        QTest::newRow("German") << AppLanguage::german << QStringLiteral("Kein Transkript vorhanden.");
    }

    void anEmptyTranscriptFailsWithItsText()
    {
        QFETCH(const AppLanguage, language);
        QFETCH(const QString, message);
        RecorderFixture fixture;
        fixture.signIn();
        AppSettings::shared().setAppLanguage(language);
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        QCOMPARE(viewModel.errorMessage(), std::optional(message));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
        QVERIFY(viewModel.recordings().first().transcriptSegments.isEmpty());
        QVERIFY(!viewModel.isProcessing());
        QVERIFY(fixture.service->requests(summarizeRoute).isEmpty());
    }

    void aRefusalOfTheServiceIsToldInItsWordsAndKeepsTheOlderSummary()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(summarizeRoute, 403,
                                {{QStringLiteral("error"), QStringLiteral("Nicht in Ihrem Plan")}});
        Recording entry = transcribedEntry(QStringLiteral("a"));
        entry.summary = QStringLiteral("old summary");
        fixture.writeList({entry});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("Nicht in Ihrem Plan")));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
        QCOMPARE(viewModel.recordings().first().summary, std::optional(QStringLiteral("old summary")));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
        QCOMPARE(viewModel.processingStatus(), QString());
    }

    void aLostConnectionIsToldInThePlatformsWords()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(summarizeRoute, 0, {});
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("The connection was lost.")));
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("failed"));
    }

    void participantsOfTheSummaryAreMergedWithoutRegardToCase()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(summarizeRoute, 200,
                                {{QStringLiteral("summary"),
                                  QStringLiteral("Text\nPARTICIPANTS: Anna, Ben, BEN, Özgür, ÖZGÜR")}});
        Recording entry = transcribedEntry(QStringLiteral("a"));
        const Participant anna{QUuid::createUuid(), QStringLiteral("anna"), false};
        entry.participants = {anna};
        fixture.writeList({entry});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        const QList<Participant> participants = viewModel.recordings().first().participants;
        QCOMPARE(participants.size(), 3);
        QCOMPARE(participants.at(0), anna);
        QCOMPARE(participants.at(1).name, QStringLiteral("Ben"));
        QVERIFY(participants.at(1).isDetectedByAI);
        QCOMPARE(participants.at(2).name, QStringLiteral("Özgür"));
        QCOMPARE(viewModel.recordings().first().summary, std::optional(QStringLiteral("Text")));
    }

    void aSummaryOfNothingButNamesIsPresentAndEmpty()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(summarizeRoute, 200,
                                {{QStringLiteral("summary"), QStringLiteral("PARTICIPANTS: Anna")}});
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        test::await(viewModel.summarizeRecording(viewModel.recordings().first()));
        QCOMPARE(viewModel.recordings().first().summary, std::optional(QString(QLatin1String(""))));
        QVERIFY(fixture.savedList().at(0).toObject().contains(QStringLiteral("summary")));
    }

    void theTranscriptThatIsSentIsTheArguments()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(summarizeRoute, 200, {{QStringLiteral("summary"), QStringLiteral("s")}});
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        Recording older = viewModel.recordings().first();
        older.transcriptSegments.first().text = QStringLiteral("even older words");
        test::await(viewModel.summarizeRecording(older));
        QCOMPARE(
            fixture.service->requests(summarizeRoute).first().body[QStringLiteral("transcript")].toString(),
            QStringLiteral("[00:01] even older words"));
    }

    void aRepeatedTranscriptionReplacesTheResult()
    {
        RecorderFixture fixture;
        fixture.writeList({transcribedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        fixture.speech.finish(0, {QStringLiteral("new"), QStringLiteral("words")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
        QCOMPARE(viewModel.recordings().first().transcriptSegments.first().text, QStringLiteral("new words"));
    }

    void editsMadeMeanwhileSurviveTheResult()
    {
        RecorderFixture fixture;
        fixture.signIn();
        AppSettings::shared().setAutoSummarize(true);
        fixture.service->answer(summarizeRoute, 200,
                                {{QStringLiteral("summary"), QStringLiteral("s\nPARTICIPANTS: Ben")}});
        fixture.service->hold(summarizeRoute);
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        viewModel.renameRecording(*viewModel.selectedRecording(), QStringLiteral("renamed"));
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QVERIFY(waitUntil([&] { return fixture.service->requests(summarizeRoute).size() == 1; }));
        viewModel.addParticipant(*viewModel.selectedRecording(), QStringLiteral("Anna"));
        QCOMPARE(fixture.savedList().at(0)[QStringLiteral("participants")].toArray().size(), 1);
        fixture.service->release(summarizeRoute);
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        const QJsonObject saved = fixture.savedList().at(0).toObject();
        QCOMPARE(saved[QStringLiteral("title")].toString(), QStringLiteral("renamed"));
        QCOMPARE(saved[QStringLiteral("participants")].toArray().size(), 2);
        QCOMPARE(saved[QStringLiteral("summary")].toString(), QStringLiteral("s"));
        QCOMPARE(saved[QStringLiteral("status")].toString(), QStringLiteral("completed"));
    }

    void twoRunsInterleaveAndTheFirstToFinishClearsTheFlag()
    {
        RecorderFixture fixture;
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 2; }));
        fixture.speech.finish(0, {QStringLiteral("first")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        fixture.speech.finish(1, {QStringLiteral("second")});
        QVERIFY(waitUntil([&] {
            return viewModel.recordings().first().transcriptSegments.first().text == QStringLiteral("second");
        }));
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::completed);
    }

    void aRecordingStartedMeanwhileGetsTheResultAtItsPosition()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.recordings().at(0).transcriptSegments.size(), 1);
        QCOMPARE(viewModel.recordings().at(0).status, RecordingStatus::completed);
        QCOMPARE(viewModel.recordings().at(1).title, QStringLiteral("a"));
        QCOMPARE(viewModel.recordings().at(1).status, RecordingStatus::transcribing);
        QVERIFY(viewModel.recordings().at(1).transcriptSegments.isEmpty());
        viewModel.stopRecording();
    }

    void aRemovedEntryLeavesTheResultToWhateverHasMovedThere()
    {
        RecorderFixture fixture;
        fixture.writeList({finishedEntry(QStringLiteral("a"), 0), finishedEntry(QStringLiteral("b"), 1)});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        viewModel.deleteRecording(viewModel.recordings().first());
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.recordings().size(), 1);
        QCOMPARE(viewModel.recordings().first().title, QStringLiteral("b"));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
    }

    void transcriptionWaitsUntilTheFileIsFinished()
    {
        RecorderFixture fixture;
        fixture.signIn();
        AppSettings::shared().setAutoTranscribe(true);
        std::mutex disk;
        std::unique_lock hung(disk);
        fixture.whenFileIsFinished = [&disk] { const std::lock_guard answer(disk); };
        RecorderViewModel &viewModel = fixture.start();
        fixture.record();
        QVERIFY(!viewModel.isRecording());
        QVERIFY(waitUntil([&] { return viewModel.isProcessing(); }));
        QVERIFY(waitUntil([&] { return generalPool().activeThreadCount() == 0; }));
        QCoreApplication::processEvents();
        QCOMPARE(fixture.speech.started(), 0);
        hung.unlock();
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
    }

    void aPositionBeyondTheEndEndsTheProcess()
    {
        QProcess program;
        program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/ShrunkenListProgram"), {});
        QVERIFY(program.waitForFinished(60'000));
        QCOMPARE(program.exitStatus(), QProcess::CrashExit);
        QVERIFY(
            program.readAllStandardError().contains("a remembered position lies beyond the end of the list"));
    }

    void aViewModelThatIsGoneLeavesItsTasksInPeace()
    {
        RecorderFixture fixture;
        fixture.writeList({finishedEntry(QStringLiteral("a"))});
        RecorderViewModel &viewModel = fixture.start();
        transcribe(fixture, viewModel.recordings().first());
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        fixture.viewModel.reset();
        fixture.speech.finish(0, {QStringLiteral("Hello")});
        QCoreApplication::processEvents();
        QCOMPARE(statusOnDisk(fixture), QStringLiteral("transcribing"));
    }
};

QTEST_GUILESS_MAIN(RecorderProcessingTest)
#include "RecorderProcessingTest.moc"
