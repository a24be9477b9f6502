#include "store/StorageService.h"

#include "StoreFixture.h"

#include "foundation/LocalizedError.h"
#include "settings/AppSettings.h"
#include "store/RecordingsDecoder.h"
#include "support/Await.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/inotify.h>
#include <unistd.h>

namespace talvenor {

using test::FileSizeLimit;
using test::fullRecording;
using test::isSameList;
using test::readFile;

namespace {

/// Counts how often a file of the given name took its place in a folder.
class RenameCounter
{
public:
    RenameCounter(const QString &folder, QByteArray name)
        : m_name(std::move(name)), m_inotify(inotify_init1(IN_NONBLOCK))
    {
        if (inotify_add_watch(m_inotify, QFile::encodeName(folder).constData(), IN_MOVE) < 0)
            qFatal("the folder cannot be watched");
    }
    ~RenameCounter() { close(m_inotify); }
    Q_DISABLE_COPY_MOVE(RenameCounter)

    [[nodiscard]] int count() const
    {
        int result = 0;
        alignas(inotify_event) std::array<char, 4096> buffer{};
        for (ssize_t size = 0; (size = read(m_inotify, buffer.data(), buffer.size())) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto *event = reinterpret_cast<const inotify_event *>(buffer.data() + at);
                // The other half of each move keeps the kernel from merging equal events.
                result += (event->mask & IN_MOVED_TO) != 0 && m_name == event->name;
                at += ssize_t(sizeof(inotify_event) + event->len);
            }
        }
        return result;
    }

private:
    QByteArray m_name;
    int m_inotify;
};

} // namespace

class StorageServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aMissingFileIsAnEmptyListWithoutAWord();
    void whatIsSavedIsLoaded();
    void loadingSeesSavesThatAreStillBeingWritten();
    void loadingDoesNotSortAndKeepsEntriesWithoutAudio();
    void aFileThatDoesNotDecodeIsAnEmptyListAndIsReplacedByTheNextSave();
    void aFileThatCannotBeReadIsAnEmptyList();
    void everySaveIsWrittenInTheOrderOfTheCalls();
    void aSaveWritesTheListAsItWasAtTheCall();
    void aSaveGoesWhereTheFolderWasAtTheCall();
    void aChangedFolderGetsTheWholeListAndTheOldFileStays();
    void aSaveReturnsBeforeItIsWritten();
    void waitingEndsAtOnceWithNothingToDo();
    void aSaveIntoAMissingFolderIsToldAndTheNextOneWorks();
    void aFullDiskLeavesTheOldFile();
    void aSaveLeavesNothingBesideTheFile();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QString listFile() const { return path(QStringLiteral("recordings.json")); }

    StorageService &m_storage = StorageService::shared();
    std::unique_ptr<QTemporaryDir> m_folder;
};

void StorageServiceTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    AppSettings::shared().setStorageDirectory(m_folder->path());
    AppSettings::shared().setAppLanguage(AppLanguage::english);
}

void StorageServiceTest::cleanup()
{
    m_storage.waitUntilSaved();
}

void StorageServiceTest::aMissingFileIsAnEmptyListWithoutAWord()
{
    test::StandardOutputCapture output;
    const QList<Recording> list = m_storage.loadRecordings();
    const QByteArray printed = output.take();
    QVERIFY(list.isEmpty());
    QCOMPARE(printed, QByteArray());
    QVERIFY(!QFileInfo::exists(listFile()));
}

void StorageServiceTest::whatIsSavedIsLoaded()
{
    const QList<Recording> list{fullRecording(), test::longMeeting(3, 1), Recording()};
    m_storage.saveRecordings(list);
    test::await(m_storage.allSaved());
    QVERIFY(isSameList(readRecordings(listFile()), list));
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
    m_storage.saveRecordings({});
    QVERIFY(m_storage.loadRecordings().isEmpty());
}

