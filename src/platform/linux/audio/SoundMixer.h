#pragma once

#include "platform/linux/audio/PlayingInput.h"

#include <memory>

namespace talvenor {

/// Adds up the sounds of all applications. Thread-safe: inputs come and go on the sound server's thread while
/// blocks are made on another.
class SoundMixer
{
public:
    /// An input takes part from now on, until it has ended and is spent.
    void add(std::shared_ptr<PlayingInput> input);

    /// Fills `block` with the next samples of the sum, which may exceed -1...1; silence without inputs.
    void mix(std::span<float> block);

private:
    std::mutex m_lock;
    std::vector<std::shared_ptr<PlayingInput>> m_inputs; ///< guarded by m_lock
};

} // namespace talvenor
