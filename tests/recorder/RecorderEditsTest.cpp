#include "recorderfakes/RecorderFixture.h"

#include "settings/AppSettings.h"
#include "store/StorageService.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;
using test::waitUntil;

namespace {

Recording entryNamed(const QString &title, int secondsAgo)
{
    Recording recording;
    recording.title = title;
    recording.date =
        QDateTime::fromString(QStringLiteral("2026-03-01T10:00:00Z"), Qt::ISODate).addSecs(-secondsAgo);
    recording.audioFileName = title + QStringLiteral(".m4a");
    recording.status = RecordingStatus::completed;
    return recording;
}

} // namespace

/// What the user changes in a stored recording.
class RecorderEditsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void renamingTheSelectedRecordingChangesListFileAndSelection()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0), entryNamed(QStringLiteral("b"), 1)});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().at(1));
        viewModel.renameRecording(*viewModel.selectedRecording(), QStringLiteral("new"));
        QCOMPARE(viewModel.recordings().at(1).title, QStringLiteral("new"));
        QCOMPARE(viewModel.selectedRecording()->title, QStringLiteral("new"));
        QCOMPARE(fixture.savedList().at(1)[QStringLiteral("title")].toString(), QStringLiteral("new"));
        viewModel.renameRecording(*viewModel.selectedRecording(), QString());
        QCOMPARE(viewModel.recordings().at(1).title, QString());
    }

    void renamingAnotherRecordingLeavesTheSelectionAlone()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0), entryNamed(QStringLiteral("b"), 1)});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().at(0));
        QSignalSpy selections(&viewModel, &RecorderViewModel::selectedRecordingChanged);
        viewModel.renameRecording(viewModel.recordings().at(1), QStringLiteral("new"));
        QCOMPARE(fixture.savedList().at(1)[QStringLiteral("title")].toString(), QStringLiteral("new"));
        QCOMPARE(viewModel.selectedRecording()->title, QStringLiteral("a"));
        QVERIFY(selections.isEmpty());
    }

    void aTitleThatBeginsWithAByteOrderMarkSurvivesTheFile()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0)});
        RecorderViewModel &viewModel = fixture.start();
        const QString title = QString(QChar(0xFEFF)) + QStringLiteral("plan");
        viewModel.renameRecording(viewModel.recordings().first(), title);
        QCOMPARE(StorageService::shared().loadRecordings().first().title, title);
    }

    void anEntryThatIsGoneChangesAndSavesNothing()
    {
        RecorderFixture fixture;
        RecorderViewModel &viewModel = fixture.start();
        const Recording gone = entryNamed(QStringLiteral("gone"), 0);
        viewModel.renameRecording(gone, QStringLiteral("x"));
        viewModel.addParticipant(gone, QStringLiteral("x"));
        viewModel.removeParticipant(gone, QUuid::createUuid());
        viewModel.updateParticipant(gone, QUuid::createUuid(), QStringLiteral("x"));
        StorageService::shared().waitUntilSaved();
        QVERIFY(!QFile::exists(fixture.folder.path() + QStringLiteral("/recordings.json")));
    }

    void theSameNameTwiceGivesTwoParticipants()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0)});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        viewModel.addParticipant(*viewModel.selectedRecording(), QStringLiteral(" Anna "));
        viewModel.addParticipant(*viewModel.selectedRecording(), QStringLiteral(" Anna "), true);
        const QList<Participant> participants = viewModel.selectedRecording()->participants;
        QCOMPARE(participants.size(), 2);
        QCOMPARE(participants.at(0).name, QStringLiteral(" Anna ")); // as given
        QVERIFY(participants.at(0).id != participants.at(1).id);
        QVERIFY(!participants.at(0).isDetectedByAI);
        QVERIFY(participants.at(1).isDetectedByAI);
        QCOMPARE(fixture.savedList().at(0)[QStringLiteral("participants")].toArray().size(), 2);
    }

    void removingParticipantsDownToNone()
    {
        RecorderFixture fixture;
        Recording entry = entryNamed(QStringLiteral("a"), 0);
        entry.participants = {{QUuid::createUuid(), QStringLiteral("Anna"), false}};
        fixture.writeList({entry});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        QSignalSpy selections(&viewModel, &RecorderViewModel::selectedRecordingChanged);
        viewModel.removeParticipant(*viewModel.selectedRecording(), QUuid::createUuid());
        QCOMPARE(viewModel.recordings().first().participants.size(), 1);
        QCOMPARE(selections.size(), 1); // an unknown one goes the usual way
        viewModel.removeParticipant(*viewModel.selectedRecording(), entry.participants.first().id);
        QVERIFY(viewModel.selectedRecording()->participants.isEmpty());
        QCOMPARE(fixture.savedList().at(0)[QStringLiteral("participants")].toArray().size(), 0);
    }

    void anExportAfterTheLastParticipantIsGoneNamesNobody()
    {
        RecorderFixture fixture;
        fixture.signIn();
        Recording entry = entryNamed(QStringLiteral("a"), 0);
        entry.participants = {{QUuid::createUuid(), QStringLiteral("Anna"), false}};
        fixture.writeList({entry});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        const auto exported = [&] {
            viewModel.exportRecording(*viewModel.selectedRecording());
            const QString target = fixture.folder.filePath(QString::number(fixture.panels->panels.size()) +
                                                           QStringLiteral(".md"));
            fixture.panels->panels.last().completion(PanelResponse::ok, target);
            const auto text = [&target] {
                QFile file(target);
                return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
            };
            return waitUntil([&] { return !text().isEmpty(); }) ? text() : QByteArray();
        };
        QVERIFY(exported().contains("Anna"));
        viewModel.removeParticipant(*viewModel.selectedRecording(), entry.participants.first().id);
        const QByteArray text = exported();
        QVERIFY(text.startsWith("# a\n"));
        QVERIFY(!text.contains("Anna") && !text.contains("Participants"));
    }

    void anEditedNameStaysMarkedAsDetected()
    {
        RecorderFixture fixture;
        Recording entry = entryNamed(QStringLiteral("a"), 0);
        entry.participants = {{QUuid::createUuid(), QStringLiteral("Anna"), true}};
        fixture.writeList({entry});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        viewModel.updateParticipant(*viewModel.selectedRecording(), entry.participants.first().id,
                                    QStringLiteral("Anne"));
        QCOMPARE(viewModel.selectedRecording()->participants.first().name, QStringLiteral("Anne"));
        QVERIFY(viewModel.selectedRecording()->participants.first().isDetectedByAI);
    }

    void updatingAnUnknownParticipantNeitherSavesNorRefreshes()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0)});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        QVERIFY(QFile::remove(fixture.folder.path() + QStringLiteral("/recordings.json")));
        QSignalSpy selections(&viewModel, &RecorderViewModel::selectedRecordingChanged);
        viewModel.updateParticipant(*viewModel.selectedRecording(), QUuid::createUuid(), QStringLiteral("x"));
        StorageService::shared().waitUntilSaved();
        QVERIFY(selections.isEmpty());
        QVERIFY(!QFile::exists(fixture.folder.path() + QStringLiteral("/recordings.json")));
    }

    void deletingTheSelectedRecordingClearsTheSelectionAndTellsOnce()
    {
        RecorderFixture fixture;
        const Recording entry = entryNamed(QStringLiteral("a"), 0);
        fixture.writeList({entry, entryNamed(QStringLiteral("b"), 1)});
        const QString audio = StorageService::shared().audioFileURL(entry);
        QFile file(audio);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        QSignalSpy lists(&viewModel, &RecorderViewModel::recordingsChanged);
        viewModel.deleteRecording(*viewModel.selectedRecording());
        QVERIFY(!viewModel.selectedRecording());
        QCOMPARE(lists.size(), 1);
        QCOMPARE(viewModel.recordings().size(), 1);
        QVERIFY(!QFile::exists(audio));
        QCOMPARE(fixture.savedList().size(), 1);
    }

    void deletingAnotherRecordingKeepsTheSelection()
    {
        RecorderFixture fixture;
        fixture.writeList({entryNamed(QStringLiteral("a"), 0), entryNamed(QStringLiteral("b"), 1)});
        RecorderViewModel &viewModel = fixture.start();
        viewModel.setSelectedRecording(viewModel.recordings().first());
        viewModel.deleteRecording(viewModel.recordings().at(1));
        QCOMPARE(viewModel.selectedRecording()->title, QStringLiteral("a"));
    }

    void exportWithoutTheRightOpensNoPanel()
    {
        RecorderFixture fixture;
        fixture.signIn({{QStringLiteral("subscription_tier"), QStringLiteral("free")},
                        {QStringLiteral("role"), QStringLiteral("admin")}});
        RecorderViewModel &viewModel = fixture.start();
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        viewModel.exportRecording(entryNamed(QStringLiteral("a"), 0));
        QCOMPARE(viewModel.errorMessage(),
                 std::optional(QStringLiteral("Export ist eine Premium-Funktion.")));
        AppSettings::shared().setAppLanguage(AppLanguage::english);
        viewModel.exportRecording(entryNamed(QStringLiteral("a"), 0));
        QCOMPARE(viewModel.errorMessage(), std::optional(QStringLiteral("Export is a premium feature.")));
        QVERIFY(fixture.panels->panels.isEmpty());
    }

    void anExportWritesTheCopyThatThePanelWasOpenedFor()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.writeList({entryNamed(QStringLiteral("a"), 0)});
        RecorderViewModel &viewModel = fixture.start();
        Recording shown = viewModel.recordings().first();
        shown.title = QStringLiteral("Q1/Q2: plan");
        viewModel.exportRecording(shown);
        QCOMPARE(fixture.panels->panels.size(), 1);
        const auto &panel = fixture.panels->panels.first();
        QCOMPARE(panel.request.nameFieldStringValue, QStringLiteral("Q1/Q2: plan.md"));
        QCOMPARE(panel.request.allowedContentTypes, QList<ContentType>({ContentType::plainText}));
        viewModel.renameRecording(shown, QStringLiteral("renamed meanwhile"));
        const QString target = fixture.folder.path() + QStringLiteral("/out.md");
        panel.completion(PanelResponse::ok, target);
        QVERIFY(waitUntil([&] { return QFile::exists(target); }));
        QFile file(target);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().startsWith("# Q1/Q2: plan\nDate: "));
    }

    void aCancelledPanelAndAFileThatCannotBeWrittenLeaveNoMessage()
    {
        RecorderFixture fixture;
        fixture.signIn();
        RecorderViewModel &viewModel = fixture.start();
        viewModel.exportRecording(entryNamed(QStringLiteral("a"), 0));
        fixture.panels->panels.first().completion(PanelResponse::cancel, std::nullopt);
        viewModel.exportRecording(entryNamed(QStringLiteral("a"), 0));
        fixture.panels->panels.last().completion(PanelResponse::ok, std::nullopt);
        viewModel.exportRecording(entryNamed(QStringLiteral("a"), 0));
        fixture.panels->panels.last().completion(PanelResponse::ok,
                                                 fixture.folder.path() + QStringLiteral("/missing/out.md"));
        // The write is through when the pool is idle and what it has posted is delivered.
        QCoreApplication::processEvents();
        QVERIFY(generalPool().waitForDone(10'000));
        QCoreApplication::processEvents();
        QVERIFY(!viewModel.showError());
        QVERIFY(QDir(fixture.folder.path()).entryList({QStringLiteral("*.md")}).isEmpty());
    }

    void aPanelThatOutlivesTheViewModelWritesNothing()
    {
        RecorderFixture fixture;
        fixture.signIn();
        fixture.start().exportRecording(entryNamed(QStringLiteral("a"), 0));
        fixture.viewModel.reset();
        const QString target = fixture.folder.path() + QStringLiteral("/out.md");
        fixture.panels->panels.first().completion(PanelResponse::ok, target);
        QCoreApplication::processEvents();
        QVERIFY(generalPool().waitForDone(10'000));
        QVERIFY(!QFile::exists(target));
    }
};

QTEST_GUILESS_MAIN(RecorderEditsTest)
#include "RecorderEditsTest.moc"
