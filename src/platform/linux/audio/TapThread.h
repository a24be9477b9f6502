#pragma once

#include "platform/AudioEngine.h"
#include "platform/linux/audio/PacedQueue.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace talvenor {

/// Carries microphone sound from the queue to the tap, on a thread of its own.
///
/// Here the encoder and the disk may take their time. Used by one thread at a time.
class TapThread
{
public:
    explicit TapThread(PacedQueue &queue) : m_queue(queue) {}
    ~TapThread() { stop(); }
    TapThread(const TapThread &) = delete;
    TapThread &operator=(const TapThread &) = delete;

    /// Sets the tap and the shape of its blocks; while the thread runs too.
    void install(std::uint32_t bufferSize, const AudioFormat &format, AudioEngine::Tap tap);
    /// Takes the tap away, once it has got what is queued at this moment: a call that is under way is waited
    /// for, the rest is delivered from here. Not from within the tap.
    void remove();

    /// Starts the deliveries. Any thread.
    void start();
    /// Delivers what is queued, then ends the thread; the queue is finished by this.
    void stop();

private:
    void run();
    /// Hands over the next of the queue, up to `limit` samples; answers how many there were. With m_tapLock.
    std::size_t deliver(std::size_t limit);

    PacedQueue &m_queue;
    std::thread m_thread;

    std::atomic<bool> m_removing{false}; ///< keeps the thread from taking the lock again and again
    std::mutex m_tapLock;                ///< held from the queue to the tap, so that the order holds
    AudioEngine::Tap m_tap;              ///< guarded by m_tapLock
    std::optional<PcmBuffer> m_buffer;   ///< guarded by m_tapLock
    std::uint32_t m_bufferFrames = 1;    ///< its capacity; guarded by m_tapLock
    std::vector<float> m_block;          ///< on its way from the queue; guarded by m_tapLock
};

} // namespace talvenor
