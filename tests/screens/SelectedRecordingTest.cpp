#include "screens/SelectedRecording.h"

#include "recorderfakes/RecorderFixture.h"
#include "settings/AppSettings.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace talvenor;
using test::RecorderFixture;

namespace {

/// The screen's state over a list of one selected entry.
struct Selection
{
    explicit Selection(Recording recording)
    {
        recording.audioFileName = QStringLiteral("sound.m4a");
        fixture.writeList({recording});
        viewModel = &fixture.start();
        selected = std::make_unique<SelectedRecording>(*viewModel);
        viewModel->setSelectedRecording(viewModel->recordings().first());
    }

    RecorderFixture fixture;
    RecorderViewModel *viewModel = nullptr;
    std::unique_ptr<SelectedRecording> selected;
};

Recording completed()
{
    Recording recording;
    recording.title = QStringLiteral("title");
    recording.status = RecordingStatus::completed;
    return recording;
}

TranscriptSegment segmentAt(double timestamp, const QString &text)
{
    TranscriptSegment segment;
    segment.timestamp = timestamp;
    segment.text = text;
    return segment;
}

} // namespace

class SelectedRecordingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void itShowsTheSelectedCopy()
    {
        Recording recording = completed();
        recording.duration = 3725;
        recording.transcriptSegments = {segmentAt(0, QStringLiteral("one")),
                                        segmentAt(65, QStringLiteral("two"))};
        recording.transcriptSegments[1].speaker = QStringLiteral("Ann");
        Selection selection(recording);
        SelectedRecording &shown = *selection.selected;
        QCOMPARE(shown.title(), QStringLiteral("title"));
        QCOMPARE(shown.formattedDuration(), QStringLiteral("1:02:05"));
        QCOMPARE(shown.statusLabel(), QStringLiteral("Completed"));
        const TranscriptModel &transcript = *shown.transcript();
        QCOMPARE(transcript.rowCount(), 2);
        QCOMPARE(transcript.index(1).data(TranscriptModel::timestampRole), QVariant(QStringLiteral("01:05")));
        QCOMPARE(transcript.index(1).data(TranscriptModel::textRole), QVariant(QStringLiteral("two")));
        QCOMPARE(transcript.index(1).data(TranscriptModel::speakerRole), QVariant(QStringLiteral("Ann")));
        QCOMPARE(transcript.index(0).data(TranscriptModel::speakerRole), QVariant(QString()));
    }

    void theButtonsNeverShowTogetherAndOnlyForCompletedRecordings()
    {
        for (const RecordingStatus status : allRecordingStatuses()) {
            for (const bool transcribed : {false, true}) {
                for (const bool summarised : {false, true}) {
                    Recording recording = completed();
                    recording.status = status;
                    if (transcribed)
                        recording.transcriptSegments = {segmentAt(0, QStringLiteral("one"))};
                    if (summarised)
                        recording.summary = QString();
                    Selection selection(recording);
                    const bool isCompleted = status == RecordingStatus::completed;
                    QCOMPARE(selection.selected->canTranscribe(), isCompleted && !transcribed);
                    QCOMPARE(selection.selected->canSummarize(), isCompleted && transcribed && !summarised);
                    QCOMPARE(selection.selected->hasSummary(), summarised); // an empty one is one
                }
            }
        }
    }

    void anEmptyTitleIsTakenAsItIs()
    {
        Selection selection(completed());
        selection.selected->rename(QString());
        QCOMPARE(selection.selected->title(), QString());
        QCOMPARE(selection.viewModel->recordings().first().title, QString());
    }

    void namesAreTrimmedOnAddingAndNotOnEditing()
    {
        Selection selection(completed());
        SelectedRecording &shown = *selection.selected;
        const QAbstractItemModelTester tester(shown.participants(),
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(!shown.addParticipant(QStringLiteral(" \t\u00a0\u2003")));
        QVERIFY(!SelectedRecording::isParticipantName(QStringLiteral("  ")));
        QVERIFY(shown.addParticipant(QStringLiteral(" \tAnn Lee\u00a0")));
        QCOMPARE(shown.participants()->rowCount(), 1);
        const QModelIndex row = shown.participants()->index(0);
        QCOMPARE(row.data(ParticipantModel::nameRole), QVariant(QStringLiteral("Ann Lee")));
        QCOMPARE(row.data(ParticipantModel::detectedRole), QVariant(false));
        const QString id = row.data(ParticipantModel::idRole).toString();
        QSignalSpy changes(shown.participants(), &QAbstractItemModel::dataChanged);
        shown.updateParticipant(id, QStringLiteral(" Bob "));
        QCOMPARE(changes.size(), 1);
        QCOMPARE(row.data(ParticipantModel::nameRole), QVariant(QStringLiteral(" Bob ")));
        shown.removeParticipant(id);
        QCOMPARE(shown.participants()->rowCount(), 0);
    }

    void theInitialIsOneCharacterAsPeopleSeeIt_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("initial");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("plain") << QStringLiteral("ann") << QStringLiteral("A");
        QTest::newRow("sharp s") << QStringLiteral("ßen") << QStringLiteral("SS");
        QTest::newRow("combined") << QStringLiteral("e\u0301ric") << QStringLiteral("E\u0301");
        QTest::newRow("emoji") << QStringLiteral("👩‍🚀 Zoe") << QStringLiteral("👩‍🚀");
    }

    void theInitialIsOneCharacterAsPeopleSeeIt()
    {
        QFETCH(const QString, name);
        QTEST(upperCasedInitial(name), "initial");
    }

    void anOlderCopyStaysUntilTheViewModelCopiesAgain()
    {
        Selection selection(completed());
        QSignalSpy changes(selection.selected.get(), &SelectedRecording::changed);
        selection.viewModel->loadRecordings(); // the list is new, the selection is not
        QVERIFY(changes.isEmpty());
    }

    void withoutASelectionTheLastOneStays()
    {
        Selection selection(completed());
        selection.viewModel->setSelectedRecording(std::nullopt);
        QCOMPARE(selection.selected->title(), QStringLiteral("title"));
    }

    void theStatusFollowsTheLanguage()
    {
        Selection selection(completed());
        QSignalSpy changes(selection.selected.get(), &SelectedRecording::changed);
        AppSettings::shared().setAppLanguage(AppLanguage::german);
        QCOMPARE(selection.selected->statusLabel(), QStringLiteral("Abgeschlossen"));
        QCOMPARE(changes.size(), 1);
    }
};

QTEST_GUILESS_MAIN(SelectedRecordingTest)
#include "SelectedRecordingTest.moc"
