#include "audio/AudioRingBuffer.h"

#include "foundation/ProgrammingError.h"

#include <algorithm>

namespace talvenor {

AudioRingBuffer::AudioRingBuffer() : m_buf(std::size_t(cap), 0.0F)
{
}

std::ptrdiff_t AudioRingBuffer::availableFrames() const
{
    const std::lock_guard guard(m_lock);
    return m_cnt;
}

void AudioRingBuffer::write(std::span<const float> samples)
{
    if (samples.empty())
        return;
    const std::lock_guard guard(m_lock);
    const auto total = std::ptrdiff_t(samples.size());
    // Of more than a whole buffer only the last part survives; it lands where it would have landed singly.
    const std::ptrdiff_t kept = std::min(total, cap);
    const std::ptrdiff_t start = (m_wPos + (total - kept)) % cap;
    const std::ptrdiff_t beforeTheEnd = std::min(kept, cap - start);
    const float *const source = samples.data() + (total - kept);
    std::copy_n(source, beforeTheEnd, m_buf.begin() + start);
    std::copy_n(source + beforeTheEnd, kept - beforeTheEnd, m_buf.begin());
    m_wPos = (m_wPos + total) % cap;
    m_cnt = total >= cap ? cap : std::min(m_cnt + total, cap);
    m_rPos = (m_wPos - m_cnt + cap) % cap;
}

void AudioRingBuffer::read(std::span<float> destination, std::ptrdiff_t count)
{
    if (count < 0 || count > std::ptrdiff_t(destination.size()))
        programmingError(QStringLiteral("a read from the ring buffer does not fit its destination"));
    const std::lock_guard guard(m_lock);
    const std::ptrdiff_t n = std::min(count, m_cnt);
    const std::ptrdiff_t beforeTheEnd = std::min(n, cap - m_rPos);
    std::copy_n(m_buf.begin() + m_rPos, beforeTheEnd, destination.begin());
    std::copy_n(m_buf.begin(), n - beforeTheEnd, destination.begin() + beforeTheEnd);
    m_rPos = (m_rPos + n) % cap;
    m_cnt -= n;
    std::fill(destination.begin() + n, destination.begin() + count, 0.0F);
}

void AudioRingBuffer::reset()
{
    const std::lock_guard guard(m_lock);
    m_wPos = 0;
    m_rPos = 0;
    m_cnt = 0;
}

} // namespace talvenor
