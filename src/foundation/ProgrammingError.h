#pragma once

#include <QString>

#include <source_location>

namespace talvenor {

/// Ends the process because the program contradicts itself: logs what and where, then aborts.
///
/// For states that no input, device or network answer can bring about. Everything that can come from
/// outside is an ordinary error instead.
[[noreturn]] void programmingError(const QString &what,
                                   std::source_location where = std::source_location::current());

} // namespace talvenor
