#include "platform/linux/audio/ClockPacer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace talvenor {

namespace {

using std::chrono::milliseconds;

/// How far silence stays behind the clock: about one block of a device.
constexpr milliseconds kSilenceLag{85};
/// A device's first blocks may be ahead by so much: they hold what it heard while it was being opened.
constexpr milliseconds kEarliest{150};
/// A live device may say nothing for this long; what it held back then still comes whole.
constexpr milliseconds kLongestStall{2000};
/// A deviation that no clock brings about: a hole, or a burst.
constexpr milliseconds kJump{500};
/// So much missing is a hole, also in the least of a window: silence at once, where stretching would take
/// minutes.
constexpr milliseconds kHole{100};
/// For so long after a gap a burst of old sound may come.
constexpr milliseconds kSettling{1000};
constexpr milliseconds kWindow{4000};
/// Stretching begins beyond the first and ends within the second.
constexpr milliseconds kDeadBand{40};
constexpr milliseconds kAtRest{10};
constexpr std::int64_t kStretchDivisor = 1000;

} // namespace

ClockPacer::ClockPacer(double rate, PaceClock::time_point start)
    : m_rate(rate), m_start(start), m_lastBlock(start), m_windowStart(start)
{
}

ClockPacer::Adjustment ClockPacer::blockArrived(std::int64_t frames, PaceClock::time_point now)
{
    Adjustment adjustment;
    const std::int64_t lateness = expected(now) - (m_frames + frames);
    if (!m_aligned) {
        m_aligned = true;
        m_settled = now + kSettling;
        startWindow(now);
        if (lateness >= 0)
            adjustment.silenceBefore = lateness;
        else
            adjustment.dropped = std::clamp<std::int64_t>(-lateness - framesOf(kEarliest), 0, frames);
    } else if (now < m_settled && lateness < -framesOf(kEarliest)) {
        // What the device had held back comes in a burst, but its time has been filled with silence.
        adjustment.dropped = std::min(frames, -lateness - framesOf(kEarliest));
        startWindow(now);
    } else if (lateness < -framesOf(kJump)) {
        // More sound than time: a device that delivers faster than anyone speaks.
        adjustment.dropped = std::min(frames, -lateness);
        startWindow(now);
    } else {
        adjustment.stretch = observe(lateness, now);
        if (adjustment.stretch > framesOf(kHole)) {
            adjustment.silenceBefore = adjustment.stretch;
            adjustment.stretch = 0;
            startWindow(now);
        } else {
            m_stretchCredit = adjustment.stretch == 0 ? 0 : m_stretchCredit + frames;
            const std::int64_t most = std::min(m_stretchCredit / kStretchDivisor, frames - 2);
            adjustment.stretch = most > 0 ? std::clamp(adjustment.stretch, -most, most) : 0;
            m_stretchCredit -= std::abs(adjustment.stretch) * kStretchDivisor;
        }
    }
    m_lastBlock = now;
    m_frames += frames + adjustment.silenceBefore - adjustment.dropped + adjustment.stretch;
    return adjustment;
}

std::int64_t ClockPacer::silenceDue(bool deviceLive, PaceClock::time_point now)
{
    if (deviceLive && now - m_lastBlock < kLongestStall)
        return 0;
    const std::int64_t due = std::max<std::int64_t>(expected(now) - framesOf(kSilenceLag) - m_frames, 0);
    m_frames += due;
    m_aligned = m_aligned && due == 0;
    return due;
}

std::int64_t ClockPacer::expected(PaceClock::time_point now) const
{
    return std::llround(std::chrono::duration<double>(now - m_start).count() * m_rate);
}

std::int64_t ClockPacer::framesOf(milliseconds duration) const
{
    return std::llround(std::chrono::duration<double>(duration).count() * m_rate);
}

/// Answers how many frames are missing (or, negative, too many) as long as that is to be made good.
std::int64_t ClockPacer::observe(std::int64_t lateness, PaceClock::time_point now)
{
    m_leastLateness = std::min(m_leastLateness.value_or(lateness), lateness);
    if (now - m_windowStart >= kWindow) {
        const std::int64_t least = *m_leastLateness;
        startWindow(now);
        if (least > framesOf(kHole)) {
            m_direction = 0;
            return least;
        }
        if (std::abs(least) <= framesOf(kAtRest) || (least > 0) != (m_direction > 0))
            m_direction = 0;
        if (std::abs(least) > framesOf(kDeadBand))
            m_direction = least > 0 ? 1 : -1;
    }
    return m_direction == 0 ? 0 : m_direction * framesOf(kDeadBand);
}

void ClockPacer::startWindow(PaceClock::time_point now)
{
    m_windowStart = now;
    m_leastLateness.reset();
}

} // namespace talvenor
