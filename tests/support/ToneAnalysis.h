#pragma once

#include <optional>
#include <span>

namespace talvenor::test {

/// The amplitude in dBFS of the sine of `frequency` hertz within `samples`: 0 is a sine that reaches from -1
/// to 1. At least 50 periods should be given.
///
/// A single bin of the discrete Fourier transform by Goertzel's recurrence, under a Blackman-Harris window,
/// whose side lobes of -92 dB keep a loud neighbour out of a quiet tone's figure. -200 for silence.
[[nodiscard]] double toneLevelDbfs(std::span<const float> samples, double sampleRate, double frequency);

/// The root mean square of `samples` in dB, 0 being a constant 1; -200 for silence.
[[nodiscard]] double rmsDbfs(std::span<const float> samples);

/// When the sine of `frequency` first reaches `thresholdDbfs`, in seconds from the first sample; nothing if
/// it never does. Exact to about 5 ms for frequencies from 500 Hz.
[[nodiscard]] std::optional<double> toneOnset(std::span<const float> samples, double sampleRate,
                                              double frequency, double thresholdDbfs);

/// The share of blocks of 10 ms, from 0 to 1, in which the sine of `frequency` reaches `thresholdDbfs`: 1 for
/// a tone without a gap.
[[nodiscard]] double tonePresence(std::span<const float> samples, double sampleRate, double frequency,
                                  double thresholdDbfs);

} // namespace talvenor::test
