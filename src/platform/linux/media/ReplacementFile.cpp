#include "platform/linux/media/ReplacementFile.h"

#include "foundation/LocalizedError.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace talvenor {

namespace {

// As an ordinary program makes its files; the user's mask takes away from it.
constexpr mode_t fileMode = 0666;
constexpr int attempts = 16;

QString couldNotCreate(const QByteArray &path)
{
    return QStringLiteral("The file \"%1\" could not be created").arg(QFile::decodeName(path));
}

bool isSameFile(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

void throwPosixError(int number, const QString &what)
{
    throw PlatformError(QStringLiteral("posix"), number,
                        what + QStringLiteral(": ") + qt_error_string(number));
}

FileDescriptor::~FileDescriptor()
{
    if (m_fd >= 0)
        static_cast<void>(::close(m_fd)); // what matters was synchronised before
}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept
{
    std::swap(m_fd, other.m_fd);
    return *this;
}

int FileDescriptor::release() noexcept
{
    return std::exchange(m_fd, -1);
}

ReplacementFile::ReplacementFile(const QString &path)
    : m_path(QFile::encodeName(path)), m_folder(QFile::encodeName(QFileInfo(path).path()))
{
    if (path.isEmpty())
        throwPosixError(ENOENT, couldNotCreate(m_path));
    m_fd = FileDescriptor(::open(m_folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, fileMode));
    if (m_fd.isOpen())
        return;
    // Some file systems, and old kernels, know no files without a name.
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
        throwPosixError(errno, couldNotCreate(m_path));
    if (!openNamed())
        throwPosixError(errno, couldNotCreate(m_path));
}

ReplacementFile::~ReplacementFile()
{
    if (!m_temporaryName.isEmpty())
        static_cast<void>(::unlink(m_temporaryName.constData())); // there is nothing more to be done about it
}

QByteArray ReplacementFile::randomName() const
{
    return m_folder + "/.talvenor-" + QByteArray::number(QRandomGenerator::global()->generate64(), 36) +
           ".tmp";
}

bool ReplacementFile::openNamed()
{
    for (int i = 0; i < attempts; ++i) {
        const QByteArray name = randomName();
        m_fd = FileDescriptor(::open(name.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, fileMode));
        if (m_fd.isOpen()) {
            m_temporaryName = name;
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

void ReplacementFile::giveName()
{
    if (!m_temporaryName.isEmpty())
        return;
    const QByteArray self = "/proc/self/fd/" + QByteArray::number(m_fd.get());
    for (int i = 0; i < attempts; ++i) {
        const QByteArray name = randomName();
        if (::linkat(AT_FDCWD, self.constData(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            m_temporaryName = name;
            return;
        }
        if (errno != EEXIST)
            break;
    }
    throwPosixError(errno, couldNotCreate(m_path));
}

void ReplacementFile::replace()
{
    giveName();
    if (::rename(m_temporaryName.constData(), m_path.constData()) != 0)
        throwPosixError(errno, couldNotCreate(m_path));
    m_temporaryName.clear();
}

bool ReplacementFile::replaceIfStill(const struct stat &expected)
{
    giveName();
    // An exchange fails where nothing is any more, and shows afterwards what was there.
    if (::renameat2(AT_FDCWD, m_temporaryName.constData(), AT_FDCWD, m_path.constData(), RENAME_EXCHANGE) ==
        0) {
        struct stat found
        {
        };
        if (::lstat(m_temporaryName.constData(), &found) == 0 && isSameFile(found, expected))
            return true; // the destructor removes the old one
        if (::renameat2(AT_FDCWD, m_temporaryName.constData(), AT_FDCWD, m_path.constData(),
                        RENAME_EXCHANGE) != 0) {
            m_temporaryName.clear(); // it may be somebody's only copy
        }
        return false;
    }
    if (errno == ENOENT)
        return false;
    if (errno != EINVAL && errno != ENOSYS)
        throwPosixError(errno, couldNotCreate(m_path));
    // The file system cannot exchange; what is left is a look just before.
    struct stat found
    {
    };
    if (::lstat(m_path.constData(), &found) != 0 || !isSameFile(found, expected))
        return false;
    replace();
    return true;
}

} // namespace talvenor
