#pragma once

#include <QByteArrayView>
#include <QString>

#include <span>

namespace talvenor {

/// Puts a file with the content of `pieces`, one after another, in the place of the one at `path`.
///
/// Whoever reads the path, at whatever moment and after whatever end of the process or the machine, finds the
/// older file or the complete newer one. The content goes to a hidden file in the same folder, is flushed to
/// the disk and takes the name. An older file's permissions are kept, and a symbolic link stays one. What a
/// killed process leaves behind is used again by the next call, so that nothing piles up; other processes may
/// write into the same folder.
///
/// Throws PlatformError (domain "file", an errno) and then leaves the older file as it was; among others when
/// the folder does not exist, or when what stands at `path` is not a regular file. Any thread; blocks.
void writeFileAtomically(const QString &path, std::span<const QByteArrayView> pieces);

} // namespace talvenor
