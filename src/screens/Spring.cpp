#include "screens/Spring.h"

#include <cmath>
#include <numbers>

namespace talvenor {

namespace {

struct Motion
{
    double frequency; ///< w, per second
    double damping;   ///< d

    Motion(double response, double dampingFraction)
        : frequency(2 * std::numbers::pi / std::max(response, 0.001)),
          damping(std::max(dampingFraction, 0.05))
    {
    }

    [[nodiscard]] double remaining(double t) const
    {
        const double w = frequency;
        const double d = damping;
        if (d < 1) {
            const double v = w * std::sqrt(1 - d * d);
            return std::exp(-d * w * t) * (std::cos(v * t) + d * w / v * std::sin(v * t));
        }
        if (d == 1)
            return std::exp(-w * t) * (1 + w * t);
        const double a = w * (d - std::sqrt(d * d - 1));
        const double b = w * (d + std::sqrt(d * d - 1));
        return (b * std::exp(-a * t) - a * std::exp(-b * t)) / (b - a);
    }

    [[nodiscard]] double velocity(double t) const
    {
        const double w = frequency;
        const double d = damping;
        if (d < 1) {
            const double v = w * std::sqrt(1 - d * d);
            return std::exp(-d * w * t) * w * w / v * std::sin(v * t);
        }
        if (d == 1)
            return w * w * t * std::exp(-w * t);
        const double a = w * (d - std::sqrt(d * d - 1));
        const double b = w * (d + std::sqrt(d * d - 1));
        return a * b * (std::exp(-a * t) - std::exp(-b * t)) / (b - a);
    }

    /// Seconds after which what remains never exceeds a thousandth.
    [[nodiscard]] double settlingTime() const
    {
        // Swings die away within the envelope of d w; without swings the slow one of the two rates governs.
        const double rate =
            damping < 1 ? damping * frequency : frequency * (damping - std::sqrt(damping * damping - 1));
        const double step = 1 / (frequency * 200);
        double t = 12 / rate;
        while (t > step && std::abs(remaining(t - step)) < 0.001)
            t -= step;
        return t;
    }
};

} // namespace

double Spring::position(double seconds, double response, double dampingFraction)
{
    return 1 - Motion(response, dampingFraction).remaining(seconds);
}

double Spring::velocity(double seconds, double response, double dampingFraction)
{
    return Motion(response, dampingFraction).velocity(seconds);
}

int Spring::duration(double response, double dampingFraction)
{
    return static_cast<int>(std::ceil(Motion(response, dampingFraction).settlingTime() * 1000));
}

QVariantList Spring::curve(double response, double dampingFraction)
{
    // Cubic pieces with the spring's own positions and speeds at their ends. With control points at thirds of
    // a piece's time, a piece's parameter is time itself.
    const Motion motion(response, dampingFraction);
    const double end = duration(response, dampingFraction) / 1000.0;
    const int pieces = std::max(8, static_cast<int>(std::ceil(end * motion.frequency * 2)));
    const double span = end / pieces;
    QVariantList points;
    const auto add = [&points, end](double time, double value) { points << time / end << value; };
    for (int i = 0; i < pieces; ++i) {
        const double from = i * span;
        const double to = from + span;
        add(from + span / 3, 1 - motion.remaining(from) + motion.velocity(from) * span / 3);
        const bool isLast = i + 1 == pieces;
        add(to - span / 3, isLast ? 1 : 1 - motion.remaining(to) - motion.velocity(to) * span / 3);
        add(isLast ? end : to, isLast ? 1 : 1 - motion.remaining(to));
    }
    return points;
}

} // namespace talvenor
