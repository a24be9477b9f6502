#include "platform/linux/speech/worker/UtteranceDetector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace talvenor {

namespace {

// All lengths in frames of 10 ms.
constexpr std::int64_t kSamplesPerFrame = 160;
constexpr std::int64_t kBackgroundReach = 500;
constexpr std::int64_t kOnsetFrames = 10;
constexpr int kLoudFramesOfOnset = 6;
constexpr std::int64_t kLeadIn = 25;
constexpr std::int64_t kPause = 50;
constexpr std::int64_t kLeadOut = 25;
constexpr std::int64_t kCutSearch = 800;
constexpr std::int64_t kCutSmoothing = 10;

constexpr int kBackgroundTenths = 1;
constexpr int kQuietestBackground = 2 * (90 - 65); // -65 dB of full scale, in half decibels above -90
constexpr int kLoudAboveBackground = 2 * 9;

std::uint8_t levelOf(std::span<const std::int16_t> frame)
{
    double sum = 0;
    double squares = 0;
    for (const std::int16_t sample : frame) {
        sum += sample;
        squares += double(sample) * sample;
    }
    const double count = double(frame.size());
    // Without the mean: an offset of the converter is not sound.
    const double power = (squares - sum * sum / count) / count / (32768.0 * 32768.0);
    const double decibels = 10 * std::log10(std::max(power, 1e-9));
    return static_cast<std::uint8_t>(std::clamp(std::lround(2 * (decibels + 90)), 0L, 180L));
}

} // namespace

void UtteranceDetector::add(std::span<const std::int16_t> samples)
{
    m_samples.insert(m_samples.end(), samples.begin(), samples.end());
    measureFrames();
    decideFrames();
    forget();
}

void UtteranceDetector::finish()
{
    m_finished = true;
    decideFrames();
    if (m_utteranceStart) {
        emitUtterance(*m_utteranceStart, std::min(m_lastLoud + 1 + kLeadOut, m_measured));
        m_utteranceStart.reset();
    }
}

std::optional<Utterance> UtteranceDetector::next()
{
    if (m_complete.empty())
        return std::nullopt;
    Utterance utterance = std::move(m_complete.front());
    m_complete.pop_front();
    return utterance;
}

void UtteranceDetector::measureFrames()
{
    for (;;) {
        const std::int64_t start = m_measured * kSamplesPerFrame - m_firstSample;
        if (start + kSamplesPerFrame > std::int64_t(m_samples.size()))
            return;
        m_levels.push_back(
            levelOf(std::span(m_samples).subspan(std::size_t(start), std::size_t(kSamplesPerFrame))));
        ++m_measured;
    }
}

void UtteranceDetector::decideFrames()
{
    while (m_decided < m_measured && (m_finished || m_decided + kBackgroundReach < m_measured)) {
        const std::int64_t windowEnd = std::min(m_decided + kBackgroundReach + 1, m_measured);
        for (; m_windowEnd < windowEnd; ++m_windowEnd)
            ++m_histogram[std::size_t(levelAt(m_windowEnd))];
        for (; m_windowFirst < m_decided - kBackgroundReach; ++m_windowFirst)
            --m_histogram[std::size_t(levelAt(m_windowFirst))];
        decideFrame(m_decided);
        ++m_decided;
    }
}

int UtteranceDetector::levelAt(std::int64_t frame) const
{
    return m_levels[std::size_t(frame - m_firstLevel)];
}

bool UtteranceDetector::isLoud(std::int64_t frame) const
{
    const std::int64_t rank = (m_windowEnd - m_windowFirst) * kBackgroundTenths / 10;
    std::int64_t below = 0;
    int background = 0;
    for (; background < kLevelCount - 1; ++background) {
        below += m_histogram[std::size_t(background)];
        if (below > rank)
            break;
    }
    return levelAt(frame) >= std::max(background, kQuietestBackground) + kLoudAboveBackground;
}

void UtteranceDetector::decideFrame(std::int64_t frame)
{
    const bool loud = isLoud(frame);
    m_recentLoud = (m_recentLoud << 1U | (loud ? 1U : 0U)) & ((1U << kOnsetFrames) - 1U);
    if (loud)
        m_lastLoud = frame;

    if (!m_utteranceStart) {
        if (std::popcount(m_recentLoud) >= kLoudFramesOfOnset)
            m_utteranceStart = std::max(frame + 1 - kOnsetFrames - kLeadIn, m_previousEnd);
        return;
    }
    if (frame - m_lastLoud >= kPause) {
        emitUtterance(*m_utteranceStart, m_lastLoud + 1 + kLeadOut);
        m_utteranceStart.reset();
        m_recentLoud = 0;
    } else if ((frame + 1 - *m_utteranceStart) * kSamplesPerFrame >= kMaximumSamples) {
        const std::int64_t cut = quietestFrame(frame + 1 - kCutSearch, frame + 1);
        emitUtterance(*m_utteranceStart, cut);
        m_utteranceStart = cut;
    }
}

std::int64_t UtteranceDetector::quietestFrame(std::int64_t from, std::int64_t to) const
{
    std::int64_t best = from;
    int lowest = std::numeric_limits<int>::max();
    int sum = 0;
    for (std::int64_t frame = from; frame < to; ++frame) {
        sum += levelAt(frame);
        if (frame - from < kCutSmoothing - 1)
            continue;
        if (sum <= lowest) {
            lowest = sum;
            best = frame - kCutSmoothing / 2;
        }
        sum -= levelAt(frame - kCutSmoothing + 1);
    }
    return best;
}

void UtteranceDetector::emitUtterance(std::int64_t firstFrame, std::int64_t endFrame)
{
    const std::int64_t from = firstFrame * kSamplesPerFrame - m_firstSample;
    const std::int64_t to = endFrame * kSamplesPerFrame - m_firstSample;
    m_complete.push_back({firstFrame * kSamplesPerFrame, {m_samples.begin() + from, m_samples.begin() + to}});
    m_previousEnd = endFrame;
}

void UtteranceDetector::forget()
{
    const std::int64_t neededFrame =
        m_utteranceStart ? *m_utteranceStart
                         : std::max<std::int64_t>(m_previousEnd, m_decided - kOnsetFrames - kLeadIn);
    // In large steps, since what remains is moved.
    const std::int64_t surplus = neededFrame * kSamplesPerFrame - m_firstSample;
    if (surplus > 10 * 16'000) {
        m_samples.erase(m_samples.begin(), m_samples.begin() + surplus);
        m_firstSample += surplus;
    }
    const std::int64_t neededLevel = std::min(neededFrame, m_windowFirst);
    for (; m_firstLevel < neededLevel; ++m_firstLevel)
        m_levels.pop_front();
}

} // namespace talvenor
