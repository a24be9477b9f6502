#include "screens/record/WaveformShape.h"

#include "screens/record/Easing.h"

#include <cmath>

namespace talvenor {

double WaveformShape::barWidth(double fullWidth)
{
    return std::max(3.0, (fullWidth - barSpacing * (barCount - 1)) / barCount);
}

float WaveformShape::barLevel(int index, const QList<float> &levels, bool isRecording, float seconds)
{
    const qsizetype sample = index + levels.size() - barCount;
    if (sample >= 0 && sample < levels.size())
        return levels.at(sample);
    const auto place = static_cast<float>(index);
    if (!levels.isEmpty() && isRecording) {
        // Bars without a level of their own echo the newest one, in a pattern that shifts with each level.
        const float wave = std::sin(place * 0.3F + static_cast<float>(levels.size()) * 0.1F);
        return std::max(0.05F, levels.constLast() * (0.3F + 0.7F * std::abs(wave)));
    }
    return 0.03F + 0.02F * std::abs(std::sin(place * 0.15F + seconds * 0.5F));
}

double WaveformShape::barHeight(float level, double fullHeight)
{
    return std::max(4.0, static_cast<double>(level) * fullHeight);
}

double WaveformShape::barOpacity(int index, double barHeight, double fullHeight)
{
    const double position = static_cast<double>(index) / barCount;
    const double intensity = std::min(1.0, barHeight / std::max(fullHeight, 1.0));
    return 0.45 + position * 0.35 + intensity * 0.2;
}

namespace {

constexpr double wholeDuration =
    WaveformShape::changeDuration + WaveformShape::changeDelay * (WaveformShape::barCount - 1);

} // namespace

void WaveformMotion::setTarget(const Heights &target, bool isAnimated, double moment)
{
    while (!m_changes.empty() && m_changes.front().start + wholeDuration <= moment)
        m_changes.pop_front();
    if (isAnimated && target != m_target) {
        Change change{moment, {}};
        std::transform(target.begin(), target.end(), m_target.begin(), change.difference.begin(),
                       std::minus<>());
        m_changes.push_back(change);
    }
    m_target = target;
}

WaveformMotion::Heights WaveformMotion::at(double moment) const
{
    Heights heights = m_target;
    for (const Change &change : m_changes) {
        for (size_t i = 0; i < heights.size(); ++i) {
            const double start = change.start + WaveformShape::changeDelay * static_cast<double>(i);
            const double progress = (moment - start) / WaveformShape::changeDuration;
            if (progress < 1)
                heights[i] -= change.difference[i] * (1 - Easing::out(progress));
        }
    }
    return heights;
}

bool WaveformMotion::isMoving(double moment) const
{
    return !m_changes.empty() && m_changes.back().start + wholeDuration > moment;
}

} // namespace talvenor
