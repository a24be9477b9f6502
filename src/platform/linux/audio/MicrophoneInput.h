#pragma once

#include "platform/linux/audio/MicrophoneQuery.h"
#include "platform/linux/audio/PacedQueue.h"
#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/RateConverter.h"

#include <memory>

namespace talvenor {

/// The device side of the microphone: finds one, listens to it, finds the next when it is gone.
///
/// Brings the device's channels down to their average and its rate to the one asked for, and hands the
/// result to a queue. All calls with the loop's lock held; callbacks on the loop's thread.
class MicrophoneInput
{
public:
    /// Is told once how the first attempt ended: PA_OK, or the server's error code.
    using Started = std::function<void(int errorCode)>;

    /// Both outlive this object.
    MicrophoneInput(PulseConnection &connection, PacedQueue &queue);

    /// Begins to listen and keeps at it. `rate` is that of the samples in the queue, in frames per second.
    void start(int rate, Started started);

    /// Lets go of the device and of the search for one. For good.
    void stop();

    /// What the connection's listener hears, passed on.
    void connectionReady();
    void connectionLost();
    void serverChanged(pa_subscription_event_type_t event);

private:
    void seek();
    void seekLater();
    void attach(const MicrophoneDevice &device);
    void detach();
    void streamChanged();
    void readStream();
    void take(const float *frames, std::size_t count);
    void watch();
    void report(int errorCode);

    PulseConnection &m_connection;
    PacedQueue &m_queue;
    Started m_started;
    int m_rate = 0;
    bool m_wanted = false;
    bool m_seekScheduled = false;
    std::unique_ptr<MicrophoneQuery> m_query;
    MicrophoneDevice m_device;
    PulseStreamPointer m_stream;
    std::unique_ptr<RateConverter> m_converter;
    PulseOperationPointer m_subscription;
    PaceClock::time_point m_lastData;
    std::vector<float> m_mono;
};

} // namespace talvenor
