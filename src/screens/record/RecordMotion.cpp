#include "screens/record/RecordMotion.h"

#include "screens/record/Easing.h"

#include <cmath>

namespace talvenor {

namespace {

constexpr qint64 turnDuration = 4000;
constexpr qint64 breathDuration = 2400; ///< one way
/// The glow's opacity goes from 0.12 to 0.16, which is as many of the 255 shades of a pixel.
constexpr int breathSteps = 10;

} // namespace

RecordMotion::RecordMotion(QQuickItem *parent) : QQuickItem(parent), m_presence(*this)
{
    connect(&m_timer, &QTimer::timeout, this, &RecordMotion::step);
    connect(&m_presence, &ScreenPresence::changed, this, &RecordMotion::updateTimer);
    connect(&m_presence, &ScreenPresence::changed, this, &RecordMotion::isOnScreenChanged);
}

double RecordMotion::ringRotationAt(qint64 moment)
{
    return static_cast<double>(moment % turnDuration) / turnDuration * 360;
}

double RecordMotion::glowPhaseAt(qint64 moment)
{
    const auto breath = static_cast<double>(moment % (2 * breathDuration)) / breathDuration;
    return std::round(Easing::inOut(breath <= 1 ? breath : 2 - breath) * breathSteps) / breathSteps;
}

void RecordMotion::setIsFast(bool isFast)
{
    if (isFast == m_isFast)
        return;
    m_isFast = isFast;
    updateTimer();
    Q_EMIT isFastChanged();
}

void RecordMotion::setMotionEnabled(bool isEnabled)
{
    if (isEnabled == m_isEnabled)
        return;
    m_isEnabled = isEnabled;
    updateTimer();
    Q_EMIT isEnabledChanged();
}

void RecordMotion::setMoment(qint64 moment)
{
    showMoment(std::max<qint64>(moment, 0));
    m_startMoment = m_moment;
    if (m_clock.isValid())
        m_clock.restart();
}

void RecordMotion::updateTimer()
{
    if (!m_isEnabled || !m_presence.isOnScreen()) {
        m_timer.stop();
        m_clock.invalidate();
        return;
    }
    if (!m_clock.isValid()) {
        m_startMoment = m_moment;
        m_clock.start();
    }
    // Precise, since uneven steps are seen as stumbling; the slow ones may wait for other timers.
    m_timer.setTimerType(m_isFast ? Qt::PreciseTimer : Qt::CoarseTimer);
    m_timer.start(1000 / (m_isFast ? fastStepsPerSecond : slowStepsPerSecond));
}

void RecordMotion::step()
{
    showMoment(m_startMoment + m_clock.elapsed());
}

void RecordMotion::showMoment(qint64 moment)
{
    if (moment == m_moment)
        return;
    const double rotation = ringRotation();
    const double phase = glowPhase();
    m_moment = moment;
    Q_EMIT momentChanged();
    if (rotation != ringRotation())
        Q_EMIT ringRotationChanged();
    if (phase != glowPhase())
        Q_EMIT glowPhaseChanged();
}

} // namespace talvenor
