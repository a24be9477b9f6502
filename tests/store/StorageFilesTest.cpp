#include "store/StorageService.h"

#include "StoreFixture.h"

#include "foundation/LocalizedError.h"
#include "settings/AppSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace talvenor {

using test::FileSizeLimit;
using test::fullRecording;
using test::isSameList;
using test::readFile;

/// The files beside the list: audio, export, and the size of everything.
class StorageFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

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

void StorageFilesTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    AppSettings::shared().setStorageDirectory(m_folder->path());
    AppSettings::shared().setAppLanguage(AppLanguage::english);
}

void StorageFilesTest::cleanup()
{
    m_storage.waitUntilSaved();
}

void StorageFilesTest::theAudioFileLiesInTheAudioFolderWhichIsCreated()
{
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("Recordings"))));
    QCOMPARE(m_storage.audioFileURL(fullRecording()),
             path(QStringLiteral("Recordings/meeting_2026-03-09_08-05-07.m4a")));
    QVERIFY(QFileInfo(path(QStringLiteral("Recordings"))).isDir());
}

void StorageFilesTest::anAudioFileNeverLiesOutsideTheAudioFolder_data()
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

void StorageFilesTest::anAudioFileNeverLiesOutsideTheAudioFolder()
{
    QFETCH(QString, name);
    QFETCH(QString, used);
    Recording recording;
    recording.audioFileName = name;
    QCOMPARE(m_storage.audioFileURL(recording), path(QStringLiteral("Recordings/")) + used);
}

void StorageFilesTest::audioFileNamesAreTheLocalTimeToTheSecond()
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

void StorageFilesTest::deletingRemovesFileAndEntryAndSaves()
{
    const Recording recording = fullRecording();
    QList<Recording> list{test::longMeeting(1, 1), recording, test::longMeeting(1, 2)};
    QVERIFY(test::writeFile(m_storage.audioFileURL(recording), "sound"));
    m_storage.deleteRecording(recording, list);
    QVERIFY(!QFileInfo::exists(m_storage.audioFileURL(recording)));
    QVERIFY(isSameList(list, {test::longMeeting(1, 1), test::longMeeting(1, 2)}));
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
}

void StorageFilesTest::deletingWithoutAnAudioFileRemovesTheEntry()
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

void StorageFilesTest::deletingWhatIsNotInTheListStillRemovesItsFileAndSaves()
{
    QList<Recording> list{test::longMeeting(1, 1)};
    QVERIFY(test::writeFile(m_storage.audioFileURL(fullRecording()), "sound"));
    m_storage.deleteRecording(fullRecording(), list);
    QVERIFY(!QFileInfo::exists(m_storage.audioFileURL(fullRecording())));
    QCOMPARE(list.size(), 1);
    QVERIFY(isSameList(m_storage.loadRecordings(), list));
}

void StorageFilesTest::deletingAnEntryByReferenceRemovesAllOfItsId()
{
    QList<Recording> list{fullRecording(), test::longMeeting(1, 1), fullRecording()};
    m_storage.deleteRecording(list.first(), list);
    QVERIFY(isSameList(list, {test::longMeeting(1, 1)}));
}

void StorageFilesTest::deletingNeverTouchesAnythingOutsideTheAudioFolder_data()
{
    anAudioFileNeverLiesOutsideTheAudioFolder_data();
}

void StorageFilesTest::deletingNeverTouchesAnythingOutsideTheAudioFolder()
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

void StorageFilesTest::theExportInEnglish()
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

void StorageFilesTest::theExportInGerman()
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

void StorageFilesTest::theExportLeavesOutWhatIsNotThere()
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

void StorageFilesTest::theExportDoesNotTouchTheTitle()
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

void StorageFilesTest::theExportReplacesAFile()
{
    const QString file = path(QStringLiteral("out.md"));
    QVERIFY(test::writeFile(file, QByteArray(100'000, 'x')));
    m_storage.exportTranscript(fullRecording(), file);
    QVERIFY(readFile(file).startsWith("# Weekly"));
    QVERIFY(readFile(file).endsWith("Short."));
}

void StorageFilesTest::anExportThatCannotBeWrittenFails()
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

void StorageFilesTest::theSizeOfAFolderWithOnlyTheList()
{
    QVERIFY(test::writeFile(listFile(), QByteArray(48'123, ' ')));
    QCOMPARE(m_storage.storageSizeFormatted(), QStringLiteral("48 kB"));
}

void StorageFilesTest::theSizeCountsEverythingBelow()
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

void StorageFilesTest::theSizeOfAFolderThatCannotBeListed()
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

QTEST_GUILESS_MAIN(talvenor::StorageFilesTest)
#include "StorageFilesTest.moc"
