#include "platform/linux/network/LinuxNetwork.h"

namespace talvenor {

void installLinuxNetwork(Platform & /*platform*/)
{
}

} // namespace talvenor
