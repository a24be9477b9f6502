#include "platform/linux/speech/ChildProcess.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/speech/PrivateFolder.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cerrno>
#include <csignal>

#include <sys/file.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace talvenor;
using namespace std::chrono_literals;

namespace {

/// Whether the file system of this program has locks; some of those that lie on a network have none.
std::atomic<bool> locksWork = true;

const QString kShell = QStringLiteral("/bin/sh");

QStringList script(const char *text)
{
    return {QStringLiteral("-c"), QString::fromUtf8(text)};
}

struct Run
{
    ChildProcess::Ending ending;
    QList<QByteArray> lines;
    QByteArray errorOutput;
};

Run run(const char *text)
{
    ChildProcess process(kShell, script(text));
    Run result;
    result.ending = process.wait([&](const QByteArray &line) { result.lines.append(line); });
    result.errorOutput = process.errorOutput();
    return result;
}

bool isAlive(pid_t pid)
{
    // A process that has ended but that nobody has collected is not alive.
    QFile status(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    const QByteArray text = status.readAll();
    const QByteArray state = text.mid(text.lastIndexOf(')') + 2, 1);
    return state != "Z" && state != "X";
}

} // namespace

/// Programs that run for us, and the folder they work in.
class ChildProcessTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesComeOneByOne()
    {
        const Run result = run("printf 'one\\ntwo\\n\\nlast without end'");
        QVERIFY(result.ending.isSuccess());
        QCOMPARE(result.lines, QList<QByteArray>({"one", "two", "", "last without end"}));
    }

