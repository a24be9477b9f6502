#pragma once

namespace talvenor::server {

/// The languages in which the service speaks to people.
enum class Language { english, german };

} // namespace talvenor::server
