#include "platform/UnifiedLog.h"

namespace talvenor {

Q_LOGGING_CATEGORY(platformLog, TALVENOR_LOG_SUBSYSTEM ".Platform")

} // namespace talvenor
