#pragma once

#include "audio/AudioFileWriter.h"
#include "audio/AudioRingBuffer.h"
#include "audio/LevelMeter.h"

#include <memory>
#include <vector>

namespace talvenor {

/// What happens to each block of microphone sound: system audio is added, the sum goes to the file and to the
/// meter. Runs on the engine's tap thread; knows nothing of the service.
class MicrophoneTap
{
public:
    MicrophoneTap(std::shared_ptr<AudioFileWriter> writer, std::shared_ptr<LevelMeter> meter,
                  std::shared_ptr<AudioRingBuffer> ringBuffer);

    /// Mixes into `buffer` in place what system audio there is, at most its length, each sum limited to
    /// -1...1.
    void process(PcmBuffer &buffer);

private:
    void mixSystemAudio(PcmBuffer &buffer);

    std::shared_ptr<AudioFileWriter> m_writer;
    std::shared_ptr<LevelMeter> m_meter;
    std::shared_ptr<AudioRingBuffer> m_ringBuffer;
    qint64 m_counter = 0;
    std::vector<float> m_systemAudio; ///< kept between buffers to spare the allocation
};

} // namespace talvenor
