#pragma once

#include <QLoggingCategory>

namespace talvenor {

/// The subsystem of all log channels; a channel is named by it, a dot and its category.
///
/// The log's default level is Qt's info level, its error level Qt's critical level. No token, password or
/// transcript is ever logged.
#define TALVENOR_LOG_SUBSYSTEM "com.talvenor.app"

/// The channel of the platform's own observations: devices, missing models, the secret store.
Q_DECLARE_LOGGING_CATEGORY(platformLog)

} // namespace talvenor
