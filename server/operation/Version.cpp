#include "server/operation/Version.h"

namespace talvenor::server {

const char *programVersion()
{
    return TALVENOR_VERSION;
}

std::int64_t programBuild()
{
    return TALVENOR_BUILD_NUMBER;
}

} // namespace talvenor::server
