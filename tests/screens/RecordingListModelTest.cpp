#include "screens/RecordingListModel.h"
#include "recorderfakes/RecorderFixture.h"
#include "settings/AppSettings.h"
#include "support/Await.h"

#include <QAbstractItemModelTester>
#include <QScopeGuard>
#include <QSet>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;

namespace {

Recording entryNamed(const QString &title, int secondsAgo)
{
    Recording recording;
    recording.title = title;
    recording.date =
        QDateTime::fromString(QStringLiteral("2026-03-01T10:00:00Z"), Qt::ISODate).addSecs(-secondsAgo);
    recording.audioFileName = QStringLiteral("sound.m4a");
    recording.status = RecordingStatus::completed;
    recording.duration = 65;
    return recording;
}

Recording withTranscript(Recording recording)
{
    TranscriptSegment segment;
    segment.text = QStringLiteral("words");
    recording.transcriptSegments.append(segment);
    return recording;
}

Recording withSummary(Recording recording)
{
    recording.summary = QStringLiteral("short");
    return recording;
}

/// A model over a list of three, watched for contradictions.
struct ListOfThree
{
    explicit ListOfThree(const QList<Recording> &entries = {entryNamed(QStringLiteral("Alpha one"), 0),
                                                            entryNamed(QStringLiteral("Beta"), 1),
                                                            entryNamed(QStringLiteral("Gamma ONE"), 2)})
    {
        fixture.writeList(entries);
        viewModel = &fixture.start();
        model = std::make_unique<RecordingListModel>(*viewModel);
        tester = std::make_unique<QAbstractItemModelTester>(
            model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }

    [[nodiscard]] QStringList titles() const
    {
        QStringList list;
        for (int row = 0; row < model->rowCount(); ++row)
            list.append(model->index(row).data(RecordingListModel::titleRole).toString());
        return list;
    }

    [[nodiscard]] QVariant data(int row, int role) const { return model->index(row).data(role); }
    /// What a menu keeps of the row that it opens on.
    [[nodiscard]] QString idOf(int row) const { return data(row, RecordingListModel::idRole).toString(); }

    /// Puts an entry above all others by a start that is going to fail, but not before events are handled.
    void insertAtTop()
    {
        fixture.hasMicrophone = false;
        viewModel->startRecording();
        QCOMPARE(viewModel->recordings().first().status, RecordingStatus::recording);
    }

    /// Lets that start fail, which takes the entry out again.
    void removeFromTop()
    {
        const qsizetype count = viewModel->recordings().size();
        QVERIFY(test::waitUntil([&] { return viewModel->recordings().size() == count - 1; }));
    }

    RecorderFixture fixture;
    RecorderViewModel *viewModel = nullptr;
    std::unique_ptr<RecordingListModel> model;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

} // namespace

class RecordingListModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rowsTellWhatTheRecordingsTell()
    {
        ListOfThree list;
        const Recording &first = list.viewModel->recordings().first();
        QCOMPARE(list.model->rowCount(), 3);
        QCOMPARE(list.data(0, RecordingListModel::titleRole), QVariant(first.title));
        QCOMPARE(list.data(0, RecordingListModel::dateRole), QVariant(first.formattedDate()));
        QCOMPARE(list.data(0, RecordingListModel::durationRole), QVariant(QStringLiteral("01:05")));
        QCOMPARE(list.data(0, RecordingListModel::statusRole), QVariant(QStringLiteral("completed")));
        QCOMPARE(list.data(0, RecordingListModel::statusTextRole), QVariant(QStringLiteral("Completed")));
    }

    void aChangeOfOneEntryIsToldForItsRowAlone()
    {
        ListOfThree list;
        QSignalSpy resets(list.model.get(), &QAbstractItemModel::modelReset);
        QSignalSpy changes(list.model.get(), &QAbstractItemModel::dataChanged);
        QSignalSpy insertions(list.model.get(), &QAbstractItemModel::rowsInserted);
        QSignalSpy removals(list.model.get(), &QAbstractItemModel::rowsRemoved);
        list.viewModel->renameRecording(list.viewModel->recordings().at(1), QStringLiteral("Delta"));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().first().toModelIndex().row(), 1);
        QCOMPARE(list.titles().at(1), QStringLiteral("Delta"));
        QCOMPARE(resets.size() + insertions.size() + removals.size(), 0);
    }

    void aDeletedEntryIsOneRemoval()
    {
        ListOfThree list;
        QSignalSpy removals(list.model.get(), &QAbstractItemModel::rowsRemoved);
        QSignalSpy counts(list.model.get(), &RecordingListModel::countChanged);
        list.model->deleteRecording(list.idOf(1));
        QCOMPARE(removals.size(), 1);
        QCOMPARE(removals.first().at(1).toInt(), 1);
        QCOMPARE(counts.size(), 1);
        QCOMPARE(list.titles(), (QStringList{QStringLiteral("Alpha one"), QStringLiteral("Gamma ONE")}));
    }

