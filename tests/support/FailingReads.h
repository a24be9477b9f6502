#pragma once

#include <QFile>
#include <QString>

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace talvenor::test {

/// The file whose reads fail, by its inode (0 for none), and the place from which on they do.
struct FailingPlace
{
    std::atomic<ino_t> inode{0};
    std::atomic<off_t> offset{0};
};

inline FailingPlace &failingPlace()
{
    static FailingPlace place;
    return place;
}

/// Makes a file like one on a damaged disk while it lives: reads from `offset` on fail with EIO, in this
/// process. One at a time; include it in one source file of a program only.
class FailingReads
{
public:
    FailingReads(const QString &path, off_t offset)
    {
        struct stat status
        {
        };
        if (::stat(QFile::encodeName(path).constData(), &status) != 0)
            qFatal("the file that shall fail is missing");
        failingPlace().offset = offset;
        failingPlace().inode = status.st_ino;
    }
    ~FailingReads() { failingPlace().inode = 0; }
    FailingReads(const FailingReads &) = delete;
    FailingReads &operator=(const FailingReads &) = delete;
};

} // namespace talvenor::test

/// Takes the place of the C library's function for all libraries of the program.
extern "C" [[gnu::used, gnu::visibility("default")]] inline ssize_t read(int fd, void *buffer, size_t size)
{
    const ino_t failing = talvenor::test::failingPlace().inode;
    struct stat status
    {
    };
    if (failing != 0 && ::fstat(fd, &status) == 0 && status.st_ino == failing) {
        const off_t left = talvenor::test::failingPlace().offset - ::lseek(fd, 0, SEEK_CUR);
        if (left <= 0) {
            errno = EIO;
            return -1;
        }
        if (off_t(size) > left)
            size = size_t(left);
    }
    return ::syscall(SYS_read, fd, buffer, size);
}
