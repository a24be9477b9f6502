#include "platform/linux/audio/SoundMixer.h"

#include <algorithm>

namespace talvenor {

void SoundMixer::add(std::shared_ptr<PlayingInput> input)
{
    const std::lock_guard guard(m_lock);
    m_inputs.push_back(std::move(input));
}

void SoundMixer::mix(std::span<float> block)
{
    std::ranges::fill(block, 0.0F);
    const std::lock_guard guard(m_lock);
    for (const auto &input : m_inputs)
        input->mixInto(block);
    std::erase_if(m_inputs, [](const auto &input) { return input->isSpent(); });
}

} // namespace talvenor
