#pragma once

#include <QString>

#include <optional>

namespace talvenor {

/// The number in a build's text: the decimal integer that the text is, 1 for any other text ("1.0.3") and for
/// none.
[[nodiscard]] qint64 buildNumberFromText(const std::optional<QString> &text);

/// The number of this build, set when the program is built.
[[nodiscard]] qint64 ownBuildNumber();

} // namespace talvenor
