#include "platform/Platform.h"

namespace talvenor {

Platform &Platform::shared()
{
    static Platform platform;
    return platform;
}

} // namespace talvenor
