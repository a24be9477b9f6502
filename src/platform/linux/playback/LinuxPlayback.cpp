#include "platform/linux/playback/LinuxPlayback.h"

#include "platform/linux/playback/MpvAudioPlayer.h"

#include <clocale>

namespace talvenor {

void installLinuxPlayback(Platform &platform)
{
    // libmpv refuses to work where C functions write numbers with a comma, which the application object has
    // asked for in the user's name. Qt and ICU read the user's locale from the environment by themselves:
    // what people see stays in their own format.
    // There are no other threads yet that could be asking.
    static_cast<void>(std::setlocale(LC_NUMERIC, "C")); // NOLINT(concurrency-mt-unsafe)
    platform.createAudioPlayer = [](const QString &path) { return std::make_unique<MpvAudioPlayer>(path); };
}

} // namespace talvenor
