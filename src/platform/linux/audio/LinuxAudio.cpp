#include "platform/linux/audio/LinuxAudio.h"

namespace talvenor {

void installLinuxAudio(Platform & /*platform*/)
{
}

} // namespace talvenor
