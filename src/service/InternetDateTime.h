#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace talvenor {

/// Reads an instant as "2026-01-31T10:00:00Z", with or without a fraction of a second and with "Z" or an
/// offset such as "+01:00" at its end (RFC 3339). Absent for everything else, a bare date included.
[[nodiscard]] std::optional<QDateTime> parseInternetDateTime(const QString &text);

} // namespace talvenor
