#include "platform/AtomicFile.h"

#include "foundation/LocalizedError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace talvenor {

class AtomicFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void theFileHoldsAllPiecesInOrder();
    void anOlderFileKeepsItsPermissions();
    void aSymbolicLinkStaysAndItsTargetChanges();
    void aHardLinkKeepsTheOldContent();
    void whatIsNoFileIsNotReplaced();
    void aMissingFolderIsAnError();
    void longAndOddNamesWork();
    void whatAKilledProcessLeftBehindIsUsedAgain();
    void aTemporaryFileInUseIsLeftAlone();
    void manyThreadsWriteIntoOneFolder();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    static void write(const QString &path, QByteArrayView content)
    {
        writeFileAtomically(path, std::array{content});
    }
    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    [[nodiscard]] QStringList entries() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void AtomicFileTest::theFileHoldsAllPiecesInOrder()
{
    // More pieces than the system takes at once, empty ones among them.
    QByteArrayList parts;
    for (int i = 0; i < 5000; ++i)
        parts.append(i % 7 == 0 ? QByteArray() : QByteArray::number(i));
    std::vector<QByteArrayView> pieces(parts.begin(), parts.end());
    writeFileAtomically(path(QStringLiteral("a")), pieces);
    QCOMPARE(read(path(QStringLiteral("a"))), parts.join());
    writeFileAtomically(path(QStringLiteral("a")), {});
    QCOMPARE(QFileInfo(path(QStringLiteral("a"))).size(), 0);
    QVERIFY(QFileInfo::exists(path(QStringLiteral("a"))));
    write(path(QStringLiteral("a")), QByteArray());
    QCOMPARE(entries(), QStringList{QStringLiteral("a")});
}

void AtomicFileTest::anOlderFileKeepsItsPermissions()
{
    const QByteArray name = QFile::encodeName(path(QStringLiteral("a")));
    write(path(QStringLiteral("a")), "old");
    QCOMPARE(chmod(name.constData(), 0640), 0);
    write(path(QStringLiteral("a")), "new");
    struct stat status = {};
    QCOMPARE(stat(name.constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0640U);
    QCOMPARE(read(path(QStringLiteral("a"))), QByteArray("new"));
}

void AtomicFileTest::aSymbolicLinkStaysAndItsTargetChanges()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("elsewhere")));
    const QString target = path(QStringLiteral("elsewhere/target"));
    write(target, "old");
    QVERIFY(QFile::link(target, path(QStringLiteral("link"))));
    write(path(QStringLiteral("link")), "new");
    QCOMPARE(read(target), QByteArray("new"));
    QVERIFY(QFileInfo(path(QStringLiteral("link"))).isSymLink());
}

void AtomicFileTest::aHardLinkKeepsTheOldContent()
{
    write(path(QStringLiteral("a")), "old");
    QCOMPARE(link(QFile::encodeName(path(QStringLiteral("a"))).constData(),
                  QFile::encodeName(path(QStringLiteral("b"))).constData()),
             0);
    write(path(QStringLiteral("a")), "new");
    QCOMPARE(read(path(QStringLiteral("b"))), QByteArray("old"));
}

void AtomicFileTest::whatIsNoFileIsNotReplaced()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QVERIFY_EXCEPTION_THROWN(write(path(QStringLiteral("folder")), "x"), PlatformError);
    QCOMPARE(mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0600), 0);
    QVERIFY_EXCEPTION_THROWN(write(path(QStringLiteral("pipe")), "x"), PlatformError);
    QVERIFY_EXCEPTION_THROWN(write(QStringLiteral("/dev/null"), "x"), PlatformError);
    const QStringList expected{QStringLiteral("folder"), QStringLiteral("pipe")};
    QCOMPARE(entries(), expected);
}

void AtomicFileTest::aMissingFolderIsAnError()
{
    try {
        write(path(QStringLiteral("missing/a")), "x");
        QFAIL("nothing was thrown");
    } catch (const PlatformError &error) {
        QCOMPARE(error.code(), ENOENT);
        QCOMPARE(error.domain(), QStringLiteral("file"));
        QVERIFY(error.errorDescription().contains(path(QStringLiteral("missing/a"))));
    }
    QVERIFY_EXCEPTION_THROWN(write(QString(), "x"), PlatformError);
    QVERIFY_EXCEPTION_THROWN(write(path(QStringLiteral("a")) + QChar(QChar::Null) + u'b', "x"),
                             PlatformError);
    QVERIFY(entries().isEmpty());
}

void AtomicFileTest::longAndOddNamesWork()
{
    for (const QString &name :
         {QString(255, u'n'), QStringLiteral("Grüße \"an\" alle\n😀.md"), QStringLiteral(" ")}) {
        write(path(name), "x");
        QCOMPARE(read(path(name)), QByteArray("x"));
    }
    QVERIFY_EXCEPTION_THROWN(write(path(QString(256, u'n')), "x"), PlatformError);
    QCOMPARE(entries().size(), 3);
}

void AtomicFileTest::whatAKilledProcessLeftBehindIsUsedAgain()
{
    write(path(QStringLiteral(".talvenor-saving-0")), "a long unfinished text of another time");
    write(path(QStringLiteral("a")), "new");
    QCOMPARE(read(path(QStringLiteral("a"))), QByteArray("new"));
    QCOMPARE(entries(), QStringList{QStringLiteral("a")});
}

void AtomicFileTest::aTemporaryFileInUseIsLeftAlone()
{
    const QString name = path(QStringLiteral(".talvenor-saving-0"));
    const int other = open(QFile::encodeName(name).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    QVERIFY(other >= 0);
    QCOMPARE(flock(other, LOCK_EX), 0);
    QCOMPARE(::write(other, "theirs", 6), 6);
    write(path(QStringLiteral("a")), "ours");
    QCOMPARE(read(path(QStringLiteral("a"))), QByteArray("ours"));
    QCOMPARE(read(name), QByteArray("theirs"));
    close(other);
    // Nor is a link followed, or a file with another name emptied.
    QVERIFY(QFile::remove(name));
    write(path(QStringLiteral("precious")), "precious");
    QVERIFY(QFile::link(path(QStringLiteral("precious")), name));
    QCOMPARE(link(QFile::encodeName(path(QStringLiteral("precious"))).constData(),
                  QFile::encodeName(path(QStringLiteral(".talvenor-saving-1"))).constData()),
             0);
    write(path(QStringLiteral("a")), "again");
    QCOMPARE(read(path(QStringLiteral("a"))), QByteArray("again"));
    QCOMPARE(read(path(QStringLiteral("precious"))), QByteArray("precious"));
}

void AtomicFileTest::manyThreadsWriteIntoOneFolder()
{
    const QByteArray one(200'000, '1');
    const QByteArray other(300'000, '2');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this, content = i % 2 == 0 ? one : other] {
            for (int round = 0; round < 20; ++round)
                write(path(QStringLiteral("a")), content);
        });
    for (std::thread &thread : threads)
        thread.join();
    const QByteArray result = read(path(QStringLiteral("a")));
    QVERIFY(result == one || result == other);
    QCOMPARE(entries(), QStringList{QStringLiteral("a")});
}

} // namespace talvenor

QTEST_GUILESS_MAIN(talvenor::AtomicFileTest)
#include "AtomicFileTest.moc"
