#pragma once

#include "platform/AudioBuffer.h"

#include <mutex>

namespace talvenor {

/// Hands the current loudness over from the tap to the main thread. Any thread.
///
/// The level is the RMS of one buffer in decibels, -60 dBFS...0 dBFS mapped to 0...1, with no smoothing,
/// attack, decay or peak hold.
class LevelMeter
{
public:
    /// The last level, 0...1; 0 before the first buffer.
    [[nodiscard]] float level() const;

    /// Measures the first channel of `buffer`. A buffer without floats or frames leaves the level as it is.
    void update(const PcmBuffer &buffer);

private:
    mutable std::mutex m_lock;
    float m_level = 0; ///< guarded by m_lock
};

} // namespace talvenor
