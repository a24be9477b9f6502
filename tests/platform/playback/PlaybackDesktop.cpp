#include "PlaybackDesktop.h"

#include "support/Await.h"
#include "support/DecodedAudio.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace talvenor::test {

namespace {

constexpr double kThresholdDbfs = -30;
constexpr auto kBlock = std::size_t(kPlaybackRate / 100);
constexpr float kAudible = 0.01F;

void makeFile(const QString &path, const QString &expression, double seconds)
{
    const QString source = QStringLiteral("aevalsrc='0.1*sin(2*PI*t*(%1))':s=%2:d=%3")
                               .arg(expression)
                               .arg(int(kPlaybackRate))
                               .arg(seconds);
    static_cast<void>(outputOf(QStringLiteral("ffmpeg"),
                               {QStringLiteral("-v"), QStringLiteral("error"), QStringLiteral("-nostdin"),
                                QStringLiteral("-y"), QStringLiteral("-f"), QStringLiteral("lavfi"),
                                QStringLiteral("-i"), source, QStringLiteral("-b:a"), QStringLiteral("96k"),
                                QStringLiteral("-movflags"), QStringLiteral("+faststart"), path}));
}

} // namespace

SpeakerEar::SpeakerEar()
{
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process, [this] {
        // Whole frames only; the rest waits in the pipe. The left channel stands for both: servers differ in
        // how they make one channel of two.
        const qint64 frames = m_process.bytesAvailable() / qint64(2 * sizeof(float));
        std::vector<float> both(std::size_t(2 * frames));
        m_process.read(reinterpret_cast<char *>(both.data()), frames * qint64(2 * sizeof(float)));
        std::vector<float> left(both.size() / 2);
        for (std::size_t frame = 0; frame < left.size(); ++frame)
            left[frame] = both[2 * frame];
        m_recorded.append(left.data(), left.size());
    });
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral("parec"),
                    {QStringLiteral("--device=speaker.monitor"), QStringLiteral("--format=float32le"),
                     QStringLiteral("--rate=48000"), QStringLiteral("--channels=2"), QStringLiteral("--raw"),
                     QStringLiteral("--latency-msec=20")});
    if (!waitUntil([this] { return m_recorded.count() > 0; }, 20'000))
        throw std::runtime_error("the speaker cannot be listened to");
    clear();
}

SpeakerEar::~SpeakerEar()
{
    m_process.disconnect();
    m_process.terminate();
    m_process.waitForFinished(10'000);
}

bool SpeakerEar::listen(double seconds) const
{
    const std::size_t wanted = m_recorded.count() + std::size_t(seconds * kPlaybackRate);
    return waitUntil([&] { return m_recorded.count() >= wanted; }, int(seconds * 1'000) + 15'000);
}

bool SpeakerEar::hears(double frequency) const
{
    return waitUntil([&] { return heardSeconds(m_recorded.last(0.3, kPlaybackRate), frequency) >= 0.05; },
                     20'000);
}

bool SpeakerEar::hearsNothing() const
{
    return waitUntil(
        [&] {
            const auto last = m_recorded.last(0.1, kPlaybackRate);
            return last.size() >= std::size_t(0.1 * kPlaybackRate) && soundExtent(last).end == 0;
        },
        20'000);
}

void makeSteppedFile(const QString &path, int seconds)
{
    makeFile(path, QStringLiteral("700+400*floor(t)"), seconds);
}

void makeToneFile(const QString &path, double frequency, double seconds)
{
    makeFile(path, QString::number(frequency), seconds);
}

double heardSeconds(std::span<const float> samples, double frequency)
{
    return tonePresence(samples, kPlaybackRate, frequency, kThresholdDbfs) * double(samples.size() / kBlock) /
           100;
}

SoundExtent soundExtent(std::span<const float> samples)
{
    const auto isAudible = [](float sample) { return std::abs(sample) > kAudible; };
    const auto first = std::find_if(samples.begin(), samples.end(), isAudible);
    if (first == samples.end())
        return {};
    const auto last = std::find_if(samples.rbegin(), samples.rend(), isAudible);
    return {std::size_t(first - samples.begin()), std::size_t(samples.rend() - last)};
}

double longestGap(std::span<const float> samples, double frequency)
{
    const SoundExtent extent = soundExtent(samples);
    std::size_t gap = 0;
    std::size_t longest = 0;
    for (std::size_t start = extent.begin; start + kBlock <= extent.end; start += kBlock / 10) {
        const bool present =
            tonePresence(samples.subspan(start, kBlock), kPlaybackRate, frequency, kThresholdDbfs) > 0;
        gap = present ? 0 : gap + kBlock / 10;
        longest = std::max(longest, gap);
    }
    return double(longest) / kPlaybackRate;
}

} // namespace talvenor::test