void StorageServiceTest::loadingSeesSavesThatAreStillBeingWritten()
{
    for (int round = 0; round < 20; ++round) {
        const QList<Recording> list{test::longMeeting(60, round)};
        m_storage.saveRecordings(list);
        QVERIFY(isSameList(m_storage.loadRecordings(), list));
    }
}

void StorageServiceTest::loadingDoesNotSortAndKeepsEntriesWithoutAudio()
{
    const QList<Recording> list{test::longMeeting(1, 2), test::longMeeting(1, 7), test::longMeeting(1, 1)};
    m_storage.saveRecordings(list);
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("Recordings"))));
}

void StorageServiceTest::aFileThatDoesNotDecodeIsAnEmptyListAndIsReplacedByTheNextSave()
{
    const QByteArray damaged = "[{\"id\":\"x\"}]";
    QVERIFY(test::writeFile(listFile(), damaged));
    test::StandardOutputCapture output;
    const QList<Recording> list = m_storage.loadRecordings();
    const QByteArray printed = output.take();
    QVERIFY(list.isEmpty());
    QVERIFY2(printed.startsWith("Failed to load recordings: [0]: \"id\""), printed.constData());
    QCOMPARE(printed.count('\n'), 1);
    QVERIFY(printed.endsWith('\n'));
    QCOMPARE(readFile(listFile()), damaged);

    m_storage.saveRecordings({fullRecording()});
    QVERIFY(isSameList(m_storage.loadRecordings(), {fullRecording()}));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("recordings.json")});
}

void StorageServiceTest::aFileThatCannotBeReadIsAnEmptyList()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("recordings.json")));
    test::StandardOutputCapture output;
    const QList<Recording> list = m_storage.loadRecordings();
    const QByteArray printed = output.take();
    QVERIFY(list.isEmpty());
    QVERIFY2(printed.startsWith("Failed to load recordings: "), printed.constData());
}

void StorageServiceTest::everySaveIsWrittenInTheOrderOfTheCalls()
{
    const RenameCounter counter(m_folder->path(), "recordings.json");
    QList<Recording> list;
    for (int i = 0; i < 40; ++i) {
        list.prepend(test::longMeeting(1, i));
        m_storage.saveRecordings(list);
    }
    test::await(m_storage.allSaved());
    QCOMPARE(counter.count(), 40);
    QVERIFY(isSameList(readRecordings(listFile()), list));
}

void StorageServiceTest::aSaveWritesTheListAsItWasAtTheCall()
{
    QList<Recording> list{test::longMeeting(60, 1), test::longMeeting(60, 2)};
    const QList<Recording> before{test::longMeeting(60, 1), test::longMeeting(60, 2)};
    m_storage.saveRecordings(list);
    list[0].title = QStringLiteral("changed");
    list[1].transcriptSegments[5].text[0] = u'Z';
    list[1].participants.clear();
    QVERIFY(isSameList(m_storage.loadRecordings(), before));
    m_storage.saveRecordings(list);
    list.clear();
    const QList<Recording> read = m_storage.loadRecordings();
    QCOMPARE(read.size(), 2);
    QCOMPARE(read[0].title, QStringLiteral("changed"));
    QCOMPARE(read[1].transcriptSegments[5].text[0], QChar(u'Z'));
    QVERIFY(read[1].participants.isEmpty());
}

void StorageServiceTest::aSaveGoesWhereTheFolderWasAtTheCall()
{
    const QTemporaryDir other;
    for (int round = 0; round < 10; ++round) {
        AppSettings::shared().setStorageDirectory(m_folder->path());
        m_storage.saveRecordings({test::longMeeting(60, round)});
        AppSettings::shared().setStorageDirectory(other.path());
        m_storage.saveRecordings({test::longMeeting(1, 100 + round)});
    }
    test::await(m_storage.allSaved());
    QVERIFY(isSameList(readRecordings(listFile()), {test::longMeeting(60, 9)}));
    QVERIFY(isSameList(readRecordings(other.filePath(QStringLiteral("recordings.json"))),
                       {test::longMeeting(1, 109)}));
}

