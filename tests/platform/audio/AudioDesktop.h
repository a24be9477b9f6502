#pragma once

#include "support/ToneAnalysis.h"
#include "support/TonePlayback.h"

#include "platform/AudioEngine.h"
#include "platform/SystemAudioStream.h"

#include <QStringList>

#include <atomic>
#include <chrono>
#include <mutex>
#include <vector>

namespace talvenor::test {

/// Runs tests/support/audio-server with these arguments in this desktop; throws std::runtime_error if it
/// fails.
void audioServer(const QStringList &arguments);

/// Runs pactl and answers with what it prints, trimmed; throws std::runtime_error if it fails.
QString pactl(const QStringList &arguments);

/// The server in this desktop: "pulseaudio" or "pipewire".
QString audioServerKind();

/// Mono samples as they arrive on another thread, with the time of each arrival. Thread-safe.
class Recorded
{
public:
    void append(const float *samples, std::size_t count);

    [[nodiscard]] std::size_t count() const;
    [[nodiscard]] std::vector<float> samples() const;
    /// The last `seconds` seconds at `rate`.
    [[nodiscard]] std::vector<float> last(double seconds, double rate) const;
    /// How far the number of samples is behind (positive) or ahead of the time since `start`, in seconds: the
    /// least over the arrivals of the last second, since a single one may be late by chance.
    [[nodiscard]] double lateness(double rate, std::chrono::steady_clock::time_point start) const;
    /// The greatest time between two arrivals, in seconds.
    [[nodiscard]] double longestPause() const;
    /// The reading of CLOCK_MONOTONIC, in nanoseconds, at which sample zero would have been due had all
    /// arrived at once: the least over all arrivals.
    [[nodiscard]] std::int64_t origin(double rate) const;
    void clear();

private:
    struct Arrival
    {
        std::int64_t nanoseconds;
        std::size_t total;
    };
    mutable std::mutex m_lock;
    std::vector<float> m_samples;    ///< guarded by m_lock
    std::vector<Arrival> m_arrivals; ///< guarded by m_lock
};

/// Waits until the newest second holds the tone at `levelDbfs`, give or take `tolerance`, without a gap;
/// false if that does not come to pass within half a minute.
///
/// On a machine that is busy with other things the sound server itself stumbles now and then; a level that is
/// wrong, or a gap that is ours, stays.
[[nodiscard]] bool toneSettles(const Recorded &recorded, double rate, double frequency, double levelDbfs,
                               double tolerance);

/// Takes what a system stream delivers.
class RecordingOutput final : public SystemAudioOutput
{
public:
    void didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType type) override;

    Recorded recorded;
    std::atomic<int> calls{0};
    std::atomic<bool> wasWellFormed{true};
    std::atomic<bool> wasOnNamedThread{true};
    std::uint32_t expectedChannels = 1;
};

} // namespace talvenor::test
