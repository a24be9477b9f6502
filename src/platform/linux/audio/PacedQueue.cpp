#include "platform/linux/audio/PacedQueue.h"

#include "platform/UnifiedLog.h"
#include "platform/linux/audio/BlockStretch.h"

namespace talvenor {

namespace {

constexpr double kLongestBacklogSeconds = 60;

} // namespace

void PacedQueue::begin(double rate)
{
    const std::lock_guard guard(m_lock);
    m_pacer.emplace(rate, PaceClock::now());
    m_samples = SampleFifo(std::size_t(rate * kLongestBacklogSeconds));
}

void PacedQueue::setDeviceLive(bool live)
{
    const std::lock_guard guard(m_lock);
    m_deviceLive = live;
    if (live && m_pacer)
        m_pacer->deviceAttached();
}

void PacedQueue::push(std::span<const float> samples)
{
    const std::lock_guard guard(m_lock);
    if (!m_pacer || m_finished)
        return; // nobody listens yet, or any more
    const auto adjustment = m_pacer->blockArrived(std::int64_t(samples.size()), PaceClock::now());
    noteLoss(m_samples.pushSilence(std::size_t(adjustment.silenceBefore)));
    append(samples.subspan(std::size_t(adjustment.dropped)), adjustment.stretch);
    m_changed.notify_one();
}

void PacedQueue::append(std::span<const float> samples, std::int64_t stretch)
{
    if (stretch != 0) {
        m_stretched.resize(std::size_t(std::int64_t(samples.size()) + stretch));
        stretchBlock(samples, m_stretched);
        samples = m_stretched;
    }
    noteLoss(m_samples.push(samples));
}

void PacedQueue::noteLoss(std::size_t lost)
{
    if (lost == 0 || m_lossNoted)
        return;
    m_lossNoted = true; // once is enough: a disk that stalls for a minute will not be better for more lines
    qCCritical(platformLog, "Microphone sound is lost: what receives it has stalled for a minute");
}

std::size_t PacedQueue::waitForSamples(std::unique_lock<std::mutex> &guard,
                                       std::chrono::milliseconds patience)
{
    if (m_samples.size() == 0 && !m_finished)
        m_changed.wait_for(guard, patience, [this] { return m_samples.size() > 0 || m_finished; });
    if (m_pacer && !m_finished)
        noteLoss(m_samples.pushSilence(std::size_t(m_pacer->silenceDue(m_deviceLive, PaceClock::now()))));
    return m_samples.size();
}

std::size_t PacedQueue::available(std::chrono::milliseconds patience)
{
    std::unique_lock guard(m_lock);
    return waitForSamples(guard, patience);
}

std::size_t PacedQueue::pop(std::span<float> target, std::chrono::milliseconds patience)
{
    std::unique_lock guard(m_lock);
    static_cast<void>(waitForSamples(guard, patience)); // what counts is how many there are room for
    return m_samples.pop(target);
}

void PacedQueue::finish()
{
    const std::lock_guard guard(m_lock);
    if (m_pacer && !m_finished)
        noteLoss(m_samples.pushSilence(std::size_t(m_pacer->silenceDue(m_deviceLive, PaceClock::now()))));
    m_finished = true;
    m_changed.notify_all();
}

bool PacedQueue::isFinished()
{
    const std::lock_guard guard(m_lock);
    return m_finished;
}

} // namespace talvenor
