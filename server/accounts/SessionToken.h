#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace talvenor::server {

/// What is kept of a token: whoever reads the database cannot sign in with it.
using TokenHash = std::array<std::byte, 32>;

/// A new token: 256 random bits in the URL-safe alphabet of base 64, 43 characters.
[[nodiscard]] std::string newSessionToken();

/// The BLAKE2b-256 hash of a token. No salt is needed for a value that nobody can guess.
[[nodiscard]] TokenHash tokenHash(std::string_view token);

} // namespace talvenor::server
