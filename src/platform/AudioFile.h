#pragma once

#include "platform/AudioBuffer.h"

#include <cstdint>

namespace talvenor {

/// "aac " as a four-character code: MPEG-4 AAC, low complexity.
inline constexpr std::uint32_t kAudioFormatMPEG4AAC = 0x61616320;

/// How much care the encoder takes.
enum class AudioQuality : std::uint8_t { high = 96 };

/// What a new audio file is to hold; the four settings that a recording chooses.
struct AudioFileSettings
{
    std::uint32_t formatID = kAudioFormatMPEG4AAC;
    double sampleRate = 0;
    std::uint32_t channelCount = 1;
    AudioQuality encoderAudioQuality = AudioQuality::high;
};

/// An audio file that is being written; destroying it finishes it.
///
/// Whatever ends the process, power loss aside, the file plays up to the last second or two. Used by one
/// thread at a time; encoding and writing happen in the call.
class AudioFile
{
public:
    AudioFile() = default;
    AudioFile(const AudioFile &) = delete;
    AudioFile &operator=(const AudioFile &) = delete;
    virtual ~AudioFile() = default;

    /// Encodes and appends the buffer's valid frames; throws PlatformError. After a failure the file can
    /// still be written to: the next buffer tries again.
    virtual void write(const PcmBuffer &buffer) = 0;
};

} // namespace talvenor
