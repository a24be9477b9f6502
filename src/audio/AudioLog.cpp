#include "audio/AudioLog.h"

#include "platform/UnifiedLog.h"

namespace talvenor {

Q_LOGGING_CATEGORY(logger, TALVENOR_LOG_SUBSYSTEM ".AudioCapture")

} // namespace talvenor
