#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace talvenor {

/// Samples in order of arrival, in a ring that grows up to a limit and then loses its oldest. Not
/// thread-safe; its owner has the lock.
class SampleFifo
{
public:
    explicit SampleFifo(std::size_t limit) : m_limit(limit) {}

    [[nodiscard]] std::size_t size() const { return m_size; }

    /// Appends; answers how many of the oldest samples were lost to make room.
    std::size_t push(std::span<const float> samples);

    /// Appends `count` zeros; answers as `push` does.
    std::size_t pushSilence(std::size_t count);

    /// Takes the oldest samples out into `target`; answers how many there were.
    std::size_t pop(std::span<float> target);

    /// Removes up to `count` of the oldest samples.
    void drop(std::size_t count);

private:
    [[nodiscard]] std::size_t makeRoom(std::size_t count);

    std::size_t m_limit;
    std::vector<float> m_ring;
    std::size_t m_first = 0;
    std::size_t m_size = 0;
};

} // namespace talvenor
