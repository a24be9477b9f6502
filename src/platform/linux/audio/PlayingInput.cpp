#include "platform/linux/audio/PlayingInput.h"

#include "platform/linux/audio/BlockStretch.h"

#include <algorithm>

namespace talvenor {

namespace {

constexpr int kFirstReserveMs = 40;
constexpr int kReserveStepMs = 20;
constexpr int kLongestReserveMs = 200;
/// A queue that runs dry again within this time was not paused by its application but came late.
constexpr int kLatenessMs = 1000;
constexpr int kWindowMs = 2000;
/// The least level of a window lies between these two, or the level is corrected.
constexpr int kLowestLevelMs = 5;
constexpr int kLevelAboveReserveMs = 20;
/// No clock brings about such a surplus: a server that had stalled delivers all at once.
constexpr int kRunawayMs = 500;
constexpr int kLimitMs = 5000;
constexpr std::size_t kStretchDivisor = 1000;

} // namespace

PlayingInput::PlayingInput(int rate)
    : m_rate(rate), m_samples(std::size_t(rate) * kLimitMs / 1000), m_reserve(samplesOf(kFirstReserveMs))
{
}

std::size_t PlayingInput::samplesOf(int milliseconds) const
{
    return std::size_t(m_rate) * std::size_t(milliseconds) / 1000;
}

void PlayingInput::push(std::span<const float> samples)
{
    const std::lock_guard guard(m_lock);
    m_samples.push(samples); // what is lost here would have been trimmed in any case
}

void PlayingInput::end()
{
    const std::lock_guard guard(m_lock);
    m_ended = true;
}

bool PlayingInput::isSpent()
{
    const std::lock_guard guard(m_lock);
    return m_ended && m_samples.size() == 0;
}

void PlayingInput::mixInto(std::span<float> block)
{
    const std::lock_guard guard(m_lock);
    m_sinceRunDry = std::min(m_sinceRunDry + block.size(), samplesOf(kLatenessMs));
    if (!m_primed) {
        if (m_samples.size() == 0 || (m_samples.size() < m_reserve + block.size() && !m_ended))
            return;
        if (m_ranDry && m_sinceRunDry < samplesOf(kLatenessMs))
            m_reserve = std::min(m_reserve + samplesOf(kReserveStepMs), samplesOf(kLongestReserveMs));
        m_primed = true;
        m_direction = 0;
        startWindow();
    }
    if (m_samples.size() > block.size() + m_reserve + samplesOf(kRunawayMs)) {
        m_samples.drop(m_samples.size() - block.size() - m_reserve);
        startWindow();
    }

    // At least one in a thousand, however short the block.
    const std::size_t stretch =
        m_direction == 0 || block.size() < 4 ? 0 : std::max<std::size_t>(block.size() / kStretchDivisor, 1);
    const std::size_t wanted = m_direction > 0 ? block.size() + stretch : block.size() - stretch;
    m_taken.resize(wanted);
    const std::size_t count = m_samples.pop(m_taken);
    std::span<const float> source = std::span<const float>(m_taken).first(count);
    if (count < wanted) {
        m_primed = false;
        m_ranDry = true;
        m_sinceRunDry = 0;
        source = source.first(std::min(count, block.size()));
    } else if (stretch != 0) {
        m_stretched.resize(block.size());
        stretchBlock(source, m_stretched);
        source = m_stretched;
    }
    for (std::size_t index = 0; index < source.size(); ++index)
        block[index] += source[index];
    if (m_primed)
        observe(m_samples.size(), block.size());
}

void PlayingInput::observe(std::size_t level, std::size_t passed)
{
    m_leastLevel = std::min(m_leastLevel, level);
    m_windowPassed += passed;
    if (m_windowPassed < samplesOf(kWindowMs))
        return;
    if (m_leastLevel > m_reserve + samplesOf(kLevelAboveReserveMs))
        m_direction = 1;
    else if (m_leastLevel < samplesOf(kLowestLevelMs))
        m_direction = -1;
    else if ((m_direction > 0 && m_leastLevel <= m_reserve) ||
             (m_direction < 0 && m_leastLevel >= m_reserve / 2))
        m_direction = 0;
    startWindow();
}

void PlayingInput::startWindow()
{
    m_windowPassed = 0;
    m_leastLevel = m_samples.size();
}

} // namespace talvenor
