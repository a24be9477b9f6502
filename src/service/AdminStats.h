#pragma once

#include <QJsonObject>
#include <QJsonValue>

namespace talvenor {

/// The service's figures for its administrators.
struct AdminStats
{
    qint64 total_users = 0;
    qint64 premium_users = 0;
    qint64 total_recordings = 0;
    qint64 new_users_7d = 0; ///< within the last seven days

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static AdminStats fromJson(const QJsonValue &json);
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const AdminStats &, const AdminStats &) = default;
};

} // namespace talvenor
