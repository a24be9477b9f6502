#include "platform/linux/audio/SampleFifo.h"

#include <algorithm>

namespace talvenor {

std::size_t SampleFifo::push(std::span<const float> samples)
{
    const std::size_t skipped = samples.size() - std::min(samples.size(), m_limit);
    samples = samples.subspan(skipped);
    const std::size_t lost = makeRoom(samples.size());
    const std::size_t end = m_ring.empty() ? 0 : (m_first + m_size) % m_ring.size();
    const std::size_t beforeWrap = std::min(samples.size(), m_ring.size() - end);
    std::copy_n(samples.begin(), beforeWrap, m_ring.begin() + std::ptrdiff_t(end));
    std::copy(samples.begin() + std::ptrdiff_t(beforeWrap), samples.end(), m_ring.begin());
    m_size += samples.size();
    return lost + skipped;
}

std::size_t SampleFifo::pushSilence(std::size_t count)
{
    const std::size_t skipped = count - std::min(count, m_limit);
    count -= skipped;
    const std::size_t lost = makeRoom(count);
    const std::size_t end = m_ring.empty() ? 0 : (m_first + m_size) % m_ring.size();
    const std::size_t beforeWrap = std::min(count, m_ring.size() - end);
    std::fill_n(m_ring.begin() + std::ptrdiff_t(end), beforeWrap, 0.0F);
    std::fill_n(m_ring.begin(), count - beforeWrap, 0.0F);
    m_size += count;
    return lost + skipped;
}

std::size_t SampleFifo::pop(std::span<float> target)
{
    const std::size_t count = std::min(target.size(), m_size);
    const std::size_t beforeWrap = std::min(count, m_ring.size() - m_first);
    std::copy_n(m_ring.begin() + std::ptrdiff_t(m_first), beforeWrap, target.begin());
    std::copy_n(m_ring.begin(), count - beforeWrap, target.begin() + std::ptrdiff_t(beforeWrap));
    drop(count);
    return count;
}

void SampleFifo::drop(std::size_t count)
{
    count = std::min(count, m_size);
    m_size -= count;
    m_first = m_size == 0 ? 0 : (m_first + count) % m_ring.size();
}

std::size_t SampleFifo::makeRoom(std::size_t count)
{
    std::size_t lost = 0;
    if (m_size + count > m_limit) {
        lost = m_size + count - m_limit;
        drop(lost);
    }
    if (m_size + count > m_ring.size()) {
        std::vector<float> larger(std::min(m_limit, std::max(2 * (m_size + count), std::size_t(4096))));
        const std::size_t kept = m_size;
        const std::size_t beforeWrap = std::min(kept, m_ring.size() - m_first);
        std::copy_n(m_ring.begin() + std::ptrdiff_t(m_first), beforeWrap, larger.begin());
        std::copy_n(m_ring.begin(), kept - beforeWrap, larger.begin() + std::ptrdiff_t(beforeWrap));
        m_ring = std::move(larger);
        m_first = 0;
    }
    return lost;
}

} // namespace talvenor
