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

// The lock's descriptor, or -1 if another process holds it or there is none.
int takeLock(const QString &folder, int flags)
{
    const int lock =
        ::open(QFile::encodeName(folder + kLockName).constData(), flags | O_RDWR | O_CLOEXEC, 0600);
    if (lock >= 0 && ::flock(lock, LOCK_EX | LOCK_NB) != 0) {
        ::close(lock);
        return -1;
    }
    return lock;
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
        const int lock = takeLock(folder.filePath(), 0);
        if (lock < 0)
            continue; // in use, or so new that it has no lock and nothing in it yet
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
    m_lock = takeLock(m_path, O_CREAT);
    if (m_lock < 0) {
        const int code = errno;
        QDir(m_path).removeRecursively();
        throwCannotBeMade(code);
    }
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
