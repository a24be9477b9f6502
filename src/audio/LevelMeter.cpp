#include "audio/LevelMeter.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace talvenor {

float LevelMeter::level() const
{
    const std::lock_guard guard(m_lock);
    return m_level;
}

void LevelMeter::update(const PcmBuffer &buffer)
{
    const float *const *channels = buffer.floatChannelData();
    if (channels == nullptr)
        return;
    const std::uint32_t n = buffer.frameLength();
    if (n == 0)
        return;
    float sum = 0;
    for (const float sample : std::span(channels[0], n))
        sum += sample * sample;
    const float rms = std::sqrt(sum / float(n));
    // The floor keeps silence finite: -120 dB.
    const float db = 20.0F * std::log10(std::max(1e-6F, rms));
    const float level = std::max(0.0F, std::min(1.0F, (db + 60.0F) / 60.0F));
    const std::lock_guard guard(m_lock);
    m_level = level;
}

} // namespace talvenor
