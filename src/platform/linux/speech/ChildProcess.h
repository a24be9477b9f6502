#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

#include <sys/types.h>

namespace talvenor {

/// A program that runs for us and whose output we read line by line.
///
/// It leads a process group of its own, has nothing on its standard input and no other of our files, yields
/// to more urgent work, and ends with the thread that has started it, whatever ends that. Made, waited for
/// and destroyed on one thread, which must live that long; `kill` may be called on any.
class ChildProcess
{
public:
    /// How a program has ended.
    struct Ending
    {
        bool bySignal = false;
        int number = 0; ///< the exit code or the signal's number

        [[nodiscard]] bool isSuccess() const { return !bySignal && number == 0; }
        /// "exit code 3" or "signal 9".
        [[nodiscard]] QString description() const;
    };
    /// Gets one line without its end; very long ones come in pieces.
    using LineHandler = std::function<void(const QByteArray &line)>;

    /// Starts the program at the absolute path `program`; throws PlatformError if that cannot be done.
    ChildProcess(const QString &program, const QStringList &arguments);
    /// Ends the program if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    /// Waits for the end, handing over standard output meanwhile; kills the program after `limit` if one is
    /// given. Once only.
    Ending wait(const LineHandler &onLine, std::optional<std::chrono::milliseconds> limit = std::nullopt);

    /// The last kilobytes of standard error so far.
    [[nodiscard]] const QByteArray &errorOutput() const { return m_errorOutput; }

    /// Kills the program and what it has started. Nothing happens if it has ended.
    void kill();

private:
    void readPipes(const LineHandler &onLine, std::optional<std::chrono::milliseconds> limit);
    [[nodiscard]] Ending reap();

    std::mutex m_lock;
    pid_t m_pid = -1; ///< guarded by m_lock; negative once the process table may have given it to another
    int m_output = -1;
    int m_error = -1;
    QByteArray m_errorOutput;
};

} // namespace talvenor
