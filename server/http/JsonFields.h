#pragma once

#include <boost/json/object.hpp>

#include <string>
#include <string_view>

namespace talvenor::server {

/// The object that a request's body holds. Refuses what is no JSON (RFC 8259), not UTF-8, nested deeper than
/// 16 levels, or no object.
[[nodiscard]] boost::json::object parsedObject(std::string_view body);

/// The text under `key`; refuses a missing key and another type.
[[nodiscard]] std::string requiredText(const boost::json::object &object, std::string_view key);

/// The number under `key`, finite and not negative; refuses everything else.
[[nodiscard]] double requiredAmount(const boost::json::object &object, std::string_view key);

} // namespace talvenor::server
