#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace talvenor::server {

/// The form in which an address is compared and kept: without blanks around it, ASCII letters in lower case.
/// Absent for a text that is no address: it needs one "@" with something on both sides, no blank and no
/// control character, and at most 254 bytes (RFC 5321, 4.5.3.1.3). Whether it can be reached is not asked.
[[nodiscard]] std::optional<std::string> normalisedEmail(std::string_view text);

} // namespace talvenor::server
