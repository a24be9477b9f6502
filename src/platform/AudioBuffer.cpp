#include "platform/AudioBuffer.h"

#include <algorithm>

namespace talvenor {

PcmBuffer::PcmBuffer(AudioFormat format, std::uint32_t frameCapacity)
    : m_format(format), m_frameCapacity(frameCapacity), m_frameLength(frameCapacity),
      m_samples(std::size_t(frameCapacity) * format.channelCount, 0.0F)
{
    m_channels.reserve(format.channelCount);
    for (std::uint32_t channel = 0; channel < format.channelCount; ++channel)
        m_channels.push_back(m_samples.data() + std::size_t(channel) * frameCapacity);
}

PcmBuffer PcmBuffer::withoutFloats(AudioFormat format, std::uint32_t frameLength)
{
    PcmBuffer buffer(format, frameLength);
    buffer.m_channels.clear();
    return buffer;
}

void PcmBuffer::setFrameLength(std::uint32_t frames)
{
    m_frameLength = std::min(frames, m_frameCapacity);
}

} // namespace talvenor
