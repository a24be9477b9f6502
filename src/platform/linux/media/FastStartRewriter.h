#pragma once

#include "platform/linux/media/ReplacementFile.h"

#include <QString>

namespace talvenor {

/// Rewrites a finished recording, in the background, from fragments into an ordinary file whose index stands
/// in front, without encoding anew. Until the one takes the place of the other in one step, the path leads to
/// the old file, which plays as well; it stays if anything fails or if it cannot be read to its last byte,
/// and a line in the log says so.
///
/// `file` is the finished recording, open for reading, and `path` where it was written. A file that has been
/// moved, deleted or replaced by then is left alone. The process waits for it at its ordinary end. Any
/// thread.
void rewriteForFastStart(FileDescriptor file, QString path);

/// Waits until all files handed over so far are done.
void waitForFastStartRewrites();

} // namespace talvenor
