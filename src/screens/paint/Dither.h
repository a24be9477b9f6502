#pragma once

#include <QColor>

#include <cmath>

namespace talvenor {

/// A threshold between 0 and 1 for the point of a picture: neighbouring points have very different ones, and
/// the mean over any small patch is a half.
///
/// Faint glows have fewer shades than they have points, and would show as rings. Rounding by a threshold of
/// the point's own hides them. (Interleaved gradient noise: J. Jimenez, Next Generation Post Processing in
/// Call of Duty, SIGGRAPH 2014.)
[[nodiscard]] inline float ditherThreshold(int x, int y)
{
    const auto fraction = [](float value) { return value - std::floor(value); };
    return fraction(52.9829189F *
                    fraction(0.06711056F * static_cast<float>(x) + 0.00583715F * static_cast<float>(y)));
}

/// The colour at `share` (0 to 1) of its opacity as a premultiplied pixel, rounded by the threshold.
[[nodiscard]] inline QRgb ditheredPixel(const QColor &color, float share, float threshold)
{
    const float opacity = color.alphaF() * share * 255;
    const auto rounded = [threshold](float value) { return static_cast<int>(value + threshold); };
    return qRgba(rounded(color.redF() * opacity), rounded(color.greenF() * opacity),
                 rounded(color.blueF() * opacity), rounded(opacity));
}

} // namespace talvenor
