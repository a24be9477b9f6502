#include "store/StorageService.h"

#include "StoreFixture.h"

#include "foundation/LocalizedError.h"
#include "settings/AppSettings.h"
#include "store/RecordingsDecoder.h"
#include "support/Await.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace talvenor {

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

/// While it lives, no file can grow beyond `bytes`: a full disk, as far as a writer can tell.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_previous);
        const rlimit limit{bytes, m_previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_previous);
        std::signal(SIGXFSZ, m_previousHandler);
    }
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit m_previous{};
    void (*m_previousHandler)(int) = nullptr;
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

    void theAudioFileLiesInTheAudioFolderWhichIsCreated();
    void anAudioFileNeverLiesOutsideTheAudioFolder_data();
    void anAudioFileNeverLiesOutsideTheAudioFolder();
    void audioFileNamesAreTheLocalTimeToTheSecond();

    void deletingRemovesFileAndEntryAndSaves();
    void deletingWithoutAnAudioFileRemovesTheEntry();
    void deletingWhatIsNotInTheListStillRemovesItsFileAndSaves();
    void deletingAnEntryByReferenceRemovesAllOfItsId();
    void deletingNeverTouchesAnythingOutsideTheAudioFolder_data();
    void deletingNeverTouchesAnythingOutsideTheAudioFolder();

    void theExportInEnglish();
    void theExportInGerman();
    void theExportLeavesOutWhatIsNotThere();
    void theExportDoesNotTouchTheTitle();
    void theExportReplacesAFile();
    void anExportThatCannotBeWrittenFails();

    void theSizeOfAFolderWithOnlyTheList();
    void theSizeCountsEverythingBelow();
    void theSizeOfAFolderThatCannotBeListed();

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

void StorageServiceTest::theAudioFileLiesInTheAudioFolderWhichIsCreated()
{
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("Recordings"))));
    QCOMPARE(m_storage.audioFileURL(fullRecording()),
             path(QStringLiteral("Recordings/meeting_2026-03-09_08-05-07.m4a")));
    QVERIFY(QFileInfo(path(QStringLiteral("Recordings"))).isDir());
}

void StorageServiceTest::anAudioFileNeverLiesOutsideTheAudioFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("used");
    QTest::newRow("parent") << QStringLiteral("../recordings.json") << QStringLiteral(".._recordings.json");
    QTest::newRow("absolute") << QStringLiteral("/etc/passwd") << QStringLiteral("_etc_passwd");
    QTest::newRow("below") << QStringLiteral("a/b.m4a") << QStringLiteral("a_b.m4a");
    QTest::newRow("dots") << QStringLiteral("..") << QStringLiteral(".._");
    QTest::newRow("dot") << QStringLiteral(".") << QStringLiteral("._");
    QTest::newRow("empty") << QString() << QStringLiteral("_");
    QTest::newRow("with a zero") << QStringLiteral("a") + QChar(QChar::Null) << QStringLiteral("a_");
    QTest::newRow("plain") << QStringLiteral("..a b.m4a") << QStringLiteral("..a b.m4a");
}

void StorageServiceTest::anAudioFileNeverLiesOutsideTheAudioFolder()
{
    QFETCH(QString, name);
    QFETCH(QString, used);
    Recording recording;
    recording.audioFileName = name;
    QCOMPARE(m_storage.audioFileURL(recording), path(QStringLiteral("Recordings/")) + used);
}

void StorageServiceTest::audioFileNamesAreTheLocalTimeToTheSecond()
{
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Asia/Kathmandu");
    const QDateTime before = QDateTime::currentDateTime();
    const QString name = m_storage.generateAudioFileName();
    const QString again = m_storage.generateAudioFileName();
    const QDateTime after = QDateTime::currentDateTime();
    qputenv("TZ", zone);
    const auto nameAt = [](const QDateTime &instant) {
        return QStringLiteral("meeting_") + instant.toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss")) +
               QStringLiteral(".m4a");
    };
    QVERIFY2(name == nameAt(before) || name == nameAt(after), qPrintable(name));
    // The same second, the same name: nothing is looked up.
    if (before.toSecsSinceEpoch() == after.toSecsSinceEpoch())
        QCOMPARE(again, name);
}

