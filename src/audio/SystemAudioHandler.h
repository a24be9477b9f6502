#pragma once

#include "audio/AudioRingBuffer.h"
#include "platform/SystemAudioStream.h"

#include <QtGlobal>

#include <memory>
#include <vector>

namespace talvenor {

/// Receives system audio, averages its channels and hands it to the ring buffer. Made on the main thread;
/// deliveries come on the stream's thread, one at a time.
class SystemAudioHandler final : public SystemAudioOutput
{
public:
    explicit SystemAudioHandler(std::shared_ptr<AudioRingBuffer> ringBuffer);

    /// Takes one delivery. The samples are read as interleaved 32-bit floats whatever the format says; what
    /// does not make a whole frame is left out, and so is a delivery without readable data.
    void didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType type) override;

    /// The number of deliveries so far that held at least one frame. Only for the stream's thread, or once
    /// no delivery comes any more.
    [[nodiscard]] qint64 sysCallCount() const { return m_sysCallCount; }

private:
    const std::shared_ptr<AudioRingBuffer> m_ringBuffer;
    qint64 m_sysCallCount = 0;
    std::vector<float> m_mono; ///< kept between deliveries to spare the allocation
};

} // namespace talvenor
