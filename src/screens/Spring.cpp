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

    /// The rate at which the motion dies away in the end, per second.
    [[nodiscard]] double decay() const
    {
        // Swings stay within an envelope of d w; without swings the slower of the two rates governs.
        return damping < 1 ? damping * frequency : frequency * (damping - std::sqrt(damping * damping - 1));
    }

    /// Seconds after which what remains never exceeds a thousandth.
    [[nodiscard]] double settlingTime() const
    {
        const double step = 1 / (frequency * 200);
        double t = 12 / decay();
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
    // a piece's time, a piece's parameter is time itself. Qt's curves of this kind have room for ten pieces
    // and write beyond it without a word. The pieces grow as the motion dies away, so that all are equally
    // exact: the error of a cubic goes with the fourth power of its length.
    constexpr int pieces = 10;
    const Motion motion(response, dampingFraction);
    const double end = duration(response, dampingFraction) / 1000.0;
    const double rate = motion.decay() / 4;
    const auto bound = [&](int piece) {
        return piece == pieces ? end : -std::log1p(piece * std::expm1(-rate * end) / pieces) / rate;
    };
    QVariantList points;
    const auto add = [&points, end](double time, double value) { points << time / end << value; };
    for (int i = 0; i < pieces; ++i) {
        const double from = bound(i);
        const double to = bound(i + 1);
        const double third = (to - from) / 3;
        const bool isLast = i + 1 == pieces;
        add(from + third, 1 - motion.remaining(from) + motion.velocity(from) * third);
        add(to - third, isLast ? 1 : 1 - motion.remaining(to) - motion.velocity(to) * third);
        add(to, isLast ? 1 : 1 - motion.remaining(to));
    }
    return points;
}

} // namespace talvenor