void StorageServiceTest::deletingRemovesFileAndEntryAndSaves()
{
    const Recording recording = fullRecording();
    QList<Recording> list{test::longMeeting(1, 1), recording, test::longMeeting(1, 2)};
    QVERIFY(test::writeFile(m_storage.audioFileURL(recording), "sound"));
    m_storage.deleteRecording(recording, list);
    QVERIFY(!QFileInfo::exists(m_storage.audioFileURL(recording)));
    QVERIFY(isSameList(list, {test::longMeeting(1, 1), test::longMeeting(1, 2)}));
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
}

void StorageServiceTest::deletingWithoutAnAudioFileRemovesTheEntry()
{
    QList<Recording> list{fullRecording()};
    // A folder in the place of the file cannot be removed either.
    QVERIFY(QDir().mkpath(m_storage.audioFileURL(fullRecording()) + QStringLiteral("/inside")));
    m_storage.deleteRecording(fullRecording(), list);
    QVERIFY(list.isEmpty());
    QVERIFY(QFileInfo(m_storage.audioFileURL(fullRecording())).isDir());
    QVERIFY(m_storage.loadRecordings().isEmpty());
    QVERIFY(QFileInfo::exists(listFile()));
}

void StorageServiceTest::deletingWhatIsNotInTheListStillRemovesItsFileAndSaves()
{
    QList<Recording> list{test::longMeeting(1, 1)};
    QVERIFY(test::writeFile(m_storage.audioFileURL(fullRecording()), "sound"));
    m_storage.deleteRecording(fullRecording(), list);
    QVERIFY(!QFileInfo::exists(m_storage.audioFileURL(fullRecording())));
    QCOMPARE(list.size(), 1);
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
}

void StorageServiceTest::deletingAnEntryByReferenceRemovesAllOfItsId()
{
    QList<Recording> list{fullRecording(), test::longMeeting(1, 1), fullRecording()};
    m_storage.deleteRecording(list.first(), list);
    QVERIFY(isSameList(list, {test::longMeeting(1, 1)}));
}

void StorageServiceTest::deletingNeverTouchesAnythingOutsideTheAudioFolder_data()
{
    anAudioFileNeverLiesOutsideTheAudioFolder_data();
}

void StorageServiceTest::deletingNeverTouchesAnythingOutsideTheAudioFolder()
{
    QFETCH(QString, name);
    QFETCH(QString, used);
    if (name == used)
        return; // the plain one is deleted, see above
    const QString audio = AppSettings::shared().audioDirectory();
    QVERIFY(QDir(audio).mkdir(QStringLiteral("a")));
    // Whatever reading of the name one takes, there is a file.
    QStringList victims{path(QStringLiteral("victim")), audio + QStringLiteral("/a/b.m4a"),
                        audio + QStringLiteral("/a_"), audio + u'/' + used};
    for (const QString &victim : victims)
        QVERIFY(test::writeFile(victim, "precious"));
    Recording recording;
    recording.audioFileName = name == u"../recordings.json" ? QStringLiteral("../victim") : name;
    QList<Recording> list{recording};
    m_storage.deleteRecording(recording, list);
    QVERIFY(list.isEmpty());
    for (const QString &victim : victims)
        QVERIFY2(QFileInfo::exists(victim), qPrintable(victim));
}

void StorageServiceTest::theExportInEnglish()
{
    const QString file = path(QStringLiteral("out.md"));
    m_storage.exportTranscript(fullRecording(), file);
    const QString expected = QStringLiteral("# Weekly \"sync\" – Straße/№ 5\n"
                                            "Date: %1\n"
                                            "Duration: 1:02:05\n"
                                            "Participants: Anna, Jörg\n"
                                            "\n## Transcript\n\n"
                                            "[00:00] Hello.\n"
                                            "[01:02] [Jörg] Moin, grüß dich."
                                            "\n\n## Summary\n\n"
                                            "## Summary\nShort.")
                                 .arg(fullRecording().formattedDate());
    QCOMPARE(QString::fromUtf8(readFile(file)), expected);
}

void StorageServiceTest::theExportInGerman()
{
    AppSettings::shared().setAppLanguage(AppLanguage::german);
    const QString file = path(QStringLiteral("out.md"));
    m_storage.exportTranscript(fullRecording(), file);
    const QString expected = QStringLiteral("# Weekly \"sync\" – Straße/№ 5\n"
                                            "Datum: %1\n"
                                            "Dauer: 1:02:05\n"
                                            "Teilnehmer: Anna, Jörg\n"
                                            "\n## Transkript\n\n"
                                            "[00:00] Hello.\n"
                                            "[01:02] [Jörg] Moin, grüß dich."
                                            "\n\n## Zusammenfassung\n\n"
                                            "## Summary\nShort.")
                                 .arg(fullRecording().formattedDate());
    QCOMPARE(QString::fromUtf8(readFile(file)), expected);
}

