#include "store/StorageService.h"

#include "StoreFixture.h"

#include "settings/AppSettings.h"
#include "store/RecordingsDecoder.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <cstdio>

namespace talvenor {

namespace {

/// One of two lists of about a megabyte that differ in order and length but not in the recordings, so that
/// nearly all the time of a save is spent on the disk and not on encoding.
QList<Recording> alternative(bool second)
{
    QList<Recording> list;
    for (int i = 0; i < 8; ++i)
        list.append(test::longMeeting(60, i));
    if (second) {
        std::reverse(list.begin(), list.end());
        list.prepend(test::longMeeting(1, 100));
    }
    return list;
}

/// What the child processes do with a folder.
int childMain(const QString &mode, const QString &folder)
{
    AppSettings::shared().setStorageDirectory(folder);
    StorageService &storage = StorageService::shared();
    const QList<Recording> one = alternative(false);
    const QList<Recording> other = alternative(true);
    if (mode == u"--save-and-exit") {
        for (int i = 0; i < 10; ++i)
            storage.saveRecordings(i % 2 == 0 ? one : other);
        // Nothing waits here: the end of the process does.
        return 0;
    }
    storage.saveRecordings(one);
    storage.saveRecordings(other);
    storage.waitUntilSaved();
    std::puts("saved");
    std::fflush(stdout);
    while (true) {
        storage.saveRecordings(one);
        storage.saveRecordings(other);
        storage.waitUntilSaved();
    }
}

} // namespace

class StorageKillTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aKilledProcessLeavesTheOldOrTheNewFile();
    void theEndOfTheProcessWritesWhatIsWaiting();
};

void StorageKillTest::aKilledProcessLeavesTheOldOrTheNewFile()
{
    const QTemporaryDir folder;
    const QList<Recording> one = alternative(false);
    const QList<Recording> other = alternative(true);
    QRandomGenerator random(20261120);
    int caughtWriting = 0;
    for (int round = 0; round < 60; ++round) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("--save-forever"), folder.path()});
        QVERIFY(child.waitForReadyRead(30'000));
        // The moment of the kill is the subject here, and any will do.
        QThread::usleep(random.bounded(40'000));
        child.kill();
        QVERIFY(child.waitForFinished());
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);

        const QList<Recording> found = readRecordings(folder.filePath(QStringLiteral("recordings.json")));
        QVERIFY(test::isSameList(found, one) || test::isSameList(found, other));
        // One unfinished file may be left, which the next save uses again.
        const auto entries =
            QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        QVERIFY2(entries.size() <= 2, qPrintable(entries.join(u' ')));
        caughtWriting += entries.size() == 2;
    }
    qInfo("%d of 60 kills fell into a write", caughtWriting);
    QVERIFY(caughtWriting > 0);
}

void StorageKillTest::theEndOfTheProcessWritesWhatIsWaiting()
{
    const QTemporaryDir folder;
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--save-and-exit"), folder.path()});
    QVERIFY(child.waitForFinished(60'000));
    QCOMPARE(child.exitStatus(), QProcess::NormalExit);
    QCOMPARE(child.exitCode(), 0);
    const QList<Recording> found = readRecordings(folder.filePath(QStringLiteral("recordings.json")));
    QVERIFY(test::isSameList(found, alternative(true)));
}

} // namespace talvenor

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3 && arguments[1].startsWith(u"--save"))
        return talvenor::childMain(arguments[1], arguments[2]);
    talvenor::StorageKillTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "StorageKillTest.moc"
