#pragma once

#include <QByteArray>
#include <QString>

#include <sys/stat.h>

namespace talvenor {

/// A file descriptor that closes itself; -1 for none.
class FileDescriptor
{
public:
    explicit FileDescriptor(int fd = -1) : m_fd(fd) {}
    ~FileDescriptor();
    FileDescriptor(FileDescriptor &&other) noexcept : m_fd(other.release()) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept;
    FileDescriptor(const FileDescriptor &) = delete;
    FileDescriptor &operator=(const FileDescriptor &) = delete;

    [[nodiscard]] int get() const { return m_fd; }
    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    int release() noexcept;

private:
    int m_fd;
};

/// A new file that takes the place of another in one step: nobody ever sees half of it.
///
/// Until then it has no name where the file system can do that, so that nothing is left behind if the process
/// ends; else a hidden one in the same folder. Any one thread.
class ReplacementFile
{
public:
    /// Opens the new file in the folder of `path`, for reading and writing; throws PlatformError (domain
    /// "posix").
    explicit ReplacementFile(const QString &path);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile &) = delete;
    ReplacementFile &operator=(const ReplacementFile &) = delete;

    [[nodiscard]] int fd() const { return m_fd.get(); }

    /// Puts the file at the path, whatever was there before; throws PlatformError.
    void replace();

    /// Puts the file at the path if what `expected` describes is there, and answers whether it was: a file
    /// that has been deleted or replaced meanwhile must not come back. Throws PlatformError.
    bool replaceIfStill(const struct stat &expected);

    /// Hands over the descriptor; the file stays.
    [[nodiscard]] FileDescriptor takeDescriptor() { return std::move(m_fd); }

private:
    void giveName();
    bool openNamed();
    [[nodiscard]] QByteArray randomName() const;

    QByteArray m_path;
    QByteArray m_folder;
    QByteArray m_temporaryName; ///< empty while the file has no name, and once it has its final one
    FileDescriptor m_fd;
};

/// Throws a PlatformError of the domain "posix" for `number` (an errno): "`what`: " and the system's words.
[[noreturn]] void throwPosixError(int number, const QString &what);

} // namespace talvenor
