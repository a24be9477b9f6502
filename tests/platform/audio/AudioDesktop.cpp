#include "AudioDesktop.h"

#include "support/Await.h"

#include <QFile>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace talvenor::test {

namespace {

QString run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(40'000) || process.exitCode() != 0)
        throw std::runtime_error(
            (program + u' ' + arguments.join(u' ') + QStringLiteral(" has failed")).toStdString());
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

std::int64_t now()
{
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

void audioServer(const QStringList &arguments)
{
    run(QStringLiteral(TALVENOR_TEST_SUPPORT "/audio-server"), arguments);
}

QString pactl(const QStringList &arguments)
{
    return run(QStringLiteral("pactl"), arguments);
}

QString audioServerKind()
{
    QFile kind(qEnvironmentVariable("TALVENOR_DESKTOP") + QStringLiteral("/audio/kind"));
    if (!kind.open(QIODevice::ReadOnly))
        throw std::runtime_error("no audio server in this desktop");
    return QString::fromUtf8(kind.readAll());
}

void Recorded::append(const float *samples, std::size_t count)
{
    const std::lock_guard guard(m_lock);
    m_samples.insert(m_samples.end(), samples, samples + count);
    m_arrivals.push_back({now(), m_samples.size()});
}

std::size_t Recorded::count() const
{
    const std::lock_guard guard(m_lock);
    return m_samples.size();
}

std::vector<float> Recorded::samples() const
{
    const std::lock_guard guard(m_lock);
    return m_samples;
}

std::vector<float> Recorded::last(double seconds, double rate) const
{
    const std::lock_guard guard(m_lock);
    const auto wanted = std::min(std::size_t(seconds * rate), m_samples.size());
    return {m_samples.end() - std::ptrdiff_t(wanted), m_samples.end()};
}

double Recorded::lateness(double rate, std::chrono::steady_clock::time_point start) const
{
    const std::lock_guard guard(m_lock);
    if (m_arrivals.empty())
        return std::numeric_limits<double>::infinity();
    const auto begin = std::chrono::nanoseconds(start.time_since_epoch()).count();
    const std::int64_t lastSecond = m_arrivals.back().nanoseconds - 1'000'000'000;
    double least = std::numeric_limits<double>::infinity();
    for (const auto &arrival : m_arrivals)
        if (arrival.nanoseconds >= lastSecond)
            least = std::min(least, double(arrival.nanoseconds - begin) / 1e9 - double(arrival.total) / rate);
    return least;
}

double Recorded::longestPause() const
{
    const std::lock_guard guard(m_lock);
    std::int64_t longest = 0;
    for (std::size_t index = 1; index < m_arrivals.size(); ++index)
        longest = std::max(longest, m_arrivals[index].nanoseconds - m_arrivals[index - 1].nanoseconds);
    return double(longest) / 1e9;
}

std::int64_t Recorded::origin(double rate) const
{
    const std::lock_guard guard(m_lock);
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (const auto &arrival : m_arrivals)
        least = std::min(least, arrival.nanoseconds - std::int64_t(double(arrival.total) / rate * 1e9));
    return least;
}

void Recorded::clear()
{
    const std::lock_guard guard(m_lock);
    m_samples.clear();
    m_arrivals.clear();
}

bool toneSettles(const Recorded &recorded, double rate, double frequency, double levelDbfs, double tolerance)
{
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    std::size_t wanted = recorded.count() + std::size_t(rate);
    double level = 0;
    double presence = 0;
    while (std::chrono::steady_clock::now() < limit) {
        if (waitUntil([&] { return recorded.count() >= wanted; }, 5000)) {
            const auto newest = recorded.last(1, rate);
            level = toneLevelDbfs(newest, rate, frequency);
            presence = tonePresence(newest, rate, frequency, levelDbfs - 6);
            if (std::abs(level - levelDbfs) <= tolerance && presence >= 1)
                return true;
        }
        wanted = recorded.count() + std::size_t(rate / 4);
    }
    qWarning("%.0f Hz is at %.2f instead of %.2f dBFS, %.1f%% of the time", frequency, level, levelDbfs,
             100 * presence);
    return false;
}

void RecordingOutput::didOutputSampleBuffer(const SampleBuffer &buffer, StreamOutputType type)
{
    ++calls;
    const std::size_t frameBytes = sizeof(float) * expectedChannels;
    if (type != StreamOutputType::audio || !buffer.data || buffer.byteLength == 0 || !buffer.format ||
        buffer.format->channelCount != expectedChannels || buffer.byteLength % frameBytes != 0)
        wasWellFormed = false;
    if (QThread::currentThread()->objectName() != QStringLiteral("com.talvenor.sysaudio"))
        wasOnNamedThread = false;
    const auto *const samples = static_cast<const float *>(buffer.data);
    std::vector<float> mono(buffer.byteLength / frameBytes);
    for (std::size_t frame = 0; frame < mono.size(); ++frame)
        mono[frame] = samples[frame * expectedChannels];
    recorded.append(mono.data(), mono.size());
}

} // namespace talvenor::test