    void linesComeBeforeTheEnd()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("go"));
        // The program goes on only after its first line has been seen.
        ChildProcess process(
            kShell,
            {QStringLiteral("-c"),
             QStringLiteral("echo first; until [ -e \"$0\" ]; do sleep 0.01; done; echo second"), path});
        QList<QByteArray> lines;
        const auto ending = process.wait([&](const QByteArray &line) {
            lines.append(line);
            QFile(path).open(QIODevice::WriteOnly);
        });
        QVERIFY(ending.isSuccess());
        QCOMPARE(lines, QList<QByteArray>({"first", "second"}));
    }

    void muchOutputOnBothSidesDoesNotBlock()
    {
        const Run result =
            run("i=0; while [ $i -lt 3000 ]; do echo out$i; "
                "echo errrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrrr$i >&2; i=$((i+1)); done");
        QVERIFY(result.ending.isSuccess());
        QCOMPARE(result.lines.size(), 3000);
        QVERIFY(result.errorOutput.size() <= 4096);
        QVERIFY(result.errorOutput.endsWith("r2999\n"));
    }

    void aLineWithoutAnEndComesInPieces()
    {
        const Run result = run("head -c 5000000 /dev/zero");
        QVERIFY(result.lines.size() > 1);
        qsizetype sum = 0;
        for (const QByteArray &line : result.lines)
            sum += line.size();
        QCOMPARE(sum, 5'000'000);
    }

    void theEndingIsTold()
    {
        const Run code = run("exit 3");
        QVERIFY(!code.ending.isSuccess());
        QCOMPARE(code.ending.description(), QStringLiteral("exit code 3"));
        const Run signal = run("kill -SEGV $$");
        QVERIFY(signal.ending.bySignal);
        QCOMPARE(signal.ending.description(), QStringLiteral("signal %1").arg(SIGSEGV));
        QVERIFY(!(ChildProcess::Ending{true, 0}.isSuccess()));
    }

    void whatCannotBeStartedIsAnError()
    {
        try {
            ChildProcess process(QStringLiteral("/nowhere/program"), {});
            QFAIL("nothing was thrown");
        } catch (const PlatformError &error) {
            QCOMPARE(error.domain(), QStringLiteral("process"));
            QCOMPARE(error.code(), ENOENT);
            QVERIFY(error.errorDescription().startsWith(QStringLiteral("A program cannot be started: ")));
        }
    }

    void aLimitEndsWhatHangs()
    {
        ChildProcess process(kShell, script("sleep 600"));
        const auto ending = process.wait([](const QByteArray &) {}, 50ms);
        QVERIFY(ending.bySignal);
        QCOMPARE(ending.number, SIGKILL);
    }

    void killingEndsWhatTheProgramHasStartedToo()
    {
        ChildProcess process(kShell, script("sleep 600 & echo $!; wait"));
        pid_t grandchild = 0;
        const auto ending = process.wait([&](const QByteArray &line) {
            grandchild = line.toInt();
            process.kill();
        });
        QVERIFY(ending.bySignal);
        QVERIFY(grandchild > 0);
        QVERIFY(test::waitUntil([&] { return !isAlive(grandchild); }));
    }

    void destroyingEndsTheProgram()
    {
        pid_t pid = 0;
        {
            ChildProcess process(
                kShell,
                script("echo $$ > \"$TMPDIR/pid\"; mv \"$TMPDIR/pid\" \"$TMPDIR/pid.done\"; exec sleep 600"));
            QFile file(QDir::temp().filePath(QStringLiteral("pid.done")));
            QVERIFY(test::waitUntil([&] { return file.exists(); }));
            QVERIFY(file.open(QIODevice::ReadOnly));
            pid = file.readAll().trimmed().toInt();
            QVERIFY(file.remove());
            QVERIFY(isAlive(pid));
        }
        QVERIFY(!isAlive(pid));
    }

    void theProgramEndsWithUsHoweverThatHappens()
    {
        // Our process is killed where nothing can be cleaned up.
        int ends[2];
        QCOMPARE(::pipe(ends), 0);
        const pid_t parent = ::fork();
        if (parent == 0) {
            ChildProcess orphan(kShell, script("echo $$; exec sleep 600 2>/dev/null"));
            static_cast<void>(orphan.wait([&](const QByteArray &line) {
                const int number = line.toInt();
                static_cast<void>(!::write(ends[1], &number, sizeof number));
            }));
            ::_exit(0);
        }
        int orphan = 0;
        QCOMPARE(::read(ends[0], &orphan, sizeof orphan), ssize_t(sizeof orphan));
        QVERIFY(isAlive(orphan));
        QCOMPARE(::kill(parent, SIGKILL), 0);
        QCOMPARE(::waitpid(parent, nullptr, 0), parent);
        QVERIFY(test::waitUntil([&] { return !isAlive(orphan); }));
        ::close(ends[0]);
        ::close(ends[1]);
    }

    void theProgramHasNoneOfOurFiles()
    {
        QFile secret(QDir::temp().filePath(QStringLiteral("secret")));
        QVERIFY(secret.open(QIODevice::WriteOnly));
        // Even one that somebody has opened without the usual flag.
        const int inherited = ::dup(secret.handle());
        QVERIFY(inherited > 2);
        const Run result = run("ls -l /proc/$$/fd; cat");
        ::close(inherited);
        QVERIFY(result.ending.isSuccess()); // "cat" has found nothing on its input
        QVERIFY(!result.lines.join('\n').contains("secret"));
    }

    void aPrivateFolderIsPrivateAndGoesAway()
    {
        QString path;
        {
            const PrivateFolder folder;
            path = folder.filePath(QStringLiteral("audio.wav"));
            const QFileInfo information(QFileInfo(path).path());
            QCOMPARE(information.permissions() & 0x0fff,
                     QFile::Permissions(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser) & 0x0fff);
            QVERIFY(QFile(path).open(QIODevice::WriteOnly));
            QVERIFY(QFile::exists(path));
        }
        QVERIFY(!QFileInfo::exists(QFileInfo(path).path()));
    }

    void aFileSystemWithoutLocksHasPrivateFoldersToo()
    {
        locksWork = false;
        const auto again = qScopeGuard([] { locksWork = true; });
        const PrivateFolder inUse;
        QFile audio(inUse.filePath(QStringLiteral("audio.wav")));
        QVERIFY(audio.open(QIODevice::WriteOnly));
        const PrivateFolder next;
        QVERIFY(audio.exists()); // nobody can tell whether it is in use
    }

    void whatAKilledProgramHasLeftIsRemovedAndWhatIsInUseIsNot()
    {
        const PrivateFolder inUse;
        int ends[2];
        QCOMPARE(::pipe(ends), 0);
        const pid_t other = ::fork();
        if (other == 0) {
            const PrivateFolder left;
            QFile(left.filePath(QStringLiteral("audio.wav"))).open(QIODevice::WriteOnly);
            const QByteArray name = QFile::encodeName(left.filePath(QStringLiteral("audio.wav")));
            static_cast<void>(!::write(ends[1], name.constData(), std::size_t(name.size())));
            for (;;)
                ::pause();
        }
        char buffer[4096];
        const ssize_t length = ::read(ends[0], buffer, sizeof buffer);
        QVERIFY(length > 0);
        const QString left = QFile::decodeName(QByteArray(buffer, length));
        QVERIFY(QFile::exists(left));
        {
            const PrivateFolder next;
            QVERIFY(QFile::exists(left)); // its owner lives
        }
        QCOMPARE(::kill(other, SIGKILL), 0);
        QCOMPARE(::waitpid(other, nullptr, 0), other);
        QVERIFY(QFile::exists(left));
        const PrivateFolder next;
        QVERIFY(!QFile::exists(left));
        QVERIFY(QFileInfo::exists(QFileInfo(inUse.filePath(QStringLiteral("x"))).path()));
        ::close(ends[0]);
        ::close(ends[1]);
    }
};

/// Takes the place of the C library's function.
extern "C" int flock(int fd, int operation) noexcept
{
    if (!locksWork) {
        errno = ENOLCK;
        return -1;
    }
    return int(::syscall(SYS_flock, fd, operation));
}

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcessTest.moc"
