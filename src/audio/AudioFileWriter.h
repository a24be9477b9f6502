#pragma once

#include "platform/AudioFile.h"

#include <QtGlobal>

#include <atomic>
#include <memory>
#include <mutex>

namespace talvenor {

/// The one place through which audio reaches the recording file. Any thread.
class AudioFileWriter
{
public:
    AudioFileWriter() = default;
    AudioFileWriter(const AudioFileWriter &) = delete;
    AudioFileWriter &operator=(const AudioFileWriter &) = delete;

    /// Takes the file that is written from now on, null for none, and counts from 0 again. A file that was
    /// open is finished.
    void setFile(std::unique_ptr<AudioFile> file);

    /// Writes the buffer; true if it went to the file. Without a file nothing happens. A failure is logged,
    /// and the next buffer tries again.
    bool write(const PcmBuffer &buffer);

    /// Lets go of the file, which finishes it. The count of frames stays.
    void close();

    /// Frames written since the last `setFile`; for log lines.
    [[nodiscard]] qint64 totalFrames() const { return m_totalFrames; }

private:
    std::mutex m_lock;
    std::unique_ptr<AudioFile> m_file;     ///< guarded by m_lock
    std::atomic<qint64> m_totalFrames = 0; ///< changed under m_lock, read without it
};

} // namespace talvenor
