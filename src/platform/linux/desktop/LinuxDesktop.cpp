#include "platform/linux/desktop/LinuxDesktop.h"

#include "platform/linux/desktop/LinuxFilePanels.h"

namespace talvenor {

void installLinuxDesktop(Platform &platform)
{
    platform.filePanels = std::make_shared<LinuxFilePanels>();
}

} // namespace talvenor
