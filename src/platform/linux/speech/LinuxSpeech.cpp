#include "platform/linux/speech/LinuxSpeech.h"

namespace talvenor {

void installLinuxSpeech(Platform & /*platform*/)
{
}

} // namespace talvenor
