#include "audio/SystemAudioHandler.h"

#include "audio/AudioLog.h"
#include "foundation/ProgrammingError.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace talvenor {

namespace {

// The block need not be aligned for floats.
float sampleAt(const void *data, std::size_t index)
{
    float sample = 0;
    std::memcpy(&sample, static_cast<const std::byte *>(data) + index * sizeof sample, sizeof sample);
    return sample;
}

} // namespace

SystemAudioHandler::SystemAudioHandler(std::shared_ptr<AudioRingBuffer> ringBuffer)
    : m_ringBuffer(std::move(ringBuffer))
{
}

void SystemAudioHandler::didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType type)
{
    if (type != StreamOutputType::audio)
        return;
    if (buffer.data == nullptr || buffer.byteLength == 0)
        return;
    if (!buffer.format)
        programmingError(QStringLiteral("system audio was delivered without a format"));
    const std::size_t channels = buffer.format->channelCount;
    const std::size_t floatCount = buffer.byteLength / sizeof(float);
    const std::size_t frameCount = floatCount / std::max<std::size_t>(channels, 1);
    if (frameCount == 0)
        return;
    ++m_sysCallCount;
    if (m_sysCallCount <= 3) {
        qCInfo(logger, "SysAudio #%lld: %lld samples %fHz %lldch", static_cast<long long>(m_sysCallCount),
               static_cast<long long>(frameCount), buffer.format->sampleRate,
               static_cast<long long>(channels));
    }
    m_mono.assign(frameCount, 0.0F);
    if (channels == 1) {
        std::memcpy(m_mono.data(), buffer.data, frameCount * sizeof(float));
    } else {
        for (std::size_t frame = 0; frame < frameCount; ++frame) {
            float sum = 0;
            for (std::size_t channel = 0; channel < channels; ++channel)
                sum += sampleAt(buffer.data, frame * channels + channel);
            // No channels at all give no number at all: a stream that claims that is not worth a rule.
            m_mono[frame] = sum / float(channels);
        }
    }
    m_ringBuffer->write(m_mono);
}

} // namespace talvenor
