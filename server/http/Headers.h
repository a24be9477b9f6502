#pragma once

#include "server/common/Language.h"

#include <string>
#include <string_view>

namespace talvenor::server {

/// The language that an Accept-Language header prefers of the two there are (RFC 9110, 12.5.4); English where
/// it names neither, and where both are wanted alike.
[[nodiscard]] Language preferredLanguage(std::string_view acceptLanguage);

/// The token of an Authorization header of the scheme "Bearer" (RFC 6750, 2.1); empty for any other.
[[nodiscard]] std::string bearerToken(std::string_view authorization);

/// The path of a request target: of "/path?query" as well as of "http://host/path?query", which a server must
/// take too. Empty for anything else.
[[nodiscard]] std::string pathOf(std::string_view target);

} // namespace talvenor::server
