#pragma once

#include <QLoggingCategory>

namespace talvenor {

/// The log channel of the whole capture path, made on first use. Any thread.
Q_DECLARE_LOGGING_CATEGORY(logger)

} // namespace talvenor