void StorageServiceTest::theExportLeavesOutWhatIsNotThere()
{
    const QString file = path(QStringLiteral("out.md"));
    Recording recording = fullRecording();
    recording.participants.clear();
    recording.transcriptSegments.clear();
    m_storage.exportTranscript(recording, file);
    QVERIFY(!readFile(file).contains("Participants"));
    QVERIFY(readFile(file).endsWith(
        "Duration: 1:02:05\n\n## Transcript\n\n\n\n## Summary\n\n## Summary\nShort."));

    recording.summary = std::nullopt;
    m_storage.exportTranscript(recording, file);
    QVERIFY(readFile(file).endsWith("Duration: 1:02:05\n\n## Transcript\n\n"));

    recording.summary = QString();
    m_storage.exportTranscript(recording, file);
    QVERIFY(readFile(file).endsWith("\n\n## Transcript\n\n\n\n## Summary\n\n"));
}

void StorageServiceTest::theExportDoesNotTouchTheTitle()
{
    const QString file = path(QStringLiteral("out.md"));
    Recording recording = fullRecording();
    recording.title = QStringLiteral("# *One*\n\n<b>two</b>\\");
    m_storage.exportTranscript(recording, file);
    QVERIFY(readFile(file).startsWith("# # *One*\n\n<b>two</b>\\\nDate: "));
    recording.title.clear();
    m_storage.exportTranscript(recording, file);
    QVERIFY(readFile(file).startsWith("# \nDate: "));
}

void StorageServiceTest::theExportReplacesAFile()
{
    const QString file = path(QStringLiteral("out.md"));
    QVERIFY(test::writeFile(file, QByteArray(100'000, 'x')));
    m_storage.exportTranscript(fullRecording(), file);
    QVERIFY(readFile(file).startsWith("# Weekly"));
    QVERIFY(readFile(file).endsWith("Short."));
}

void StorageServiceTest::anExportThatCannotBeWrittenFails()
{
    const auto fails = [this](const QString &file) {
        try {
            m_storage.exportTranscript(fullRecording(), file);
        } catch (const PlatformError &error) {
            return !error.errorDescription().isEmpty();
        }
        return false;
    };
    QVERIFY(fails(path(QStringLiteral("missing/out.md"))));
    QVERIFY(fails(m_folder->path()));
    QVERIFY(fails(QString()));
    QVERIFY(fails(QStringLiteral("/proc/out.md")));
    const FileSizeLimit limit(10);
    QVERIFY(fails(path(QStringLiteral("out.md"))));
    QVERIFY(QDir(m_folder->path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
}

void StorageServiceTest::theSizeOfAFolderWithOnlyTheList()
{
    QVERIFY(test::writeFile(listFile(), QByteArray(48'123, ' ')));
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("48 kB"));
}

void StorageServiceTest::theSizeCountsEverythingBelow()
{
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("Recordings/.hidden/deep")));
    QVERIFY(test::writeFile(listFile(), QByteArray(1'000'000, ' ')));
    QVERIFY(test::writeFile(path(QStringLiteral("Recordings/a.m4a")), QByteArray(500'000, ' ')));
    QVERIFY(test::writeFile(path(QStringLiteral("Recordings/.hidden/deep/.b")), QByteArray(700'000, ' ')));
    // A link counts nothing, least of all in a circle.
    QVERIFY(QFile::link(m_folder->path(), path(QStringLiteral("Recordings/circle"))));
    QVERIFY(QFile::link(listFile(), path(QStringLiteral("Recordings/link"))));
    QVERIFY(QFile::link(QStringLiteral("/nowhere"), path(QStringLiteral("Recordings/broken"))));
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("2.2 MB"));
}

void StorageServiceTest::theSizeOfAFolderThatCannotBeListed()
{
    AppSettings::shared().setStorageDirectory(path(QStringLiteral("missing")));
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("0 MB"));
    AppSettings::shared().setAppLanguage(AppLanguage::german);
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("0 MB"));
    QVERIFY(test::writeFile(path(QStringLiteral("file")), "x"));
    AppSettings::shared().setStorageDirectory(path(QStringLiteral("file")));
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("0 MB"));
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::StorageServiceTest)
#include "StorageServiceTest.moc"
