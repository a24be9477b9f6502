#include "platform/linux/speech/PrivateFolder.h"

#include "foundation/LocalizedError.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace talvenor {

namespace {

const QString kPrefix = QStringLiteral("transcription-");
const QString kLockName = QStringLiteral("/lock");

int openLock(const QString &folder, int flags)
{
    return ::open(QFile::encodeName(folder + kLockName).constData(), flags | O_RDWR | O_CLOEXEC, 0600);
}

bool isLocked(int lock)
{
    return ::flock(lock, LOCK_EX | LOCK_NB) == 0;
}

// A meeting's sound stays where only its user looks, and on the disk: two hours of it are 230 MB, more than
// the memory that stands behind some systems' temporary folder should be asked for.
QDir workFolder()
{
    QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                QStringLiteral("/talvenor/work"));
    static_cast<void>(folder.mkpath(QStringLiteral("."))); // the folder made in it tells of a failure
    return folder;
}

void removeAbandonedFolders(const QDir &work)
{
    const QFileInfoList folders = work.entryInfoList({kPrefix + u'*'}, QDir::Dirs | QDir::NoDotAndDotDot |
                                                                           QDir::NoSymLinks | QDir::Hidden);
    for (const QFileInfo &folder : folders) {
        if (folder.ownerId() != ::getuid())
            continue;
        const int lock = openLock(folder.filePath(), 0);
        if (lock < 0)
            continue; // so new that it has no lock and nothing in it yet
        // Where the lock cannot be had the folder is in use, or the file system has no locks to tell.
        if (isLocked(lock))
            QDir(folder.filePath()).removeRecursively();
        ::close(lock);
    }
}

[[noreturn]] void throwCannotBeMade(int code)
{
    throw PlatformError(QStringLiteral("process"), code,
                        QStringLiteral("A temporary folder cannot be made: ") +
                            QString::fromStdString(std::system_category().message(code)));
}

} // namespace

PrivateFolder::PrivateFolder()
{
    const QDir work = workFolder();
    removeAbandonedFolders(work);
    QByteArray path = QFile::encodeName(work.filePath(kPrefix + QStringLiteral("XXXXXX")));
    if (::mkdtemp(path.data()) == nullptr)
        throwCannotBeMade(errno);
    m_path = QFile::decodeName(path);
    m_lock = openLock(m_path, O_CREAT);
    if (m_lock >= 0 && (isLocked(m_lock) || errno != EWOULDBLOCK))
        return; // a file system without locks has none to lose
    const int code = errno;
    QDir(m_path).removeRecursively();
    if (m_lock >= 0)
        ::close(m_lock);
    throwCannotBeMade(code);
}

PrivateFolder::~PrivateFolder()
{
    QDir(m_path).removeRecursively();
    ::close(m_lock);
}

QString PrivateFolder::filePath(const QString &name) const
{
    return m_path + u'/' + name;
}

} // namespace talvenor
