#include "platform/linux/audio/TapThread.h"

#include "platform/linux/audio/ThreadName.h"

#include <algorithm>

namespace talvenor {

namespace {

constexpr std::size_t kBlockFrames = 4096;
/// How soon silence follows when the device is gone.
constexpr std::chrono::milliseconds kPatience{50};
constexpr std::chrono::milliseconds kNoPatience{0};

} // namespace

void TapThread::install(std::uint32_t bufferSize, const AudioFormat &format, AudioEngine::Tap tap)
{
    const std::lock_guard guard(m_tapLock);
    m_bufferFrames = std::max<std::uint32_t>(bufferSize, 1);
    m_buffer.emplace(format, m_bufferFrames);
    m_tap = std::move(tap);
}

void TapThread::remove()
{
    m_removing = true;
    const std::lock_guard guard(m_tapLock);
    m_removing = false;
    // The sound that a stalled tap has kept waiting belongs to the recording. What comes while it is
    // delivered does not, so that this ends however slow the tap is.
    std::size_t remaining = m_tap ? m_queue.available(kNoPatience) : 0;
    while (remaining > 0) {
        const std::size_t count = deliver(remaining);
        if (count == 0)
            break;
        remaining -= count;
    }
    m_tap = nullptr;
}

void TapThread::start()
{
    m_thread = std::thread([this] {
        nameThisThread("talvenor.tap");
        run();
    });
}

void TapThread::stop()
{
    if (!m_thread.joinable())
        return;
    m_queue.finish();
    m_thread.join();
}

void TapThread::run()
{
    for (;;) {
        // Asked first, since what has come before the end is still delivered.
        const bool finished = m_queue.isFinished();
        if (m_queue.available(kPatience) == 0) {
            if (finished)
                return;
            continue;
        }
        if (m_removing) {
            std::this_thread::yield(); // whoever waits for the lock goes on with the queue
            continue;
        }
        const std::lock_guard guard(m_tapLock);
        deliver(kBlockFrames);
    }
}

std::size_t TapThread::deliver(std::size_t limit)
{
    m_block.resize(std::min(limit, kBlockFrames));
    const std::size_t taken = m_queue.pop(m_block, kNoPatience);
    std::span<const float> samples = std::span<const float>(m_block).first(taken);
    while (m_tap && !samples.empty()) {
        const std::size_t count = std::min<std::size_t>(samples.size(), m_bufferFrames);
        m_buffer->setFrameLength(std::uint32_t(count));
        for (std::uint32_t channel = 0; channel < m_buffer->format().channelCount; ++channel)
            std::copy_n(samples.begin(), count, m_buffer->floatChannelData()[channel]);
        m_tap(*m_buffer);
        samples = samples.subspan(count);
    }
    return taken;
}

} // namespace talvenor
