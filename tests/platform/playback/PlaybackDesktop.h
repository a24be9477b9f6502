#pragma once

#include "platform/audio/AudioDesktop.h"

#include <QProcess>
#include <QString>

#include <span>
#include <vector>

namespace talvenor::test {

/// Samples per second of all sounds of these tests.
inline constexpr double kPlaybackRate = 48'000;

/// What comes out of the virtual speaker, recorded by a program of its own.
class SpeakerEar
{
public:
    /// Returns when the recording runs; throws std::runtime_error if it does not.
    SpeakerEar();
    ~SpeakerEar();
    Q_DISABLE_COPY_MOVE(SpeakerEar)

    /// Forgets what has been heard so far.
    void clear() { m_recorded.clear(); }
    /// What has been heard since then.
    [[nodiscard]] std::vector<float> samples() const { return m_recorded.samples(); }
    /// When, on the monotonic clock in seconds, the sample with this index was heard.
    [[nodiscard]] double clockAt(double index) const
    {
        return double(m_recorded.origin(kPlaybackRate)) / 1e9 + index / kPlaybackRate;
    }
    /// Waits for so many seconds of sound; false if they do not come.
    [[nodiscard]] bool listen(double seconds) const;
    /// Waits until a tone is heard; false if it is not.
    [[nodiscard]] bool hears(double frequency) const;
    /// Waits until the last tenth of a second is silent; false if it does not become so.
    [[nodiscard]] bool hearsNothing() const;

private:
    QProcess m_process;
    Recorded m_recorded;
};

/// The tone of a stepped file in its second number `second`, counted from 0: each has another one, a whole
/// number of hundreds of hertz apart, so that the 10 ms blocks of the analysis tell them from each other.
[[nodiscard]] constexpr double stepFrequency(int second)
{
    return 700 + 400 * second;
}

/// Makes an M4A file of `seconds` seconds in which every second has its own tone, at -20 dBFS.
void makeSteppedFile(const QString &path, int seconds);

/// Makes an M4A file of one tone at -20 dBFS.
void makeToneFile(const QString &path, double frequency, double seconds);

/// For how many seconds a tone of -20 dBFS is heard in `samples`, in blocks of 10 ms.
[[nodiscard]] double heardSeconds(std::span<const float> samples, double frequency);

/// From the first to the last sound in `samples`, as indices of samples; both 0 for silence.
struct SoundExtent
{
    std::size_t begin = 0;
    std::size_t end = 0;
    [[nodiscard]] double seconds() const { return double(end - begin) / kPlaybackRate; }
};
[[nodiscard]] SoundExtent soundExtent(std::span<const float> samples);

/// The longest stretch in seconds between the first and the last sound in which a tone is not heard.
[[nodiscard]] double longestGap(std::span<const float> samples, double frequency);

} // namespace talvenor::test
