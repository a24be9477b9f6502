#pragma once

#include <QObject>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace talvenor {

/// Motion as of a weight on a spring, told by the spring's response (the time of one undamped swing, in
/// seconds) and its damping fraction (0 swings for ever, 1 comes to rest as fast as is possible without
/// swinging).
///
/// A unit mass hangs on a spring of stiffness (2 pi / response)^2, damped by 4 pi * fraction / response, and
/// starts at rest at 0 with the spring drawn to 1. With w = 2 pi / response and d the fraction:
///     d < 1:  x(t) = 1 - e^(-d w t) (cos(v t) + (d w / v) sin(v t)),  v = w sqrt(1 - d^2)
///     d = 1:  x(t) = 1 - e^(-w t) (1 + w t)
///     d > 1:  x(t) = 1 - (b e^(-a t) - a e^(-b t)) / (b - a),  a, b = w (d -+ sqrt(d^2 - 1))
/// (the damped harmonic oscillator of any textbook of mechanics). Qt's own SpringAnimation counts in other
/// units and moves in steps of 16 ms.
class Spring : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    /// How far the weight is after so many seconds: 0 at first, 1 at rest, above 1 where it overshoots.
    [[nodiscard]] static double position(double seconds, double response, double dampingFraction);
    /// Its speed, per second.
    [[nodiscard]] static double velocity(double seconds, double response, double dampingFraction);

    /// Milliseconds until the weight stays within a thousandth of its goal. A fraction of 0 is taken for
    /// 0.05: such a motion would not end.
    Q_INVOKABLE static int duration(double response, double dampingFraction);
    /// The motion over that time as `easing.bezierCurve` of a QML animation.
    Q_INVOKABLE static QVariantList curve(double response, double dampingFraction);
};

} // namespace talvenor
