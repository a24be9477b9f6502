#pragma once

#include <QString>

namespace talvenor {

/// A temporary folder in the program's own data folder that only the user can read, removed with all that is
/// in it when this object ends.
///
/// What a killed program has left behind is removed when the next folder is made: each is locked by the
/// process that owns it, and the lock goes with the process. One thread at a time; touches the disk.
class PrivateFolder
{
public:
    /// Makes the folder; throws PlatformError.
    PrivateFolder();
    ~PrivateFolder();
    PrivateFolder(const PrivateFolder &) = delete;
    PrivateFolder &operator=(const PrivateFolder &) = delete;

    /// The path of a file in the folder.
    [[nodiscard]] QString filePath(const QString &name) const;

private:
    QString m_path;
    int m_lock = -1;
};

} // namespace talvenor
