#include "platform/linux/audio/LinuxAudio.h"

#include "platform/linux/audio/LinuxAuthorization.h"
#include "platform/linux/audio/PulseAudioEngine.h"
#include "platform/linux/audio/PulseSystemAudioStream.h"
#include "platform/linux/audio/ShareableSinks.h"

namespace talvenor {

void installLinuxAudio(Platform &platform)
{
    platform.createAudioEngine = [] { return std::make_unique<PulseAudioEngine>(); };
    platform.shareableContent = [] { return shareableSinks(); };
    // One display stands for all: an application's sound can move to another sink while it plays.
    platform.createSystemAudioStream = [](const ShareableDisplay &,
                                          const SystemAudioConfiguration &configuration) {
        return std::make_shared<PulseSystemAudioStream>(configuration);
    };
    platform.authorization = std::make_shared<LinuxAuthorization>();
}

} // namespace talvenor