    void theSearchFindsTitlesWithoutRegardToCase()
    {
        ListOfThree list;
        list.model->setSearchText(QStringLiteral("One"));
        QCOMPARE(list.titles(), (QStringList{QStringLiteral("Alpha one"), QStringLiteral("Gamma ONE")}));
        list.model->setSearchText(QStringLiteral(" "));
        QCOMPARE(list.titles(), (QStringList{QStringLiteral("Alpha one"), QStringLiteral("Gamma ONE")}));
        list.model->setSearchText(QStringLiteral("nothing"));
        QCOMPARE(list.model->rowCount(), 0);
        list.model->setSearchText(QString());
        QCOMPARE(list.model->rowCount(), 3);
    }

    void theSearchLooksAtTitlesOnly()
    {
        ListOfThree list({withSummary(withTranscript(entryNamed(QStringLiteral("title"), 0)))});
        for (const auto *text : {u"words", u"short"}) {
            list.model->setSearchText(QStringView(text).toString());
            QCOMPARE(list.model->rowCount(), 0);
        }
    }

    void theSearchStaysWhenTheListChanges()
    {
        ListOfThree list;
        list.model->setSearchText(QStringLiteral("beta"));
        list.viewModel->renameRecording(list.viewModel->recordings().at(1), QStringLiteral("Other"));
        QCOMPARE(list.model->rowCount(), 0);
        list.viewModel->renameRecording(list.viewModel->recordings().at(0), QStringLiteral("Alphabeta"));
        QCOMPARE(list.titles(), QStringList{QStringLiteral("Alphabeta")});
    }

    void theMenuOffersWhatTheRecordingNeeds()
    {
        Recording failed = entryNamed(QStringLiteral("failed"), 3);
        failed.status = RecordingStatus::failed;
        Recording running = entryNamed(QStringLiteral("running"), 4);
        running.status = RecordingStatus::transcribing;
        ListOfThree list({entryNamed(QStringLiteral("bare"), 0),
                          withTranscript(entryNamed(QStringLiteral("transcribed"), 1)),
                          withSummary(withTranscript(entryNamed(QStringLiteral("complete"), 2))), failed,
                          running});
        const QList<bool> transcribe{true, false, false, false, false};
        const QList<bool> summarize{false, true, false, false, false};
        for (int row = 0; row < 5; ++row) {
            QCOMPARE(list.model->canTranscribe(list.idOf(row)), transcribe.at(row));
            QCOMPARE(list.model->canSummarize(list.idOf(row)), summarize.at(row));
        }
    }

    void anOpenMenuKeepsItsRecordingWhenRowsComeAndGo_data()
    {
        QTest::addColumn<bool>("isRemoved");
        QTest::newRow("a row is inserted above") << false;
        QTest::newRow("a row is removed above") << true;
    }

    void anOpenMenuKeepsItsRecordingWhenRowsComeAndGo()
    {
        QFETCH(bool, isRemoved);
        ListOfThree list({entryNamed(QStringLiteral("bare"), 0),
                          withTranscript(entryNamed(QStringLiteral("transcribed"), 1)),
                          entryNamed(QStringLiteral("third"), 2), entryNamed(QStringLiteral("last"), 3)});
        list.fixture.signIn();
        if (isRemoved)
            list.insertAtTop();
        const int top = isRemoved ? 1 : 0;
        const QString bare = list.idOf(top);
        const QString transcribed = list.idOf(top + 1);
        const QString third = list.idOf(top + 2);
        if (isRemoved)
            list.removeFromTop();
        else
            list.insertAtTop();

        QVERIFY(list.model->canTranscribe(bare));
        QVERIFY(!list.model->canSummarize(bare));
        QVERIFY(!list.model->canTranscribe(transcribed));
        QVERIFY(list.model->canSummarize(transcribed));

        list.model->exportRecording(third);
        QCOMPARE(list.fixture.panels->panels.size(), 1);
        QCOMPARE(list.fixture.panels->panels.first().request.nameFieldStringValue,
                 QStringLiteral("third.md"));

        // Deleted first: the work below remembers positions.
        QStringList left = list.titles();
        left.removeOne(QStringLiteral("third"));
        list.model->deleteRecording(third);
        QCOMPARE(list.titles(), left);

        // Both statuses are passing ones, so they are collected as they are announced.
        QSet<QString> transcribing;
        QSet<QString> summarizing;
        connect(list.viewModel, &RecorderViewModel::recordingsChanged, this, [&] {
            for (const Recording &recording : list.viewModel->recordings()) {
                if (recording.status == RecordingStatus::transcribing)
                    transcribing.insert(recording.id.toString());
                if (recording.status == RecordingStatus::summarizing)
                    summarizing.insert(recording.id.toString());
            }
        });
        const auto stopCollecting = qScopeGuard([&] { list.viewModel->disconnect(this); });
        list.fixture.service->hold(QStringLiteral("POST /summarize"));
        list.model->transcribe(bare);
        list.model->summarize(transcribed);
        QVERIFY(test::waitUntil([&] { return !transcribing.isEmpty() && !summarizing.isEmpty(); }));
        QCOMPARE(transcribing, QSet<QString>{bare});
        QCOMPARE(summarizing, QSet<QString>{transcribed});
    }

