#pragma once

#include <QList>

#include <array>
#include <deque>

namespace talvenor {

/// The waveform's bars by their numbers: 48 of them from left to right, the newest level at the right end.
class WaveformShape
{
public:
    static constexpr int barCount = 48;
    static constexpr double barSpacing = 2.5;
    /// Milliseconds that one bar takes for a change, and by which each bar begins later than the one before.
    static constexpr double changeDuration = 120;
    static constexpr double changeDelay = 4;

    /// Logical pixels; at least 3, though the bars then need more room than there is.
    [[nodiscard]] static double barWidth(double fullWidth);
    /// The level that a bar shows, in 32-bit arithmetic. `seconds` since 1970 shape what is shown without
    /// any level.
    [[nodiscard]] static float barLevel(int index, const QList<float> &levels, bool isRecording,
                                        float seconds);
    /// Logical pixels, at least 4.
    [[nodiscard]] static double barHeight(float level, double fullHeight);
    /// The opacity at a bar's lower end while recording.
    [[nodiscard]] static double barOpacity(int index, double barHeight, double fullHeight);
};

/// The heights of the bars on their way from one shape to the next.
///
/// Each bar eases out to its new height, later than its left neighbour. A change that comes while others are
/// under way adds to them, as two hands at one bar would, so that a quick row of changes holds no bar back.
class WaveformMotion
{
public:
    using Heights = std::array<double, WaveformShape::barCount>;

    /// The shape to come to, at a moment in milliseconds; at once unless it is animated. Moments never go
    /// back.
    void setTarget(const Heights &target, bool isAnimated, double moment);
    /// What is to be seen at the moment.
    [[nodiscard]] Heights at(double moment) const;
    /// True while bars are on their way.
    [[nodiscard]] bool isMoving(double moment) const;

private:
    struct Change
    {
        double start;
        Heights difference;
    };

    Heights m_target{};
    std::deque<Change> m_changes;
};

} // namespace talvenor
