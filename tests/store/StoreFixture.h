#pragma once

#include "store/Recording.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <csignal>
#include <sys/resource.h>

namespace talvenor::test {

/// A finished recording with everything in it: two segments, one with a speaker, two participants, a summary.
[[nodiscard]] Recording fullRecording();

/// A meeting of `minutes` minutes with one spoken line of about 90 characters every five seconds, every part
/// of it different for different values of `seed`.
[[nodiscard]] Recording longMeeting(int minutes, int seed);

/// Whether all fields of the two are equal, dates by the second.
[[nodiscard]] bool isSameRecording(const Recording &a, const Recording &b);
[[nodiscard]] bool isSameList(const QList<Recording> &a, const QList<Recording> &b);

/// The content of a file; a missing one reads as null.
[[nodiscard]] QByteArray readFile(const QString &path);
/// Writes a file plainly; false if that fails.
bool writeFile(const QString &path, const QByteArray &content);

/// Takes what the process writes to standard output while it lives.
class StandardOutputCapture
{
public:
    StandardOutputCapture();
    ~StandardOutputCapture();
    Q_DISABLE_COPY_MOVE(StandardOutputCapture)

    /// Ends the capture and gives what was written, without looking into the program's own buffers: what was
    /// not flushed is not in it.
    [[nodiscard]] QByteArray take();

private:
    int m_original = -1;
    int m_file = -1;
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

} // namespace talvenor::test