    void anOpenMenuWhoseRecordingIsGoneDoesNothing()
    {
        ListOfThree list({entryNamed(QStringLiteral("first"), 0), entryNamed(QStringLiteral("second"), 1),
                          withTranscript(entryNamed(QStringLiteral("third"), 2))});
        list.fixture.signIn();
        list.insertAtTop();
        const QString gone = list.idOf(0);
        list.removeFromTop();
        list.viewModel->setShowError(false);
        QSignalSpy changes(list.viewModel, &RecorderViewModel::recordingsChanged);
        for (const QString &id : {gone, QString(), QStringLiteral("no id")}) {
            QVERIFY(!list.model->canTranscribe(id));
            QVERIFY(!list.model->canSummarize(id));
            list.model->exportRecording(id);
            list.model->transcribe(id);
            list.model->summarize(id);
            list.model->deleteRecording(id);
        }
        QCoreApplication::processEvents();
        QCOMPARE(changes.size(), 0);
        QCOMPARE(list.fixture.panels->panels.size(), 0);
        QVERIFY(!list.viewModel->isProcessing());
        QVERIFY(!list.viewModel->showError());
        QCOMPARE(list.titles(),
                 (QStringList{QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("third")}));
    }

    void selectingARowSelectsItsRecording()
    {
        ListOfThree list;
        QSignalSpy changes(list.model.get(), &RecordingListModel::selectedRowChanged);
        list.model->select(2);
        QCOMPARE(list.viewModel->selectedRecording()->title, QStringLiteral("Gamma ONE"));
        QCOMPARE(list.model->selectedRow(), 2);
        QCOMPARE(changes.size(), 1);
        QVERIFY(list.data(2, RecordingListModel::selectedRole).toBool());
        QVERIFY(!list.data(0, RecordingListModel::selectedRole).toBool());
        list.model->setSearchText(QStringLiteral("beta"));
        QCOMPARE(list.model->selectedRow(), -1);
        list.model->select(7);
        QCOMPARE(list.viewModel->selectedRecording()->title, QStringLiteral("Gamma ONE"));
    }

    void theCurrentRowStaysWithItsRecording()
    {
        ListOfThree list;
        QSignalSpy changes(list.model.get(), &RecordingListModel::currentRowChanged);
        QCOMPARE(list.model->currentRow(), -1);
        list.model->setCurrentRow(2);
        QCOMPARE(list.model->currentRow(), 2);
        QCOMPARE(changes.size(), 1);
        list.fixture.signIn();
        list.insertAtTop();
        QCOMPARE(list.model->currentRow(), 3);
        QCOMPARE(changes.size(), 2);
        list.removeFromTop();
        QCOMPARE(list.model->currentRow(), 2);
        // Filtered away, and back again.
        list.model->setSearchText(QStringLiteral("beta"));
        QCOMPARE(list.model->currentRow(), -1);
        list.model->setSearchText(QString());
        QCOMPARE(list.model->currentRow(), 2);
        // Of a deleted one the next takes the place, and of the last the one before.
        list.model->setCurrentRow(1);
        changes.clear();
        list.model->deleteRecording(list.idOf(1));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(list.model->currentRow(), 1);
        QCOMPARE(list.titles().at(1), QStringLiteral("Gamma ONE"));
        list.model->deleteRecording(list.idOf(1));
        QCOMPARE(list.model->currentRow(), 0);
        list.model->deleteRecording(list.idOf(0));
        QCOMPARE(list.model->currentRow(), -1);
        list.model->setCurrentRow(7);
        QCOMPARE(list.model->currentRow(), -1);
    }

