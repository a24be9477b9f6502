#include "platform/linux/desktop/LinuxDesktop.h"

namespace talvenor {

void installLinuxDesktop(Platform & /*platform*/)
{
}

} // namespace talvenor
