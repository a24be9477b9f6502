#include "RecordedFile.h"

#include "platform/linux/media/ReplacementFile.h"
#include "support/FailingReads.h"

#include <csignal>
#include <fcntl.h>
#include <limits>
#include <sys/resource.h>

using namespace talvenor;
using namespace talvenor::test;

namespace {

/// The largest file that this process may write, put back at the end.
class FileSizeLimit
{
public:
    FileSizeLimit()
    {
        std::signal(SIGXFSZ, SIG_IGN); // the write shall fail, and not the process end
        ::getrlimit(RLIMIT_FSIZE, &m_before);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    void set(rlim_t bytes) const
    {
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    void lift() const { ::setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before{};
};

} // namespace

/// What becomes of audio files when the process, the disk or other programs interfere.
class RecordingSafetyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { installLinuxMedia(Platform::shared()); }
    void init()
    {
        m_folder.emplace();
        m_path = m_folder->filePath(QStringLiteral("a.m4a"));
    }
    void cleanup()
    {
        waitForFastStartRewrites();
        m_folder.reset();
    }
    void aKilledProcessLeavesAFileThatPlays()
    {
        QRandomGenerator random(QRandomGenerator::securelySeeded());
        for (int round = 0; round < 25; ++round) {
            const QString path = m_folder->filePath(QStringLiteral("%1.m4a").arg(round));
            QProcess writer;
            writer.start(QStringLiteral(TALVENOR_FILE_WRITER),
                         {path, QStringLiteral("20"), QStringLiteral("600")});
            QVERIFY(writer.waitForReadyRead());
            QTest::qSleep(int(random.bounded(400U)));
            QVERIFY(::kill(pid_t(writer.processId()), SIGKILL) == 0);
            QVERIFY(writer.waitForFinished());
            QCOMPARE(writer.exitStatus(), QProcess::CrashExit);
            const QByteArray lines = writer.readAllStandardOutput().trimmed();
            const double written = lines.mid(lines.lastIndexOf('\n') + 1).toDouble() / 1'000;
            const std::vector<float> samples = decodedAudio(path);
            const double readable = double(samples.size()) / 48'000;
            QVERIFY2(written - readable < 2 && readable > 0,
                     qPrintable(QStringLiteral("%1 s of %2 s").arg(readable).arg(written)));
            if (readable > 0.5)
                QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 440) + 12.04) < 0.5);
        }
    }

    void anOrdinaryEndOfTheProcessWaitsForTheRewriting()
    {
        static_cast<void>(outputOf(QStringLiteral(TALVENOR_FILE_WRITER),
                                   {m_path, QStringLiteral("1000"), QStringLiteral("60")}));
        QVERIFY(!boxes(m_path).contains(QStringLiteral("moof")));
        QVERIFY(boxes(m_path).contains(QStringLiteral("moov")));
        QVERIFY(std::abs(duration(m_path) - 60) < 0.1);
    }

    void aFullDiskIsAnErrorUntilThereIsRoomAgain()
    {
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        limit.set(60'000); // about five seconds
        int failures = 0;
        int error = 0;
        QString text;
        for (int block = 0; block < 100; ++block) { // ten seconds
            try {
                file->write(tone.next(4'800));
                QCOMPARE(failures, 0); // once it is full, every attempt fails
            } catch (const PlatformError &failure) {
                ++failures;
                error = failure.code();
                text = failure.errorDescription();
            }
        }
        QVERIFY(failures > 20);
        QCOMPARE(error, EFBIG);
        QVERIFY2(text.startsWith(QStringLiteral("The recording could not be written to the disk: ")),
                 qPrintable(text));
        QVERIFY(!boxes(m_path).isEmpty()); // no torn fragment at the end
        const double readable = double(decodedAudio(m_path).size()) / 48'000;
        QVERIFY2(readable > 3 && readable < 6, qPrintable(QString::number(readable)));
        limit.lift();
        tone.writeTo(*file, 48'000LL * 2);
        file.reset();
        waitForFastStartRewrites();
        // All of it is there, without a gap.
        const std::vector<float> samples = decodedAudio(m_path);
        QVERIFY(std::abs(double(samples.size()) / 48'000 - 12) < 0.03);
        QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 1'000) + 20) < 0.5);
    }

    void aDiskThatStaysFullKeepsWhatFits()
    {
        const LogCapture log;
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        limit.set(40'000);
        for (int block = 0; block < 100; ++block) {
            try {
                file->write(tone.next(4'800));
            } catch (const PlatformError &) {
                // expected, and looked at above
            }
        }
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(log.texts(platformChannel).join(u'\n').contains(QStringLiteral("The end of ") + m_path));
        const double readable = double(decodedAudio(m_path).size()) / 48'000;
        QVERIFY2(readable > 2 && readable < 5, qPrintable(QString::number(readable)));
    }

    void aDiskWithALittleRoomAgainTakesWhatFits_data()
    {
        QTest::addColumn<bool>("atTheEnd");
        QTest::newRow("while it is written") << false;
        QTest::newRow("at the end") << true;
    }

    void aDiskWithALittleRoomAgainTakesWhatFits()
    {
        QFETCH(bool, atTheEnd);
        const LogCapture log;
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone tone(48'000, 1'000, -20);
        limit.set(40'000);
        for (int block = 0; block < 100; ++block) { // ten seconds
            try {
                file->write(tone.next(4'800));
            } catch (const PlatformError &) {
                // expected, and looked at above
            }
        }
        const double before = double(decodedAudio(m_path).size()) / 48'000;
        QVERIFY2(before > 2 && before < 5, qPrintable(QString::number(before)));
        limit.set(80'000); // room for three seconds more, and not for all
        if (!atTheEnd) {
            QVERIFY_EXCEPTION_THROWN(file->write(tone.next(4'800)), PlatformError);
            const double during = double(decodedAudio(m_path).size()) / 48'000;
            QVERIFY2(during > before + 2 && during < 8, qPrintable(QString::number(during)));
        }
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(log.texts(platformChannel).join(u'\n').contains(QStringLiteral("The end of ") + m_path));
        const std::vector<float> samples = decodedAudio(m_path);
        const double after = double(samples.size()) / 48'000;
        QVERIFY2(after > before + 2 && after < 8, qPrintable(QString::number(after)));
        QVERIFY(std::abs(toneLevelDbfs(middle(samples), 48'000, 1'000) + 20) < 0.5);
    }

    void aRecordingThatCannotBeReadToItsEndStaysAsItIs_data()
    {
        QTest::addColumn<int>("afterHead");
        QTest::newRow("before a fragment") << 0;
        QTest::newRow("in the head of a fragment") << 50;
        QTest::newRow("in the sound") << 4'000;
    }

    void aRecordingThatCannotBeReadToItsEndStaysAsItIs()
    {
        QFETCH(int, afterHead);
        const LogCapture log;
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 10);
        const QByteArray content = contentOf(m_path);
        const qsizetype head = content.indexOf("moof", content.size() / 2) - 4;
        {
            const FailingReads failing(m_path, off_t(head + afterHead));
            file.reset();
            waitForFastStartRewrites();
        }
        QVERIFY(log.texts(platformChannel)
                    .join(u'\n')
                    .contains(m_path + QStringLiteral(" stays in fragments. ")));
        QVERIFY(boxes(m_path).contains(QStringLiteral("moof")));
        QVERIFY(std::abs(double(decodedAudio(m_path).size()) / 48'000 - 10) < 0.03);
    }

    void aRecordingThatBreaksOffIsNotRewritten()
    {
        const LogCapture log;
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 5);
        const QString broken = m_folder->filePath(QStringLiteral("broken.m4a"));
        const QByteArray content = contentOf(m_path);
        for (const qsizetype missing : {1, 100, 6'000}) {
            putFile(broken, content.chopped(missing));
            rewriteForFastStart(FileDescriptor(::open(QFile::encodeName(broken).constData(), O_RDONLY)),
                                broken);
            waitForFastStartRewrites();
            QCOMPARE(contentOf(broken), content.chopped(missing));
        }
        QCOMPARE(log.texts(platformChannel).filter(QStringLiteral(" stays in fragments. ")).size(), 3);
    }

    void noRoomForTheRewritingLeavesTheFragments()
    {
        const LogCapture log;
        const FileSizeLimit limit;
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 5);
        limit.set(1'000); // nothing can be written any more
        file.reset();
        waitForFastStartRewrites();
        limit.lift();
        QVERIFY(log.texts(platformChannel)
                    .join(u'\n')
                    .contains(m_path + QStringLiteral(" stays in fragments. ")));
        QVERIFY(boxes(m_path).contains(QStringLiteral("moof")));
        QVERIFY(std::abs(double(decodedAudio(m_path).size()) / 48'000 - 5) < 1.2);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("a.m4a")});
    }

    void aPlaceThatCannotBeWrittenIsAnError_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<int>("number");
        QTest::newRow("no such folder") << QStringLiteral("missing/a.m4a") << ENOENT;
        QTest::newRow("a file for a folder") << QStringLiteral("plain/a.m4a") << ENOTDIR;
        QTest::newRow("a folder for a file") << QStringLiteral("folder") << EISDIR;
        QTest::newRow("not writable") << QStringLiteral("/sys/kernel/a.m4a") << EACCES;
        QTest::newRow("nothing") << QString() << ENOENT;
        QTest::newRow("too long") << QString(300, u'x') << ENAMETOOLONG;
    }

    void aPlaceThatCannotBeWrittenIsAnError()
    {
        QFETCH(QString, path);
        QFETCH(int, number);
        putFile(m_folder->filePath(QStringLiteral("plain")), "x");
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
        const QString whole = path.isEmpty() || path.startsWith(u'/') ? path : m_folder->filePath(path);
        try {
            createFile(whole);
            QFAIL("no error");
        } catch (const PlatformError &error) {
            QCOMPARE(error.domain(), QStringLiteral("posix"));
            QVERIFY2(error.code() == number ||
                         (number == EACCES && (error.code() == EPERM || error.code() == EROFS)),
                     qPrintable(error.errorDescription()));
            QVERIFY(error.errorDescription().startsWith(QStringLiteral("The file \"") + whole +
                                                        QStringLiteral("\" could not be created: ")));
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList{QStringLiteral("plain")});
    }

    void aNewFileTakesThePlaceOfAnOldOne()
    {
        putFile(m_path, "old");
        QFile reader(m_path);
        QVERIFY(reader.open(QIODevice::ReadOnly));
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000);
        QCOMPARE(reader.readAll(), QByteArray("old")); // whoever reads it keeps it
        file.reset();
        waitForFastStartRewrites();
        QVERIFY(std::abs(duration(m_path) - 1) < 0.03);
    }

    void settingsThatCannotBeMetReplaceNothing_data()
    {
        QTest::addColumn<uint>("formatID");
        QTest::addColumn<double>("rate");
        QTest::addColumn<uint>("channels");
        QTest::newRow("another format") << 0x6c70636dU << 48'000.0 << 1U;
        QTest::newRow("stereo") << kAudioFormatMPEG4AAC << 48'000.0 << 2U;
        QTest::newRow("no channel") << kAudioFormatMPEG4AAC << 48'000.0 << 0U;
        QTest::newRow("no rate") << kAudioFormatMPEG4AAC << 0.0 << 1U;
        QTest::newRow("negative") << kAudioFormatMPEG4AAC << -48'000.0 << 1U;
        QTest::newRow("no number") << kAudioFormatMPEG4AAC << std::nan("") << 1U;
        QTest::newRow("infinite") << kAudioFormatMPEG4AAC << std::numeric_limits<double>::infinity() << 1U;
    }

    void settingsThatCannotBeMetReplaceNothing()
    {
        QFETCH(uint, formatID);
        QFETCH(double, rate);
        QFETCH(uint, channels);
        putFile(m_path, "old");
        QVERIFY_EXCEPTION_THROWN(
            static_cast<void>(Platform::shared().createAudioFile(
                m_path, {.formatID = formatID, .sampleRate = rate, .channelCount = channels})),
            PlatformError);
        QCOMPARE(contentOf(m_path), QByteArray("old"));
    }

    void aFileThatWasDeletedDoesNotComeBack()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 3);
        QVERIFY(QFile::remove(m_path));
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000); // writing goes on regardless
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void aFileThatWasReplacedOrMovedIsLeftAlone()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000LL * 3);
        const QString moved = m_folder->filePath(QStringLiteral("moved.m4a"));
        QVERIFY(QFile::rename(m_path, moved));
        putFile(m_path, "another");
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(contentOf(m_path), QByteArray("another"));
        QVERIFY(std::abs(duration(moved) - 3) < 0.03); // still in fragments, and whole
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name),
                 (QStringList{QStringLiteral("a.m4a"), QStringLiteral("moved.m4a")}));
    }

    void aReplacementLooksAtWhatItReplaces()
    {
        putFile(m_path, "first");
        const struct stat first = statusOf(m_path);
        {
            ReplacementFile file(m_path);
            QCOMPARE(::write(file.fd(), "second", 6), 6);
            QVERIFY(file.replaceIfStill(first));
        }
        QCOMPARE(contentOf(m_path), QByteArray("second"));
        const struct stat second = statusOf(m_path);
        {
            ReplacementFile file(m_path);
            QVERIFY(!file.replaceIfStill(first)); // another one is there by now
        }
        QCOMPARE(contentOf(m_path), QByteArray("second"));
        QVERIFY(QFile::remove(m_path));
        {
            ReplacementFile file(m_path);
            QVERIFY(!file.replaceIfStill(second)); // nothing is there any more
        }
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    void whatIsNoRecordingStaysAsItIs()
    {
        const LogCapture log;
        putFile(m_path, QByteArray(5'000, 'x'));
        rewriteForFastStart(FileDescriptor(::open(QFile::encodeName(m_path).constData(), O_RDONLY)), m_path);
        waitForFastStartRewrites();
        QCOMPARE(contentOf(m_path), QByteArray(5'000, 'x'));
        QCOMPARE(log.texts(platformChannel).size(), 1);
        QVERIFY(
            log.texts(platformChannel).first().startsWith(m_path + QStringLiteral(" stays in fragments. ")));
    }

    void thePermissionsOfTheFileStay()
    {
        auto file = createFile(m_path);
        Tone(48'000, 1'000, -20).writeTo(*file, 48'000);
        QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner));
        file.reset();
        waitForFastStartRewrites();
        QCOMPARE(statusOf(m_path).st_mode & 0777U, 0600U);
        QVERIFY(!boxes(m_path).contains(QStringLiteral("moof")));
    }

private:
    std::optional<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(RecordingSafetyTest)
#include "RecordingSafetyTest.moc"
