#include "platform/linux/network/LinuxNetwork.h"

#include "platform/linux/network/CurlTransport.h"
#include "platform/linux/network/LibsecretStore.h"

namespace talvenor {

void installLinuxNetwork(Platform &platform)
{
    platform.httpTransport = std::make_shared<CurlTransport>();
    platform.secretStore = std::make_shared<LibsecretStore>();
}

} // namespace talvenor
