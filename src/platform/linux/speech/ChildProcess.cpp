#include "platform/linux/speech/ChildProcess.h"

#include "foundation/LocalizedError.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace talvenor {

namespace {

constexpr qsizetype kMaximumLineLength = 1 << 20;
constexpr qsizetype kKeptErrorOutput = 4096;
constexpr int kNiceness = 5; // a recording that has begun meanwhile comes first

void closeDescriptor(int &descriptor)
{
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

struct Pipe
{
    int reading = -1;
    int writing = -1;

    Pipe()
    {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            throw PlatformError(QStringLiteral("process"), errno,
                                QStringLiteral("No program can be started: ") +
                                    QString::fromStdString(std::system_category().message(errno)));
        reading = ends[0];
        writing = ends[1];
    }
    ~Pipe()
    {
        closeDescriptor(reading);
        closeDescriptor(writing);
    }
    Pipe(const Pipe &) = delete;
    Pipe &operator=(const Pipe &) = delete;
};

// Runs in the forked child, where only calls that are safe in signal handlers are allowed.
[[noreturn]] void becomeProgram(char *const *arguments, pid_t parent, int output, int error, int failure)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent)
        ::_exit(127); // the parent had ended before the request was made
    ::setpriority(PRIO_PROCESS, 0, kNiceness);
    ::signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(error, STDERR_FILENO);
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    ::execv(arguments[0], arguments);
    const int code = errno;
    static_cast<void>(!::write(failure, &code, sizeof code));
    ::_exit(127);
}

void handOverLines(QByteArray &pending, const ChildProcess::LineHandler &onLine)
{
    qsizetype start = 0;
    for (qsizetype end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n', start)) {
        onLine(pending.mid(start, end - start));
        start = end + 1;
    }
    pending.remove(0, start);
    if (pending.size() > kMaximumLineLength) {
        onLine(pending);
        pending.clear();
    }
}

// False at the end of the stream.
bool readSome(int descriptor, QByteArray &into)
{
    std::array<char, 65536> chunk; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
    const ssize_t count = ::read(descriptor, chunk.data(), chunk.size());
    if (count > 0)
        into.append(chunk.data(), count);
    return count > 0 || (count < 0 && errno == EINTR);
}

} // namespace

QString ChildProcess::Ending::description() const
{
    return (bySignal ? QStringLiteral("signal %1") : QStringLiteral("exit code %1")).arg(number);
}

ChildProcess::ChildProcess(const QString &program, const QStringList &arguments)
{
    // All memory is made before the fork; the child may not allocate.
    std::vector<QByteArray> texts{QFile::encodeName(program)};
    for (const QString &argument : arguments)
        texts.push_back(QFile::encodeName(argument));
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);

    Pipe output;
    Pipe error;
    Pipe failure;
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        becomeProgram(pointers.data(), parent, output.writing, error.writing, failure.writing);
    if (child < 0)
        throw PlatformError(QStringLiteral("process"), errno,
                            QStringLiteral("No program can be started: ") +
                                QString::fromStdString(std::system_category().message(errno)));
    ::setpgid(child, child); // whichever of the two comes first
    m_pid = child;

    closeDescriptor(failure.writing);
    int code = 0;
    ssize_t count = 0;
    do {
        count = ::read(failure.reading, &code, sizeof code);
    } while (count < 0 && errno == EINTR);
    if (count == ssize_t(sizeof code)) {
        static_cast<void>(reap());
        throw PlatformError(QStringLiteral("process"), code,
                            QStringLiteral("A program cannot be started: ") +
                                QString::fromStdString(std::system_category().message(code)));
    }
    m_output = std::exchange(output.reading, -1);
    m_error = std::exchange(error.reading, -1);
}

ChildProcess::~ChildProcess()
{
    kill();
    if (m_pid > 0)
        static_cast<void>(reap());
    closeDescriptor(m_output);
    closeDescriptor(m_error);
}

ChildProcess::Ending ChildProcess::wait(const LineHandler &onLine,
                                        std::optional<std::chrono::milliseconds> limit)
{
    readPipes(onLine, limit);
    return reap();
}

void ChildProcess::readPipes(const LineHandler &onLine, std::optional<std::chrono::milliseconds> limit)
{
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> deadline;
    if (limit)
        deadline = Clock::now() + *limit;
    QByteArray pending;
    while (m_output >= 0 || m_error >= 0) {
        std::array<pollfd, 2> descriptors{{{m_output, POLLIN, 0}, {m_error, POLLIN, 0}}};
        int milliseconds = -1;
        if (deadline) {
            const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
            milliseconds = int(std::max<std::int64_t>(0, rest));
        }
        const int ready = ::poll(descriptors.data(), descriptors.size(), milliseconds);
        if (ready == 0) {
            kill();
            deadline.reset();
        }
        if (ready <= 0)
            continue;
        if (descriptors[0].revents != 0) {
            if (!readSome(m_output, pending))
                closeDescriptor(m_output);
            handOverLines(pending, onLine);
        }
        if (descriptors[1].revents != 0) {
            if (!readSome(m_error, m_errorOutput))
                closeDescriptor(m_error);
            m_errorOutput = m_errorOutput.right(kKeptErrorOutput);
        }
    }
    if (!pending.isEmpty())
        onLine(pending);
}

ChildProcess::Ending ChildProcess::reap()
{
    // Wait first and collect under the lock: a number that has been collected may belong to another process.
    siginfo_t information{};
    while (::waitid(P_PID, id_t(m_pid), &information, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const std::lock_guard guard(m_lock);
    int status = 0;
    while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
    }
    m_pid = -1;
    if (WIFSIGNALED(status))
        return {true, WTERMSIG(status)};
    return {false, WEXITSTATUS(status)};
}

void ChildProcess::kill()
{
    const std::lock_guard guard(m_lock);
    if (m_pid > 0)
        ::kill(-m_pid, SIGKILL);
}

} // namespace talvenor
