#include "audio/MicrophoneTap.h"

#include "audio/AudioLog.h"

#include <algorithm>
#include <utility>

namespace talvenor {

MicrophoneTap::MicrophoneTap(std::shared_ptr<AudioFileWriter> writer, std::shared_ptr<LevelMeter> meter,
                             std::shared_ptr<AudioRingBuffer> ringBuffer)
    : m_writer(std::move(writer)), m_meter(std::move(meter)), m_ringBuffer(std::move(ringBuffer))
{
}

void MicrophoneTap::process(PcmBuffer &buffer)
{
    if (buffer.frameLength() == 0)
        return;
    if (buffer.floatChannelData() == nullptr)
        return;
    ++m_counter;
    if (m_counter <= 3 || m_counter % 200 == 0) {
        qCInfo(logger, "Tap %lld: %lldf total=%lld", static_cast<long long>(m_counter),
               static_cast<long long>(buffer.frameLength()), static_cast<long long>(m_writer->totalFrames()));
    }
    mixSystemAudio(buffer);
    // The writer has logged a failure; a full disk must not end a recording.
    static_cast<void>(m_writer->write(buffer));
    m_meter->update(buffer);
}

void MicrophoneTap::mixSystemAudio(PcmBuffer &buffer)
{
    const std::ptrdiff_t available = m_ringBuffer->availableFrames();
    if (available <= 0)
        return;
    const std::ptrdiff_t n = std::min(available, std::ptrdiff_t(buffer.frameLength()));
    m_systemAudio.assign(std::size_t(n), 0.0F);
    m_ringBuffer->read(m_systemAudio, n);
    float *const samples = buffer.floatChannelData()[0];
    for (std::ptrdiff_t i = 0; i < n; ++i)
        samples[i] = std::max(-1.0F, std::min(1.0F, samples[i] + m_systemAudio[std::size_t(i)]));
}

} // namespace talvenor
