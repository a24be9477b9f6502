#include "support/ToneAnalysis.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace talvenor::test {

namespace {

constexpr double kSilenceDb = -200;
constexpr double kShortBlockSeconds = 0.01;

double decibels(double amplitude)
{
    return amplitude > 1e-10 ? 20 * std::log10(amplitude) : kSilenceDb;
}

double blackmanHarris(std::size_t index, std::size_t count)
{
    const double angle = 2 * std::numbers::pi * double(index) / double(count);
    return 0.35875 - 0.48829 * std::cos(angle) + 0.14128 * std::cos(2 * angle) -
           0.01168 * std::cos(3 * angle);
}

template<typename Window>
double goertzelAmplitude(std::span<const float> samples, double sampleRate, double frequency, Window window)
{
    const double omega = 2 * std::numbers::pi * frequency / sampleRate;
    const double coefficient = 2 * std::cos(omega);
    double last = 0;
    double beforeLast = 0;
    double windowSum = 0;
    for (std::size_t index = 0; index < samples.size(); ++index) {
        const double weight = window(index, samples.size());
        windowSum += weight;
        const double current = weight * double(samples[index]) + coefficient * last - beforeLast;
        beforeLast = last;
        last = current;
    }
    if (windowSum <= 0)
        return 0;
    const double power = last * last + beforeLast * beforeLast - coefficient * last * beforeLast;
    return 2 * std::sqrt(std::max(power, 0.0)) / windowSum;
}

double shortLevel(std::span<const float> block, double sampleRate, double frequency)
{
    return decibels(
        goertzelAmplitude(block, sampleRate, frequency, [](std::size_t, std::size_t) { return 1.0; }));
}

} // namespace

double toneLevelDbfs(std::span<const float> samples, double sampleRate, double frequency)
{
    return decibels(goertzelAmplitude(samples, sampleRate, frequency, blackmanHarris));
}

double rmsDbfs(std::span<const float> samples)
{
    double sum = 0;
    for (const float sample : samples)
        sum += double(sample) * double(sample);
    return samples.empty() ? kSilenceDb : decibels(std::sqrt(sum / double(samples.size())));
}

std::optional<double> toneOnset(std::span<const float> samples, double sampleRate, double frequency,
                                double thresholdDbfs)
{
    const auto length = std::size_t(sampleRate * kShortBlockSeconds);
    const auto step = std::max<std::size_t>(length / 10, 1);
    for (std::size_t start = 0; start + length <= samples.size(); start += step)
        if (shortLevel(samples.subspan(start, length), sampleRate, frequency) >= thresholdDbfs)
            return double(start + length / 2) / sampleRate;
    return std::nullopt;
}

double tonePresence(std::span<const float> samples, double sampleRate, double frequency, double thresholdDbfs)
{
    const auto length = std::size_t(sampleRate * kShortBlockSeconds);
    std::size_t blocks = 0;
    std::size_t present = 0;
    for (std::size_t start = 0; start + length <= samples.size(); start += length) {
        ++blocks;
        if (shortLevel(samples.subspan(start, length), sampleRate, frequency) >= thresholdDbfs)
            ++present;
    }
    return blocks == 0 ? 0 : double(present) / double(blocks);
}

} // namespace talvenor::test
