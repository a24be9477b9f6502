#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace talvenor {

/// A stretch of speech between two pauses: 16-bit samples of one channel at 16 kHz.
struct Utterance
{
    std::int64_t startSample = 0; ///< position of the first sample in the whole audio
    std::vector<std::int16_t> samples;
};

/// Cuts a stream of sound into utterances by its level.
///
/// A frame of 10 ms counts as loud when it stands out from the background, which is the level that a tenth of
/// the frames within five seconds before and after it do not reach: steady noise, however loud, is
/// background. An utterance begins where most frames of a tenth of a second are loud, ends in a pause of half
/// a second, and has a little of the quiet around it. After 20 seconds it is cut at its quietest recent
/// place, so that what the decoder needs in memory and time for one utterance is bounded.
///
/// Holds some 30 seconds of sound at most. One thread at a time.
class UtteranceDetector
{
public:
    /// The longest utterance, in samples.
    static constexpr std::int64_t kMaximumSamples = 20 * 16'000;

    /// Takes the next samples.
    void add(std::span<const std::int16_t> samples);
    /// Says that no more samples come.
    void finish();
    /// Gives the next utterance that is complete, in order of time.
    [[nodiscard]] std::optional<Utterance> next();

private:
    static constexpr int kLevelCount = 181; ///< half decibels from -90 to 0 of full scale

    [[nodiscard]] bool isLoud(std::int64_t frame) const;
    [[nodiscard]] int levelAt(std::int64_t frame) const;
    [[nodiscard]] std::int64_t quietestFrame(std::int64_t from, std::int64_t to) const;
    void measureFrames();
    void decideFrames();
    void decideFrame(std::int64_t frame);
    void emitUtterance(std::int64_t firstFrame, std::int64_t endFrame);
    void forget();

    std::vector<std::int16_t> m_samples; ///< not yet forgotten
    std::int64_t m_firstSample = 0;      ///< position of m_samples.front() in the whole audio
    std::deque<std::uint8_t> m_levels;   ///< in half decibels above -90, one for each frame
    std::int64_t m_firstLevel = 0;       ///< frame number of m_levels.front()
    std::int64_t m_measured = 0;         ///< number of frames measured so far
    std::int64_t m_decided = 0;          ///< number of frames decided so far
    bool m_finished = false;

    std::array<int, kLevelCount> m_histogram{}; ///< of the frames around the one to be decided
    std::int64_t m_windowFirst = 0;             ///< first frame in the histogram
    std::int64_t m_windowEnd = 0;               ///< one past the last frame in the histogram

    std::uint32_t m_recentLoud = 0;               ///< one bit for each of the last frames, newest lowest
    std::optional<std::int64_t> m_utteranceStart; ///< frame where the current utterance begins
    std::int64_t m_lastLoud = 0;
    std::int64_t m_previousEnd = 0; ///< frame up to which sound has been given away
    std::deque<Utterance> m_complete;
};

} // namespace talvenor
