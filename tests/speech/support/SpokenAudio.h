#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace talvenor::test {

/// Sound as tests make it: 16-bit samples of one channel at 16 kHz.
using Samples = std::vector<std::int16_t>;
inline constexpr int kSampleRate = 16'000;

/// `text` spoken by one of flite's voices of that rate: "slt", "rms", "awb" or "kal16". Ends the test if
/// flite fails.
[[nodiscard]] Samples speak(const QString &voice, const QString &text);
[[nodiscard]] Samples silence(double seconds);
/// White noise of a given level, the same each time.
[[nodiscard]] Samples noise(double seconds, double decibelsOfFullScale);
[[nodiscard]] Samples tone(double seconds, double hertz, double decibelsOfFullScale);

/// Position of the first sample that is clearly not silence, in seconds.
[[nodiscard]] double onset(const Samples &samples);

void writeWave(const QString &path, const Samples &samples);
/// Encodes as a recording is: AAC at 48 kHz in an .m4a file. `muxerOptions` go to ffmpeg.
void writeM4a(const QString &path, const Samples &samples, const QStringList &muxerOptions = {});

/// A meeting of several voices.
struct SpokenMeeting
{
    struct Turn
    {
        QStringList words;   ///< in lower case, without punctuation
        double startsAt = 0; ///< seconds to the first sound of the turn
    };
    Samples samples;
    QList<Turn> turns;

    /// All words in order.
    [[nodiscard]] QStringList words() const;
};

/// Speaks the script of the tests.
[[nodiscard]] SpokenMeeting speakMeeting();

} // namespace talvenor::test
