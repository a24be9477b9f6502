#include "app/LinuxPlatform.h"

#include "platform/Platform.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/desktop/LinuxDesktop.h"
#include "platform/linux/media/LinuxMedia.h"
#include "platform/linux/network/LinuxNetwork.h"
#include "platform/linux/playback/LinuxPlayback.h"
#include "platform/linux/speech/LinuxSpeech.h"

namespace talvenor {

void installLinuxPlatform()
{
    Platform &platform = Platform::shared();
    installLinuxAudio(platform);
    installLinuxMedia(platform);
    installLinuxPlayback(platform);
    installLinuxSpeech(platform);
    installLinuxNetwork(platform);
    installLinuxDesktop(platform);
}

} // namespace talvenor
