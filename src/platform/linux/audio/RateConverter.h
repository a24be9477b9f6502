#pragma once

#include <memory>
#include <span>
#include <vector>

struct SwrContext;

namespace talvenor {

/// Turns mono floats of one rate into mono floats of another, block by block without seams.
class RateConverter
{
public:
    /// Throws PlatformError if the library cannot convert between these rates.
    RateConverter(int fromRate, int toRate);

    /// The converted block, valid until the next call; it lags by the filter's fraction of a millisecond.
    [[nodiscard]] std::span<const float> convert(std::span<const float> input);

private:
    struct Free
    {
        void operator()(SwrContext *context) const;
    };
    std::unique_ptr<SwrContext, Free> m_context;
    std::vector<float> m_output;
};

} // namespace talvenor
