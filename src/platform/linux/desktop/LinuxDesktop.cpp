#include "platform/linux/desktop/LinuxDesktop.h"

#include "platform/linux/desktop/LinuxFilePanels.h"
#include "platform/linux/desktop/PortalColorScheme.h"

namespace talvenor {

void installLinuxDesktop(Platform &platform)
{
    platform.filePanels = std::make_shared<LinuxFilePanels>();
    platform.colorScheme = std::make_shared<PortalColorScheme>();
}

} // namespace talvenor
