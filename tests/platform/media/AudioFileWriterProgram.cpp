#include "platform/linux/media/LinuxMedia.h"

#include <QCoreApplication>
#include <QStringList>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <thread>

using namespace talvenor;

/// Writes a 440 Hz tone to a file at the pace of the clock, times a factor, until it is killed or the given
/// time is over. For every block it prints the milliseconds of sound written so far.
///
///     AudioFileWriterProgram PATH SPEED SECONDS
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const double speed = arguments.at(2).toDouble();
    const double seconds = arguments.at(3).toDouble();
    constexpr double rate = 48'000;
    installLinuxMedia(Platform::shared());
    const std::unique_ptr<AudioFile> file =
        Platform::shared().createAudioFile(arguments.at(1), {.sampleRate = rate});
    PcmBuffer buffer({rate, 1}, 4'096);
    std::int64_t frames = 0;
    const auto start = std::chrono::steady_clock::now();
    while (double(frames) < seconds * rate) {
        for (std::uint32_t i = 0; i < buffer.frameLength(); ++i) {
            const double time = double(frames + i) / rate;
            buffer.floatChannelData()[0][i] = float(0.25 * std::sin(2 * std::numbers::pi * 440 * time));
        }
        file->write(buffer);
        frames += buffer.frameLength();
        std::printf("%lld\n", static_cast<long long>(double(frames) / rate * 1'000));
        std::fflush(stdout);
        std::this_thread::sleep_until(start +
                                      std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                          std::chrono::duration<double>(double(frames) / rate / speed)));
    }
    return 0;
}
