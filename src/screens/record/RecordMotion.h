#pragma once

#include "screens/record/ScreenPresence.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QTimer>

namespace talvenor {

/// The two motions of the record button that never end: its rings turn once in 4 seconds, and its glow swells
/// and fades, 2.4 seconds each way.
///
/// They move in steps, and only while the item is on the screen. `fast` is for rings with visible ends. The
/// idle ring has none: at ten steps a second no pixel of it changes by more than a shade from one step to the
/// next, and the glow's phase has as many steps as its opacity has shades. Nothing finer could be seen, and
/// much would be painted for it. Main thread.
class RecordMotion : public QQuickItem
{
    Q_OBJECT
    QML_ELEMENT
    /// Degrees, 0 to 360, and over again.
    Q_PROPERTY(double ringRotation READ ringRotation NOTIFY ringRotationChanged)
    /// 0 to 1 and back.
    Q_PROPERTY(double glowPhase READ glowPhase NOTIFY glowPhaseChanged)
    Q_PROPERTY(bool isFast READ isFast WRITE setIsFast NOTIFY isFastChanged)
    /// Where the motions are, in milliseconds since they began. Time goes on from what is set.
    Q_PROPERTY(qint64 moment READ moment WRITE setMoment NOTIFY momentChanged)
    /// False holds them where they are.
    Q_PROPERTY(bool isEnabled READ isMotionEnabled WRITE setMotionEnabled NOTIFY isEnabledChanged)
    /// The item can be seen.
    Q_PROPERTY(bool isOnScreen READ isOnScreen NOTIFY isOnScreenChanged)

public:
    static constexpr int fastStepsPerSecond = 30;
    static constexpr int slowStepsPerSecond = 10;

    explicit RecordMotion(QQuickItem *parent = nullptr);

    [[nodiscard]] static double ringRotationAt(qint64 moment);
    [[nodiscard]] static double glowPhaseAt(qint64 moment);

    [[nodiscard]] double ringRotation() const { return ringRotationAt(m_moment); }
    [[nodiscard]] double glowPhase() const { return glowPhaseAt(m_moment); }
    [[nodiscard]] bool isFast() const { return m_isFast; }
    void setIsFast(bool isFast);
    [[nodiscard]] qint64 moment() const { return m_moment; }
    void setMoment(qint64 moment);
    [[nodiscard]] bool isMotionEnabled() const { return m_isEnabled; }
    void setMotionEnabled(bool isEnabled);

    [[nodiscard]] bool isOnScreen() const { return m_presence.isOnScreen(); }

    /// True while there is a timer that moves anything.
    [[nodiscard]] bool isMoving() const { return m_timer.isActive(); }

Q_SIGNALS:
    void ringRotationChanged();
    void glowPhaseChanged();
    void isFastChanged();
    void momentChanged();
    void isEnabledChanged();
    void isOnScreenChanged();

private:
    void updateTimer();
    void step();
    void showMoment(qint64 moment);

    ScreenPresence m_presence;
    QTimer m_timer;
    QElapsedTimer m_clock; ///< since `m_startMoment`; valid while the timer runs
    qint64 m_startMoment = 0;
    qint64 m_moment = 0;
    bool m_isFast = false;
    bool m_isEnabled = true;
};

} // namespace talvenor
