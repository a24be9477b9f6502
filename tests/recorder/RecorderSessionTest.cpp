#include "recorderfakes/RecorderFixture.h"

#include "service/AuthService.h"
#include "settings/AppSettings.h"
#include "store/StorageService.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;
using test::waitUntil;

/// A session from the press of the button to the finished entry.
class RecorderSessionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theListIsThereNewestFirstAtConstruction()
    {
        RecorderFixture fixture;
        Recording older;
        older.title = QStringLiteral("older");
        older.date = QDateTime::fromString(QStringLiteral("2026-01-01T10:00:00Z"), Qt::ISODate);
        Recording newer = older;
        newer.id = QUuid::createUuid();
        newer.title = QStringLiteral("newer");
        newer.date = older.date.addSecs(1);
        fixture.writeList({older, newer});
        RecorderViewModel &viewModel = fixture.start();
        QCOMPARE(viewModel.recordings().size(), 2);
        QCOMPARE(viewModel.recordings().at(0).title, QStringLiteral("newer"));
        QVERIFY(!viewModel.selectedRecording());
        QVERIFY(!viewModel.isRecording());
        QVERIFY(!viewModel.errorMessage());
    }

    void aListThatDoesNotLoadIsEmpty()
    {
        RecorderFixture fixture;
        QFile file(fixture.folder.path() + QStringLiteral("/recordings.json"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[{");
        file.close();
        QVERIFY(fixture.start().recordings().isEmpty());
    }

    void withoutTheRightToRecordNothingIsCreated_data()
    {
        QTest::addColumn<AppLanguage>("language");
        QTest::addColumn<QString>("message");
        QTest::newRow("English") << AppLanguage::english
                                 << QStringLiteral("Recording limit reached. Please upgrade your plan.");
        QTest::newRow("German") << AppLanguage::german
                                << QStringLiteral("Aufnahme-Limit erreicht. Bitte upgrade dein Abo.");
    }

    void withoutTheRightToRecordNothingIsCreated()
    {
        QFETCH(const AppLanguage, language);
        QFETCH(const QString, message);
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("free")},
                        {QStringLiteral("recordings_count"), 3}});
        AppSettings::shared().setAppLanguage(language);
        RecorderViewModel &viewModel = fixture.start();
        viewModel.toggleRecording();
        QVERIFY(viewModel.showError());
        QCOMPARE(viewModel.errorMessage(), std::optional(message));
        QVERIFY(viewModel.recordings().isEmpty());
        QVERIFY(!viewModel.selectedRecording());
        QVERIFY(!QFile::exists(fixture.folder.path() + QStringLiteral("/recordings.json")));
    }

    void anErrorIsReplacedByANewerOneAndOutlivesItsAlert()
    {
        RecorderFixture fixture;
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording(); // nobody is signed in
        QVERIFY(viewModel.showError());
        viewModel.setShowError(false);
        QCOMPARE(viewModel.errorMessage(),
                 std::optional(QStringLiteral("Recording limit reached. Please upgrade your plan.")));
        viewModel.exportRecording(Recording());
        QVERIFY(viewModel.showError());
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("Export is a premium feature.")));
    }

    void theEntryIsCreatedSelectedAndOnTheDiskBeforeCaptureStarts()
    {
        RecorderFixture fixture;
        fixture.signIn();
        QJsonArray onDiskAtStart;
        fixture.whenEngineIsMade = [&] { onDiskAtStart = fixture.listOnDisk(); };
        RecorderViewModel &viewModel = fixture.start();
        const QDateTime before = QDateTime::currentDateTimeUtc();
        viewModel.toggleRecording();

        // All of this before the function has returned, and capture has not begun.
        QCOMPARE(viewModel.recordings().size(), 1);
        const Recording entry = viewModel.recordings().first();
        QVERIFY(viewModel.selectedRecording());
        QCOMPARE(viewModel.selectedRecording()->id, entry.id);
        QCOMPARE(entry.status, RecordingStatus::recording);
        QCOMPARE(entry.duration, 0.0);
        QVERIFY(entry.date >= before && entry.date <= QDateTime::currentDateTimeUtc());
        QVERIFY2(QRegularExpression(QStringLiteral("^Meeting \\d\\d\\.\\d\\d\\.\\d{4} \\d\\d:\\d\\d$"))
                     .match(entry.title)
                     .hasMatch(),
                 qPrintable(entry.title));
        QVERIFY(
            QRegularExpression(QStringLiteral("^meeting_\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d\\.m4a$"))
                .match(entry.audioFileName)
                .hasMatch());
        QVERIFY(entry.transcriptSegments.isEmpty() && !entry.summary && entry.participants.isEmpty());
        QVERIFY(!viewModel.isRecording());
        QVERIFY(onDiskAtStart.isEmpty());

        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        QCOMPARE(onDiskAtStart.size(), 1);
        QCOMPARE(onDiskAtStart.at(0)[QStringLiteral("status")].toString(), QStringLiteral("recording"));
        QVERIFY(QFile::exists(fixture.folder.path() + QStringLiteral("/Recordings/") + entry.audioFileName));
        viewModel.stopRecording();
    }

    void aStopCompletesTheEntryWithWholeTicksAndReturnsAtOnce()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        QCOMPARE(viewModel.formattedDuration(), QStringLiteral("00:00"));
        QVERIFY(waitUntil([&] { return viewModel.recordingDuration() >= 2; }));
        // Something between the second and the third tick: only whole ticks count.
        viewModel.toggleRecording();
        QVERIFY(!viewModel.isRecording());
        QCOMPARE(viewModel.recordingDuration(), 2.0);
        const Recording entry = viewModel.recordings().first();
        QCOMPARE(entry.duration, 2.0);
        QCOMPARE(entry.status, RecordingStatus::completed);
        QCOMPARE(viewModel.selectedRecording()->status, RecordingStatus::completed);
        QCOMPARE(viewModel.selectedRecording()->duration, 2.0);
        const QJsonArray saved = fixture.savedList();
        QCOMPARE(saved.at(0)[QStringLiteral("status")].toString(), QStringLiteral("completed"));
        QCOMPARE(saved.at(0)[QStringLiteral("duration")].toDouble(), 2.0);
        // No tick comes any more; the next start begins at 0.
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        QCOMPARE(viewModel.recordingDuration(), 0.0);
        viewModel.stopRecording();
    }

    void aStoppedEntryStaysCompletedWithoutAutomaticTranscription()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        fixture.record();
        QVERIFY(waitUntil(
            [&] { return !fixture.service->requests(QStringLiteral("POST /auth/record")).isEmpty(); }));
        QCOMPARE(fixture.speech.started(), 0);
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::completed);
        QVERIFY(viewModel.recordings().first().transcriptSegments.isEmpty());
    }

    void aStopStartsTheTranscriptionIfTheSettingsSaySo()
    {
        RecorderFixture fixture;
        fixture.signIn();
        AppSettings::shared().setAutoTranscribe(true);
        RecorderViewModel &viewModel = fixture.start();
        fixture.record();
        // Never inside the stop itself.
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::completed);
        QVERIFY(waitUntil([&] { return fixture.speech.started() == 1; }));
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::transcribing);
        QCOMPARE(fixture.speech.paths().first(), fixture.folder.path() + QStringLiteral("/Recordings/") +
                                                     viewModel.recordings().first().audioFileName);
        fixture.speech.finish(0, {QStringLiteral("Hello.")});
        QVERIFY(waitUntil([&] { return !viewModel.isProcessing(); }));
        QCOMPARE(viewModel.recordings().first().transcriptSegments.size(), 1);
    }

    void theUsageIsLoggedWithTitleAndDurationAndTheProfileFetchedAnew()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        const auto refreshes = [&] {
            return fixture.service->requests(QStringLiteral("GET /auth/me")).size();
        };
        const qsizetype before = refreshes();
        fixture.record();
        viewModel.renameRecording(viewModel.recordings().first(), QStringLiteral("Weekly"));
        QVERIFY(waitUntil([&] { return refreshes() == before + 1; }));
        const auto logged = fixture.service->requests(QStringLiteral("POST /auth/record"));
        QCOMPARE(logged.size(), 1);
        QCOMPARE(logged.first().body[QStringLiteral("title")].toString(), QStringLiteral("Weekly"));
        QCOMPARE(logged.first().body[QStringLiteral("duration")].toDouble(), 1.0);
        QCOMPARE(logged.first().body.size(), 2);
    }

    void aLogThatFailsLeavesNoTraceButTheProfileIsFetched()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.service->answer(QStringLiteral("POST /auth/record"), 500, {});
        RecorderViewModel &viewModel = fixture.start();
        const auto refreshes = [&] {
            return fixture.service->requests(QStringLiteral("GET /auth/me")).size();
        };
        const qsizetype before = refreshes();
        fixture.record();
        QVERIFY(waitUntil([&] { return refreshes() == before + 1; }));
        QCOMPARE(fixture.service->requests(QStringLiteral("POST /auth/record")).size(), 1);
        QVERIFY(!viewModel.showError());
    }

    void theFreeLimitCountsWhatTheServiceHasLogged()
    {
        RecorderFixture fixture;
        const QJsonObject free{{QStringLiteral("subscription_tier"), QStringLiteral("free")},
                               {QStringLiteral("recordings_count"), 2}};
        fixture.signIn(free);
        fixture.service->answer(QStringLiteral("POST /auth/record"), 0, {}); // the connection fails
        RecorderViewModel &viewModel = fixture.start();
        const auto refreshes = [&] {
            return fixture.service->requests(QStringLiteral("GET /auth/me")).size();
        };
        const qsizetype before = refreshes();
        fixture.record();
        QVERIFY(waitUntil([&] { return refreshes() == before + 1; }));
        QVERIFY(AuthService::shared().canRecord());
        fixture.record();
        QCOMPARE(viewModel.recordings().size(), 2);
    }

    void aFailedStartTellsWhyAndTakesTheEntryOutAgain()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.hasMicrophone = false;
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        const Recording entry = viewModel.recordings().first();
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("No microphone found.")));
        QVERIFY(viewModel.recordings().isEmpty());
        QVERIFY(!viewModel.isRecording());
        QCOMPARE(fixture.savedList().size(), 0);
        QVERIFY(QFile::exists(fixture.folder.path() + QStringLiteral("/recordings.json")));
        // The selection is stale, and edits of it find nothing.
        QVERIFY(viewModel.selectedRecording());
        QCOMPARE(viewModel.selectedRecording()->id, entry.id);
        viewModel.renameRecording(*viewModel.selectedRecording(), QStringLiteral("changed"));
        viewModel.addParticipant(*viewModel.selectedRecording(), QStringLiteral("Anna"));
        QVERIFY(viewModel.recordings().isEmpty());
        QCOMPARE(viewModel.selectedRecording()->title, entry.title);
        QVERIFY(viewModel.selectedRecording()->participants.isEmpty());
        // A stop now finds the dead id and changes nothing.
        viewModel.stopRecording();
        QVERIFY(viewModel.recordings().isEmpty());
        QVERIFY(fixture.service->requests(QStringLiteral("POST /auth/record")).isEmpty());
    }

    void theFileOfAStartThatFailsLaterIsLeftBehind()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.microphoneStarts = false;
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        const QString path = fixture.folder.path() + QStringLiteral("/Recordings/") +
                             viewModel.recordings().first().audioFileName;
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("The microphone is in use.")));
        QVERIFY(viewModel.recordings().isEmpty());
        QCOMPARE(fixture.savedList().size(), 0);
        QVERIFY2(QFile::exists(path), "sound that may be in it is not ours to throw away");
    }

    void aFileThatCannotBeCreatedIsTold()
    {
        RecorderFixture fixture;
        fixture.signIn();
        // A file stands where the folder for audio should be.
        QFile obstacle(fixture.folder.path() + QStringLiteral("/Recordings"));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.showError(); }));
        QVERIFY(!viewModel.errorMessage()->isEmpty());
        QVERIFY(viewModel.recordings().isEmpty());
    }

    void aSecondPressWhileCaptureStartsMakesASecondEntry()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.microphoneGate.emplace();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.toggleRecording();
        const QUuid first = viewModel.recordings().first().id;
        viewModel.toggleRecording();
        QCOMPARE(viewModel.recordings().size(), 2);
        const QUuid second = viewModel.recordings().first().id;
        QVERIFY(first != second);
        QCOMPARE(viewModel.selectedRecording()->id, second);
        fixture.microphoneGate->resume();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        viewModel.stopRecording();
        // The session's id had moved to the newer entry.
        QCOMPARE(viewModel.recordings().at(0).status, RecordingStatus::completed);
        QCOMPARE(viewModel.recordings().at(1).status, RecordingStatus::recording);
    }

    void stoppingAfterTheEntryWasDeletedChangesNoEntry()
    {
        RecorderFixture fixture;
        fixture.signIn();
        Recording other;
        other.title = QStringLiteral("other");
        other.status = RecordingStatus::failed;
        fixture.writeList({other});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        viewModel.deleteRecording(viewModel.recordings().first());
        QVERIFY(!viewModel.selectedRecording());
        QVERIFY(viewModel.isRecording());
        viewModel.stopRecording();
        QVERIFY(!viewModel.isRecording());
        QCOMPARE(viewModel.recordings().size(), 1);
        QCOMPARE(viewModel.recordings().first().status, RecordingStatus::failed);
        QCoreApplication::processEvents();
        QVERIFY(fixture.service->requests(QStringLiteral("POST /auth/record")).isEmpty());
        test::await(viewModel.audioCaptureService().finished());
        QVERIFY(!fixture.tap); // capture has ended
    }

    void aTitleClearedDuringTheSessionIsMadeAnewFromTheDate()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        viewModel.renameRecording(viewModel.recordings().first(), QString());
        QCOMPARE(viewModel.recordings().first().title, QString());
        viewModel.stopRecording();
        const Recording entry = viewModel.recordings().first();
        QCOMPARE(entry.title, QStringLiteral("Meeting ") + entry.formattedDate());
    }

    void levelsAreThoseOfTheCaptureService()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording() && fixture.tap; }));
        PcmBuffer loud({48000, 1}, 480);
        std::fill_n(loud.floatChannelData()[0], 480, 1.0F);
        fixture.tap(loud);
        QVERIFY(waitUntil([&] { return viewModel.audioLevel() == 1.0F; }));
        QVERIFY(waitUntil([&] { return viewModel.audioLevels().contains(1.0F); }));
        viewModel.stopRecording();
        // Not reset here: the capture service publishes the silence.
        QVERIFY(
            waitUntil([&] { return viewModel.audioLevel() == 0.0F && viewModel.audioLevels().isEmpty(); }));
    }

    void aLogoutDuringASessionLetsItGoOn()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.startRecording();
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        fixture.signOut();
        QVERIFY(waitUntil([&] { return viewModel.recordingDuration() >= 1; }));
        QVERIFY(viewModel.isRecording());
        QVERIFY(fixture.tap);
        // Another user sees the same list.
        fixture.signIn({{QStringLiteral("id"), 2}});
        QCOMPARE(viewModel.recordings().size(), 1);
        viewModel.stopRecording();
    }

    void propertiesNotifyAfterTheyHaveChanged()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        QList<bool> seen;
        connect(&viewModel, &RecorderViewModel::isRecordingChanged, this,
                [&] { seen.append(viewModel.isRecording()); });
        QSignalSpy lists(&viewModel, &RecorderViewModel::recordingsChanged);
        viewModel.startRecording();
        QCOMPARE(lists.size(), 1);
        QVERIFY(waitUntil([&] { return viewModel.isRecording(); }));
        viewModel.stopRecording();
        QCOMPARE(seen, QList<bool>({true, false}));
        QCOMPARE(lists.size(), 2);
    }
};

QTEST_GUILESS_MAIN(RecorderSessionTest)
#include "RecorderSessionTest.moc"
