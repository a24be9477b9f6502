#include "platform/linux/audio/BlockStretch.h"

#include <algorithm>
#include <cstddef>

namespace talvenor {

void stretchBlock(std::span<const float> input, std::span<float> output)
{
    const std::size_t last = input.size() - 1;
    const double step = double(last) / double(output.size() - 1);
    for (std::size_t index = 0; index < output.size(); ++index) {
        const double position = double(index) * step;
        const std::size_t at = std::min(std::size_t(position), last);
        const float part = float(position - double(at));
        const float before = input[at == 0 ? 0 : at - 1];
        const float here = input[at];
        const float next = input[std::min(at + 1, last)];
        const float afterNext = input[std::min(at + 2, last)];
        const float linear = 0.5F * (next - before);
        const float square = before - 2.5F * here + 2.0F * next - 0.5F * afterNext;
        const float cubic = 0.5F * (afterNext - before) + 1.5F * (here - next);
        output[index] = here + part * (linear + part * (square + part * cubic));
    }
}

} // namespace talvenor