    void theCurrentRowOutlivesAReplacementOfAllRows()
    {
        QList<Recording> entries;
        for (int i = 0; i < 1000; ++i)
            entries.append(entryNamed(i % 2 == 0 ? QStringLiteral("even") : QStringLiteral("odd"), i));
        ListOfThree list(entries);
        list.model->setCurrentRow(601);
        list.model->setSearchText(QStringLiteral("odd"));
        QCOMPARE(list.model->currentRow(), 300);
        list.model->setSearchText(QString());
        QCOMPARE(list.model->currentRow(), 601);
    }

    void everySearchFindsWhatASearchFromScratchFinds()
    {
        const QStringList words{QStringLiteral("Budget"), QStringLiteral("STRASSE"), QStringLiteral("Straße"),
                                QStringLiteral("ΟΔΟΣ"),   QStringLiteral("  "),      QStringLiteral("é"),
                                QStringLiteral("🎉")};
        QList<Recording> entries;
        for (int i = 0; i < 343; ++i)
            entries.append(entryNamed(words.at(i % 7) + words.at(i / 7 % 7) + words.at(i / 49), i));
        ListOfThree list(entries);
        // Longer, shorter, another one; the model narrows what it has where it can.
        for (const auto *text : {u"s", u"ss", u"sse", u"ss", u"S", u"", u"δος", u"οδος", u"é", u"e\u0301",
                                 u" ", u"   ", u"tss", u"🎉", u"🎉b", u"none", u"budget"}) {
            const QString wanted = QStringView(text).toString();
            list.model->setSearchText(wanted);
            QStringList expected;
            for (const Recording &entry : entries) {
                QString plain = QString(entry.title).replace(u'ß', QStringLiteral("ss")).toLower();
                if (plain.replace(u'ς', u'σ').contains(QString(wanted).toLower().replace(u'ς', u'σ')))
                    expected.append(entry.title);
            }
            QCOMPARE(list.titles(), expected);
        }
    }

    void rowsTellTheirMarks()
    {
        ListOfThree list({entryNamed(QString(), 0), withTranscript(entryNamed(QStringLiteral("a\nb"), 1))});
        QCOMPARE(list.data(0, RecordingListModel::symbolRole), QVariant(QStringLiteral("waveform")));
        QCOMPARE(list.data(0, RecordingListModel::symbolColorRole), QVariant(QStringLiteral("secondary")));
        QCOMPARE(list.data(0, RecordingListModel::nameRole).toString(),
                 QStringLiteral("Meeting ") + list.viewModel->recordings().first().formattedDate());
        QCOMPARE(list.data(1, RecordingListModel::symbolRole),
                 QVariant(QStringLiteral("text.badge.checkmark")));
        QCOMPARE(list.data(1, RecordingListModel::titleRole), QVariant(QStringLiteral("a b")));
        list.model->select(1);
        QCOMPARE(list.viewModel->selectedRecording()->title, QStringLiteral("a\nb"));
    }

    void aChangeOfAnotherSettingChangesNoRow()
    {
        ListOfThree list;
        QSignalSpy changes(list.model.get(), &QAbstractItemModel::dataChanged);
        AppSettings::shared().setAutoTranscribe(!AppSettings::shared().autoTranscribe());
        QCOMPARE(changes.size(), 0);
    }

    void theStatusFollowsTheLanguage()
    {
        ListOfThree list;
        QSignalSpy changes(list.model.get(), &QAbstractItemModel::dataChanged);
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(list.data(0, RecordingListModel::statusTextRole), QVariant(QStringLiteral("Abgeschlossen")));
        QVERIFY(!changes.isEmpty());
    }

    void entriesWithTheSameIdAreEachShown()
    {
        const Recording twice = entryNamed(QStringLiteral("twice"), 0);
        ListOfThree list({twice, twice, entryNamed(QStringLiteral("other"), 1)});
        QCOMPARE(list.model->rowCount(), 3);
        list.model->deleteRecording(list.idOf(0));
        QCOMPARE(list.titles(), QStringList{QStringLiteral("other")});
    }

    void tenThousandRecordingsAreSearchedAtOnce()
    {
        QList<Recording> entries;
        for (int i = 0; i < 10'000; ++i)
            entries.append(entryNamed(QStringLiteral("Meeting number %1").arg(i), i));
        ListOfThree list(entries);
        list.tester.reset();
        QElapsedTimer timer;
        timer.start();
        // Every tenth matches, all over the list.
        list.model->setSearchText(QStringLiteral("7 "));
        list.model->setSearchText(QStringLiteral("7"));
        const qint64 milliseconds = timer.elapsed();
        qInfo("two searches in 10,000 titles: %lld ms", milliseconds);
        QCOMPARE(list.model->rowCount(), 3439);
        QVERIFY2(milliseconds < 5000, "a search must not stall the window");
    }
};

QTEST_GUILESS_MAIN(RecordingListModelTest)
#include "RecordingListModelTest.moc"
