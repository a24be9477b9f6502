#pragma once

#include "platform/linux/media/LibavPointers.h"

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace talvenor {

/// Turns mono float samples into AAC packets with libavcodec's own encoder. One thread at a time.
///
/// 96 kbit/s from 44.1 kHz on and in proportion below. A rate that AAC does not know is resampled to the next
/// higher one that it does, or to its highest.
class AacEncoder
{
public:
    /// Gets each packet in order; its times are counted in samples of `outputRate`.
    using PacketSink = std::function<void(AVPacket &packet)>;

    /// Throws PlatformError if the rate is no rate of sound or libav has no encoder.
    AacEncoder(double sampleRate, PacketSink sink);

    /// The rate of the encoded sound, in frames per second.
    [[nodiscard]] int outputRate() const { return m_outputRate; }
    /// The encoder as a muxer wants to know it.
    [[nodiscard]] const AVCodecContext &context() const { return *m_encoder; }

    /// Encodes `samples`; what does not fill a frame of the codec waits for more. A sample that is no number
    /// becomes silence. Throws PlatformError.
    void encode(std::span<const float> samples);

    /// Encodes what waits and gets the last packets out; nothing may be encoded afterwards. Throws
    /// PlatformError.
    void finish();

private:
    void openResampler(int inputRate);
    void resample(const float *samples, int count);
    void fillFrames(std::span<const float> samples);
    void sendFrame();
    void receivePackets();

    int m_outputRate = 0;
    PacketSink m_sink;
    AVCodecContextPointer m_encoder;
    SwrContextPointer m_resampler; ///< null where the microphone's rate is one of AAC's
    AVFramePointer m_frame;
    AVPacketPointer m_packet;
    int m_filled = 0;                 ///< samples in m_frame
    std::int64_t m_nextTimestamp = 0; ///< of the first sample in m_frame
    std::vector<float> m_resampled;   ///< kept between calls to spare the allocation
};

} // namespace talvenor
