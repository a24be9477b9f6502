#pragma once

#include "platform/AudioEngine.h"

#include <memory>

namespace talvenor {

/// The microphone by libpulse, on PulseAudio and on PipeWire.
///
/// Three threads: libpulse's own, which only queues; the tap's, which delivers; and the caller's, which is
/// never blocked by a sound server that does not answer.
class PulseAudioEngine final : public AudioEngine
{
public:
    PulseAudioEngine();
    ~PulseAudioEngine() override;

    Task<AudioFormat> inputFormat() override;
    void installTap(std::uint32_t bufferSize, const AudioFormat &format, Tap tap) override;
    void endIntake() override;
    void removeTap() override;
    void prepare() override;
    Task<> start() override;
    void stop() override;

private:
    class Core;
    // Shared with the operation under way on the general pool, which may outlast the engine.
    std::shared_ptr<Core> m_core;
    int m_tapRate = 0; ///< frames per second that the tap asked for; 0 without one
};

} // namespace talvenor
