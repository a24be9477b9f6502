#pragma once

#include <span>

namespace talvenor {

/// Fills `output` with `input` made a little longer or shorter; both hold at least two samples.
///
/// The first and the last sample stay, so that blocks join as before. Cubic interpolation between four
/// neighbours (Catmull and Rom, 1974). Meant for changes of a thousandth, which nobody hears: this is how two
/// clocks that do not quite agree are kept together.
void stretchBlock(std::span<const float> input, std::span<float> output);

} // namespace talvenor
