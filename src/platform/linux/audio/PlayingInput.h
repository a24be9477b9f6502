#pragma once

#include "platform/linux/audio/SampleFifo.h"

#include <mutex>
#include <span>
#include <vector>

namespace talvenor {

/// The sound of one application on its way from the sound server's bursts to an even clock.
///
/// A little is held back before the first sample goes out, so that a late burst is no gap; if one comes all
/// the same, more is held back from then on, up to 200 ms. The sink's clock and ours differ by some hundred
/// millionths: the queue's level is kept by stretching blocks by a thousandth. Thread-safe.
class PlayingInput
{
public:
    /// `rate` in frames per second.
    explicit PlayingInput(int rate);

    /// Appends mono samples. Sound server's thread.
    void push(std::span<const float> samples);

    /// Nothing more comes: what is there still plays out.
    void end();

    /// Adds the next samples to `block`; where none are there, it stays as it is. Mixing thread.
    void mixInto(std::span<float> block);

    /// True once the end has been reached and everything has gone out.
    [[nodiscard]] bool isSpent();

private:
    [[nodiscard]] std::size_t samplesOf(int milliseconds) const;
    void observe(std::size_t level, std::size_t passed);
    void startWindow();

    std::mutex m_lock;
    const int m_rate;
    SampleFifo m_samples; ///< guarded by m_lock, like all below
    std::vector<float> m_taken;
    std::vector<float> m_stretched;
    bool m_ended = false;
    bool m_primed = false;
    std::size_t m_reserve;         ///< how many samples are held back
    std::size_t m_sinceRunDry = 0; ///< samples that went by since the queue last ran dry
    bool m_ranDry = false;

    std::size_t m_windowPassed = 0;
    std::size_t m_leastLevel = 0;
    int m_direction = 0; ///< 1 while the level is brought down, -1 while it is brought up
};

} // namespace talvenor
