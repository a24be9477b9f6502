#pragma once

#include "platform/SystemAudioStream.h"

#include <memory>

namespace talvenor {

/// The sound of all other programs by libpulse, on PulseAudio and on PipeWire.
///
/// Deliveries come every 20 ms of the monotonic clock on one thread named "com.talvenor.sysaudio", silent
/// where nothing plays, and go on whatever becomes of the server. Each is mono sound in as many equal
/// channels as asked for.
class PulseSystemAudioStream final : public SystemAudioStream
{
public:
    explicit PulseSystemAudioStream(const SystemAudioConfiguration &configuration);
    ~PulseSystemAudioStream() override;

    void addStreamOutput(std::shared_ptr<SystemAudioOutput> output, StreamOutputType type) override;
    Task<> startCapture() override;
    Task<> stopCapture() override;

private:
    class Core;
    // Shared with a start under way on the general pool, which may outlast the stream.
    std::shared_ptr<Core> m_core;
};

} // namespace talvenor
