#include "platform/linux/playback/PlaybackFile.h"

#include "foundation/LocalizedError.h"
#include "platform/linux/media/AudioDecoder.h"
#include "platform/linux/media/Mp4Boxes.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <vector>

namespace talvenor {

namespace {

/// The length of the file's sound in seconds; throws PlatformError if none of it can be decoded.
double checkedDuration(const QString &path)
{
    AudioDecoder decoder(path);
    std::vector<std::int16_t> samples;
    static_cast<void>(decoder.read(samples)); // throws where there is nothing at all
    return decoder.duration();
}

[[noreturn]] void throwNotOpened(int code)
{
    throw PlatformError(QStringLiteral("file"), code,
                        QStringLiteral("The audio file cannot be opened: ") + qt_error_string(code));
}

} // namespace

PlaybackFile::PlaybackFile(const QString &path) : m_duration(checkedDuration(path))
{
    // Another file may have taken the name by now, a pipe among them, which must not keep anybody waiting.
    m_descriptor =
        FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!m_descriptor.isOpen())
        throwNotOpened(errno);
    struct stat status
    {
    };
    if (::fstat(m_descriptor.get(), &status) != 0)
        throwNotOpened(errno);
    if (!S_ISREG(status.st_mode))
        throwNotOpened(EINVAL);
    // libav rejects a file that breaks off within the head of a fragment.
    m_size = std::min<qint64>(endOfWholeBoxes(path).value_or(status.st_size), status.st_size);
}

qint64 PlaybackFile::read(char *buffer, quint64 count, qint64 offset) const
{
    if (offset < 0 || offset >= m_size)
        return 0;
    const auto wanted = std::min<quint64>(count, quint64(m_size - offset));
    for (;;) {
        const ssize_t got = ::pread(m_descriptor.get(), buffer, wanted, offset);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}

} // namespace talvenor
