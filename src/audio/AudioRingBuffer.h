#pragma once

#include <cstddef>
#include <mutex>
#include <span>
#include <vector>

namespace talvenor {

/// Hands system audio over from the thread that receives it to the microphone's tap: mono float samples,
/// first in, first out, the newest winning over the oldest.
///
/// Any thread. Writing and reading allocate nothing and hold the lock only while they copy.
class AudioRingBuffer
{
public:
    /// The capacity in samples: ten seconds at 48 kHz, whatever the rate in use.
    static constexpr std::ptrdiff_t cap = 480'000;

    AudioRingBuffer();

    /// The number of unread samples, 0...cap.
    [[nodiscard]] std::ptrdiff_t availableFrames() const;

    /// Appends `samples`. A full buffer never blocks or refuses: it loses its oldest samples silently.
    void write(std::span<const float> samples);

    /// Overwrites the first `count` elements of `destination` with the oldest unread samples, padded with
    /// zeros where there are fewer. `destination` holds at least `count` elements.
    void read(std::span<float> destination, std::ptrdiff_t count);

    /// Forgets everything unread.
    void reset();

private:
    mutable std::mutex m_lock;
    std::vector<float> m_buf;  ///< guarded by m_lock, as all below; `cap` elements, never resized
    std::ptrdiff_t m_wPos = 0; ///< index of the next sample to write; (m_rPos + m_cnt) modulo cap
    std::ptrdiff_t m_rPos = 0; ///< index of the oldest unread sample
    std::ptrdiff_t m_cnt = 0;  ///< number of unread samples
};

} // namespace talvenor
