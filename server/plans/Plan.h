#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace talvenor::server {

/// What an account has paid for.
enum class Tier { free, basic, premium, lifetime };

/// What an account may administer.
enum class Role { user, admin };

/// The name on the wire and in the database: "free", "basic", "premium", "lifetime".
[[nodiscard]] std::string_view name(Tier tier);
/// The name on the wire and in the database: "user", "admin".
[[nodiscard]] std::string_view name(Role role);
/// The tier of that exact name, if there is one.
[[nodiscard]] std::optional<Tier> tierNamed(std::string_view name);
/// The role of that exact name, if there is one.
[[nodiscard]] std::optional<Role> roleNamed(std::string_view name);

/// Recordings that may be logged in a calendar month; absent means as many as one likes. Administrators have
/// no limit on any tier.
[[nodiscard]] std::optional<std::int64_t> monthlyRecordings(Tier tier, Role role);

/// True if the tier holds summaries. The role does not matter: administrating buys nothing.
[[nodiscard]] bool includesSummaries(Tier tier);

} // namespace talvenor::server