void StorageServiceTest::aChangedFolderGetsTheWholeListAndTheOldFileStays()
{
    Recording recording = fullRecording();
    QList<Recording> list{recording, test::longMeeting(1, 1)};
    const QString oldAudio = m_storage.audioFileURL(recording);
    QVERIFY(test::writeFile(oldAudio, "sound"));
    m_storage.saveRecordings(list);
    m_storage.waitUntilSaved();
    const QByteArray oldText = readFile(listFile());

    const QTemporaryDir other;
    AppSettings::shared().setStorageDirectory(other.path());
    QVERIFY(m_storage.loadRecordings().isEmpty());
    list[0].title = QStringLiteral("renamed");
    m_storage.saveRecordings(list);
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
    QCOMPARE(readFile(listFile()), oldText);
    QVERIFY(QFileInfo::exists(oldAudio));
    QCOMPARE(m_storage.audioFileURL(recording),
             other.path() + QStringLiteral("/Recordings/") + recording.audioFileName);
    QVERIFY(!QFileInfo::exists(m_storage.audioFileURL(recording)));
}

void StorageServiceTest::aSaveReturnsBeforeItIsWritten()
{
    // Hundreds of megabytes are on no disk by the time that the last call returns.
    const RenameCounter counter(m_folder->path(), "recordings.json");
    const QList<Recording> list{test::longMeeting(600, 1), test::longMeeting(600, 2)};
    for (int i = 0; i < 30; ++i)
        m_storage.saveRecordings(list);
    QVERIFY(counter.count() < 30);
    test::await(m_storage.allSaved());
    QVERIFY(isSameList(readRecordings(listFile()), list));
}

void StorageServiceTest::waitingEndsAtOnceWithNothingToDo()
{
    m_storage.waitUntilSaved();
    test::await(m_storage.allSaved());
    m_storage.saveRecordings({});
    // Several may wait at the same time.
    auto first = m_storage.allSaved();
    auto second = m_storage.allSaved();
    test::await(std::move(second));
    test::await(std::move(first));
    QVERIFY(QFileInfo::exists(listFile()));
}

void StorageServiceTest::aSaveIntoAMissingFolderIsToldAndTheNextOneWorks()
{
    const QString missing = path(QStringLiteral("gone"));
    AppSettings::shared().setStorageDirectory(missing);
    test::StandardOutputCapture output;
    m_storage.saveRecordings({fullRecording()});
    test::await(m_storage.allSaved());
    const QByteArray printed = output.take();
    QVERIFY2(printed.startsWith("Failed to save recordings: "), printed.constData());
    QCOMPARE(printed.count('\n'), 1);
    QVERIFY(!QFileInfo::exists(missing));

    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("gone")));
    m_storage.saveRecordings({fullRecording()});
    QVERIFY(isSameList(m_storage.loadRecordings(), {fullRecording()}));
}

void StorageServiceTest::aFullDiskLeavesTheOldFile()
{
    m_storage.saveRecordings({fullRecording()});
    m_storage.waitUntilSaved();
    const QByteArray old = readFile(listFile());
    QByteArray printed;
    {
        // Standard output goes to a file here and has to hold the line.
        const FileSizeLimit limit(16 * 1024);
        test::StandardOutputCapture output;
        m_storage.saveRecordings({test::longMeeting(60, 1)});
        m_storage.waitUntilSaved();
        printed = output.take();
    }
    QVERIFY2(printed.startsWith("Failed to save recordings: "), printed.constData());
    QCOMPARE(readFile(listFile()), old);
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("recordings.json")});
    m_storage.saveRecordings({test::longMeeting(60, 1)});
    QVERIFY(isSameList(m_storage.loadRecordings(), {test::longMeeting(60, 1)}));
}

void StorageServiceTest::aSaveLeavesNothingBesideTheFile()
{
    m_storage.saveRecordings({fullRecording()});
    m_storage.waitUntilSaved();
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{QStringLiteral("recordings.json")});
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::StorageServiceTest)
#include "StorageServiceTest.moc"
