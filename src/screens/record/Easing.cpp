#include "screens/record/Easing.h"

#include <algorithm>

namespace talvenor::Easing {

namespace {

/// The height of the curve through (0, 0), (x1, y1), (x2, y2) and (1, 1) at the abscissa `x`.
double cubicBezier(double x1, double y1, double x2, double y2, double x)
{
    if (x <= 0)
        return 0;
    if (x >= 1)
        return 1;
    const auto coordinate = [](double a, double b, double t) {
        return 3 * a * t * (1 - t) * (1 - t) + 3 * b * t * t * (1 - t) + t * t * t;
    };
    // The abscissa grows with the parameter, so halving finds it; twenty times is a millionth.
    double low = 0;
    double high = 1;
    for (int i = 0; i < 20; ++i) {
        const double middle = (low + high) / 2;
        (coordinate(x1, x2, middle) < x ? low : high) = middle;
    }
    return coordinate(y1, y2, (low + high) / 2);
}

} // namespace

double out(double fraction)
{
    return cubicBezier(0, 0, 0.58, 1, fraction);
}

double inOut(double fraction)
{
    return cubicBezier(0.42, 0, 0.58, 1, fraction);
}

} // namespace talvenor::Easing
