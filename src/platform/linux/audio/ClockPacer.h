#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace talvenor {

/// The monotonic clock, by which both sides of a meeting are paced.
using PaceClock = std::chrono::steady_clock;

/// Says what a device's samples need so that the number of frames follows the monotonic clock.
///
/// A device's own clock is off by up to some hundred millionths, a device can vanish, and a server can hang;
/// over a meeting of hours the microphone would drift away from the system's sound, which has the monotonic
/// clock. Small deviations are made good by stretching blocks by a thousandth once they leave a dead band,
/// holes by silence, and what comes in place of time already filled with silence is dropped. Frames that
/// come from a device whose clock is right pass untouched. Pure arithmetic: the time is told by the caller.
class ClockPacer
{
public:
    /// What is to be done with a block before it is appended.
    struct Adjustment
    {
        std::int64_t silenceBefore = 0; ///< frames of silence to put before the block
        std::int64_t dropped = 0;       ///< frames to leave out from the block's start
        std::int64_t stretch = 0;       ///< frames to lengthen (or shorten) the rest by
    };

    /// Frame zero is at `start`; `rate` in frames per second.
    ClockPacer(double rate, PaceClock::time_point start);

    /// A device was taken up: its first block is set to its place in time, whatever came before.
    void deviceAttached() { m_aligned = false; }

    /// A block of `frames` has arrived; counts what comes of it.
    [[nodiscard]] Adjustment blockArrived(std::int64_t frames, PaceClock::time_point now);

    /// How many frames of silence are due now because the device is gone (`deviceLive` false) or has said
    /// nothing for too long; counts them. They stay a little behind the clock, so that the first block of
    /// the next device, which is about so long, finds its place.
    [[nodiscard]] std::int64_t silenceDue(bool deviceLive, PaceClock::time_point now);

    /// All frames counted so far.
    [[nodiscard]] std::int64_t frames() const { return m_frames; }
    [[nodiscard]] double rate() const { return m_rate; }

private:
    [[nodiscard]] std::int64_t expected(PaceClock::time_point now) const;
    [[nodiscard]] std::int64_t framesOf(std::chrono::milliseconds duration) const;
    [[nodiscard]] std::int64_t observe(std::int64_t lateness, PaceClock::time_point now);
    void startWindow(PaceClock::time_point now);

    double m_rate;
    PaceClock::time_point m_start;
    std::int64_t m_frames = 0;
    bool m_aligned = false;          ///< the device's first block has been set to its place
    PaceClock::time_point m_settled; ///< until then a burst of old sound is expected
    PaceClock::time_point m_lastBlock;

    // Blocks are late by chance, never early: the least lateness of some seconds is the clocks' difference.
    PaceClock::time_point m_windowStart;
    std::optional<std::int64_t> m_leastLateness;
    int m_direction = 0;              ///< 1 while blocks are lengthened, -1 while they are shortened
    std::int64_t m_stretchCredit = 0; ///< frames seen that have not yet earned a frame of stretch
};

} // namespace talvenor
