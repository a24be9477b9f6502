#include "platform/linux/media/LinuxMedia.h"

namespace talvenor {

void installLinuxMedia(Platform & /*platform*/)
{
}

} // namespace talvenor
