#include "platform/linux/audio/TapThread.h"

#include "platform/linux/audio/ThreadName.h"

#include <algorithm>

namespace talvenor {

namespace {

constexpr std::size_t kBlockFrames = 4096;
/// How soon silence follows when the device is gone.
constexpr std::chrono::milliseconds kPatience{50};

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
    m_tap = nullptr;
    m_removing = false;
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
    std::vector<float> block(kBlockFrames);
    std::size_t count = 0;
    do {
        count = m_queue.pop(block, kPatience);
    } while (deliver(std::span<const float>(block).first(count)) || !m_queue.isFinished());
}

bool TapThread::deliver(std::span<const float> samples)
{
    const bool any = !samples.empty();
    if (m_removing)
        return any; // whoever waits for the lock takes the tap away
    const std::lock_guard guard(m_tapLock);
    while (m_tap && !samples.empty()) {
        const std::size_t count = std::min<std::size_t>(samples.size(), m_bufferFrames);
        m_buffer->setFrameLength(std::uint32_t(count));
        for (std::uint32_t channel = 0; channel < m_buffer->format().channelCount; ++channel)
            std::copy_n(samples.begin(), count, m_buffer->floatChannelData()[channel]);
        m_tap(*m_buffer);
        samples = samples.subspan(count);
    }
    return any;
}

} // namespace talvenor
