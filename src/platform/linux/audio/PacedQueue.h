#pragma once

#include "platform/linux/audio/ClockPacer.h"
#include "platform/linux/audio/SampleFifo.h"

#include <condition_variable>
#include <mutex>
#include <span>
#include <vector>

namespace talvenor {

/// What lies between the sound server's thread, which must never wait, and the tap's, which may: mono
/// samples, complete and at the pace of the monotonic clock.
///
/// The clock is looked at where samples come in, so that a slow tap changes nothing: what has arrived waits,
/// up to a minute of it, and is delivered whole. Thread-safe.
class PacedQueue
{
public:
    /// Begins the timeline: frame zero is now. `rate` in frames per second.
    void begin(double rate);

    /// A device was taken up, or is gone. Sound server's thread.
    void setDeviceLive(bool live);

    /// Appends a block of the device's. Sound server's thread.
    void push(std::span<const float> samples);

    /// Waits for samples for up to `patience`; answers how many there are. Silence that has fallen due is
    /// among them.
    [[nodiscard]] std::size_t available(std::chrono::milliseconds patience);

    /// Fills `target` as far as there is something, waiting for it for up to `patience`; answers how many
    /// samples there were. Silence that has fallen due is among them.
    [[nodiscard]] std::size_t pop(std::span<float> target, std::chrono::milliseconds patience);

    /// Takes nothing more from now on, and lets `pop` return at once with what is still there.
    void finish();
    [[nodiscard]] bool isFinished();

private:
    [[nodiscard]] std::size_t waitForSamples(std::unique_lock<std::mutex> &guard,
                                             std::chrono::milliseconds patience);
    void append(std::span<const float> samples, std::int64_t stretch);
    void noteLoss(std::size_t lost);

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::optional<ClockPacer> m_pacer; ///< guarded by m_lock, like all below
    SampleFifo m_samples{0};
    std::vector<float> m_stretched;
    bool m_deviceLive = false;
    bool m_finished = false;
    bool m_lossNoted = false;
};

} // namespace talvenor
