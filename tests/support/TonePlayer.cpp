// A small application that plays a tone until its standard input is closed:
//     tone-player FREQUENCY LEVEL_DBFS SINK CHANNELS RATE
// Its one line of output is the reading of the monotonic clock, in nanoseconds, when the sound began.

#include "support/TonePlayback.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

int main(int argc, char **argv)
{
    if (argc != 6) {
        std::fprintf(stderr, "tone-player FREQUENCY LEVEL_DBFS SINK CHANNELS RATE\n");
        return 2;
    }
    try {
        const talvenor::test::TonePlayback playback({.frequency = std::atof(argv[1]),
                                                     .levelDbfs = std::atof(argv[2]),
                                                     .device = argv[3],
                                                     .channels = std::atoi(argv[4]),
                                                     .rate = std::atoi(argv[5])});
        std::printf("%lld\n", static_cast<long long>(playback.startedAt()));
        std::fflush(stdout);
        char ignored = 0;
        while (read(STDIN_FILENO, &ignored, 1) > 0) {
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "tone-player: %s\n", error.what());
        return 1;
    }
    return 0;
}
