#pragma once

#include "platform/AudioFile.h"
#include "platform/linux/media/AacEncoder.h"
#include "platform/linux/media/FragmentMuxer.h"
#include "platform/linux/media/ReplacementFile.h"

#include <QString>

#include <cstdint>
#include <span>

namespace talvenor {

/// An .m4a file with one channel of AAC, written in fragments of one second.
///
/// From the first packet on the path holds one complete file that plays to its last fragment. Where a
/// fragment cannot be written, it is kept and tried again with each later buffer, so that a disk that has
/// room again gets all of it, and one with a little room what fits; memory for that is the encoded sound,
/// 12 kB a second. Destroying the file writes what is left, as far as it fits, and hands it to the rewriter,
/// which makes an ordinary file of it in the background.
class LibavAudioFile final : public AudioFile
{
public:
    /// Puts a new, empty file at `path`, in the place of what is there. Throws PlatformError. May block.
    LibavAudioFile(const QString &path, const AudioFileSettings &settings);
    ~LibavAudioFile() override;

    void write(const PcmBuffer &buffer) override;

private:
    void writeFragments();
    void writeFragment(std::span<const std::uint8_t> fragment);

    QString m_path;
    AudioFileSettings m_settings;
    FileDescriptor m_file;
    std::int64_t m_length = 0; ///< bytes in the file, all of them whole fragments
    AacEncoder m_encoder;
    FragmentMuxer m_muxer;
};

} // namespace talvenor
