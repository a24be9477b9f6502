#pragma once

#include "platform/linux/media/ReplacementFile.h"

#include <QString>

namespace talvenor {

/// An audio file that is open for playback, as it was when it was opened: what is appended later is not part
/// of it, and a file that takes its name leaves it as it is. Reading is for any thread.
class PlaybackFile
{
public:
    /// Opens the file and makes sure that it holds sound; throws PlatformError otherwise.
    explicit PlaybackFile(const QString &path);

    /// How long it plays, in seconds; 0 where the file does not say.
    [[nodiscard]] double duration() const { return m_duration; }
    /// Its length in bytes.
    [[nodiscard]] qint64 size() const { return m_size; }
    /// Reads up to `count` bytes from `offset` on into `buffer`: their number, 0 at the end, -1 if the system
    /// fails.
    [[nodiscard]] qint64 read(char *buffer, quint64 count, qint64 offset) const;

private:
    double m_duration = 0;
    qint64 m_size = 0;
    FileDescriptor m_descriptor;
};

} // namespace talvenor
