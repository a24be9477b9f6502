#include "audio/AudioFileWriter.h"

#include "audio/AudioLog.h"
#include "foundation/LocalizedError.h"

#include <utility>

namespace talvenor {

void AudioFileWriter::setFile(std::unique_ptr<AudioFile> file)
{
    {
        const std::lock_guard guard(m_lock);
        m_file.swap(file);
        m_totalFrames = 0;
    }
    // What was open is finished here, where a tap that is writing does not wait for it.
}

bool AudioFileWriter::write(const PcmBuffer &buffer)
{
    const std::lock_guard guard(m_lock);
    if (!m_file)
        return false;
    try {
        m_file->write(buffer);
    } catch (...) {
        const QString reason = localizedDescription(std::current_exception());
        qCCritical(logger, "Write failed: %s", qUtf8Printable(reason));
        return false;
    }
    m_totalFrames += buffer.frameLength();
    return true;
}

void AudioFileWriter::close()
{
    std::unique_ptr<AudioFile> file;
    const std::unique_lock guard(m_lock);
    file = std::move(m_file);
    // Locals end in reverse: the lock is free again before the file is finished.
}

} // namespace talvenor
