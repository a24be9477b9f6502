#include "platform/AtomicFile.h"

#include "foundation/LocalizedError.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace talvenor {

namespace {

[[noreturn]] void throwErrno(int code, const QString &path)
{
    throw PlatformError(QStringLiteral("file"), code, qt_error_string(code) + QStringLiteral(": ") + path);
}

/// An open file that closes itself.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    Descriptor(Descriptor &&other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            close(m_number);
    }

    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    [[nodiscard]] int number() const { return m_number; }

private:
    int m_number;
};

/// The hidden file that is written before it takes its name; removed if it never does.
class TemporaryFile
{
public:
    TemporaryFile(const QByteArray &folder, const QString &path)
    {
        int code = EBUSY;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            m_name = folder + "/.talvenor-saving-" + QByteArray::number(attempt);
            if (tryOpen(code))
                return;
            if (code == ENOENT || code == ENOTDIR)
                break; // the folder itself is missing
        }
        throwErrno(code, path);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;
    ~TemporaryFile()
    {
        // Before the lock goes with the descriptor: afterwards the name may be another writer's.
        if (!m_renamed)
            unlink(m_name.constData());
    }

    [[nodiscard]] int descriptor() const { return m_file.number(); }

    /// Gives the file its name; false and an errno if that fails.
    bool rename(const QByteArray &target)
    {
        m_renamed = std::rename(m_name.constData(), target.constData()) == 0;
        return m_renamed;
    }

private:
    // A handful of names, each taken by whoever holds the lock on it: a name that a killed process has left
    // behind is free again, while one in use by another thread or process is not touched.
    static constexpr int attempts = 16;

    bool tryOpen(int &code)
    {
        Descriptor file(
            open(m_name.constData(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0666));
        struct stat opened = {};
        struct stat named = {};
        if (!file.isOpen() || fstat(file.number(), &opened) != 0) {
            code = errno;
            return false;
        }
        // Somebody else's pipe or file, or a second name of a file that must keep its content.
        if (!S_ISREG(opened.st_mode) || opened.st_nlink > 1 || opened.st_uid != geteuid()) {
            code = EEXIST;
            return false;
        }
        // Where the file system has no locks there is also nobody to lock out.
        if (flock(file.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            code = EWOULDBLOCK;
            return false;
        }
        // The one who held the lock before may have renamed the file in the meantime.
        if (lstat(m_name.constData(), &named) != 0 || named.st_dev != opened.st_dev ||
            named.st_ino != opened.st_ino) {
            code = EWOULDBLOCK;
            return false;
        }
        if (ftruncate(file.number(), 0) != 0) {
            code = errno;
            return false;
        }
        m_file = std::move(file);
        return true;
    }

    QByteArray m_name;
    Descriptor m_file;
    bool m_renamed = false;
};

/// The file that `path` names in the end, through symbolic links.
QByteArray resolved(const QByteArray &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.constData(), nullptr), &std::free);
    return real ? QByteArray(real.get()) : path;
}

QByteArray folderOf(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return QByteArrayLiteral(".");
    return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

/// Writes everything; false and an errno if that fails.
bool writeAll(int descriptor, std::span<const QByteArrayView> pieces)
{
    std::array<iovec, IOV_MAX> vectors{};
    std::size_t next = 0;         // the piece that is to be written next
    qsizetype alreadyWritten = 0; // bytes of it
    while (next < pieces.size()) {
        std::size_t count = 0;
        for (std::size_t i = next; i < pieces.size() && count < vectors.size(); ++i, ++count) {
            const qsizetype skip = i == next ? alreadyWritten : 0;
            vectors[count].iov_base = const_cast<char *>(pieces[i].data()) + skip;
            vectors[count].iov_len = std::size_t(pieces[i].size() - skip);
        }
        const ssize_t written = writev(descriptor, vectors.data(), int(count));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        alreadyWritten += written;
        while (next < pieces.size() && alreadyWritten >= pieces[next].size())
            alreadyWritten -= pieces[next++].size();
    }
    return true;
}

/// Flushes to the disk; false and an errno if the disk fails, but not if the file system cannot flush.
bool flushToDisk(int descriptor)
{
    int result = 0;
    do {
        result = fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    return result == 0 || errno == EINVAL || errno == ENOTSUP;
}

} // namespace

void writeFileAtomically(const QString &path, std::span<const QByteArrayView> pieces)
{
    if (path.isEmpty() || path.contains(QChar::Null))
        throwErrno(EINVAL, path);
    const QByteArray target = resolved(QFile::encodeName(path));
    struct stat older = {};
    const bool replaces = stat(target.constData(), &older) == 0;
    if (replaces && !S_ISREG(older.st_mode))
        throwErrno(S_ISDIR(older.st_mode) ? EISDIR : EINVAL, path);

    const QByteArray folder = folderOf(target);
    TemporaryFile file(folder, path);
    // A file system without permissions, or somebody else's folder: the content matters more.
    if (replaces)
        static_cast<void>(fchmod(file.descriptor(), older.st_mode & 0777));
    if (!writeAll(file.descriptor(), pieces) || !flushToDisk(file.descriptor()) || !file.rename(target))
        throwErrno(errno, path);

    // The new file stands; that its name is on the disk too can only be tried.
    const Descriptor directory(open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen())
        static_cast<void>(flushToDisk(directory.number()));
}

} // namespace talvenor
