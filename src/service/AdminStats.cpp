#include "service/AdminStats.h"

#include "service/JsonDecoding.h"

namespace talvenor {

AdminStats AdminStats::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .total_users = reader.integer(QLatin1StringView("total_users")),
        .premium_users = reader.integer(QLatin1StringView("premium_users")),
        .total_recordings = reader.integer(QLatin1StringView("total_recordings")),
        .new_users_7d = reader.integer(QLatin1StringView("new_users_7d")),
    };
}

QJsonObject AdminStats::toJson() const
{
    return {
        {QStringLiteral("total_users"), total_users},
        {QStringLiteral("premium_users"), premium_users},
        {QStringLiteral("total_recordings"), total_recordings},
        {QStringLiteral("new_users_7d"), new_users_7d},
    };
}

} // namespace talvenor
