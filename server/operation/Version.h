#pragma once

#include <cstdint>

namespace talvenor::server {

/// The version of this program, which is also the newest release of the application that it can tell of.
[[nodiscard]] const char *programVersion();
/// The build number that clients compare with their own.
[[nodiscard]] std::int64_t programBuild();

} // namespace talvenor::server
