#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace talvenor {

/// The shape of an audio signal.
struct AudioFormat
{
    double sampleRate = 0;          ///< frames per second; 0 where there is no signal
    std::uint32_t channelCount = 0; ///< 0 where there is no signal

    friend bool operator==(const AudioFormat &, const AudioFormat &) = default;
};

/// A block of audio: float samples in -1...1, one array for each channel.
///
/// A buffer may also hold samples of another kind; it then has no float data. Not thread-safe: whoever is
/// handed a buffer owns it for the time of the call.
class PcmBuffer
{
public:
    /// A silent buffer of floats with room for `frameCapacity` frames and as many valid ones.
    PcmBuffer(AudioFormat format, std::uint32_t frameCapacity);

    /// A buffer of 16-bit integers, which has no float data: for what does not deliver floats.
    [[nodiscard]] static PcmBuffer withoutFloats(AudioFormat format, std::uint32_t frameLength);

    [[nodiscard]] const AudioFormat &format() const { return m_format; }

    /// The number of valid frames, at most the capacity.
    [[nodiscard]] std::uint32_t frameLength() const { return m_frameLength; }
    void setFrameLength(std::uint32_t frames);

    /// One pointer for each channel, each to `frameLength()` samples; null where there are no floats.
    [[nodiscard]] float *const *floatChannelData()
    {
        return m_channels.empty() ? nullptr : m_channels.data();
    }
    [[nodiscard]] const float *const *floatChannelData() const
    {
        return m_channels.empty() ? nullptr : m_channels.data();
    }

private:
    AudioFormat m_format;
    std::uint32_t m_frameCapacity;
    std::uint32_t m_frameLength;
    std::vector<float> m_samples;
    std::vector<float *> m_channels;

public:
    // The channel pointers lead into the samples: a move keeps them right, a copy would not.
    PcmBuffer(const PcmBuffer &) = delete;
    PcmBuffer &operator=(const PcmBuffer &) = delete;
    PcmBuffer(PcmBuffer &&) = default;
    PcmBuffer &operator=(PcmBuffer &&) = default;
    ~PcmBuffer() = default;
};

} // namespace talvenor
