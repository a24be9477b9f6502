#pragma once

#include <QString>

namespace talvenor {

/// libav's own words for one of its error codes. Any thread.
[[nodiscard]] QString libavErrorText(int code);

/// Throws a PlatformError of the domain "libav" that reads "`what`: " and libav's words for `code`.
[[noreturn]] void throwLibavError(int code, const QString &what);

/// Gives `result` back unless it is one of libav's (negative) error codes; then throws as above.
int libavCheck(int result, const QString &what);

} // namespace talvenor
