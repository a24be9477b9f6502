#include "service/AuthResponse.h"

#include "service/JsonDecoding.h"

namespace talvenor {

AuthResponse AuthResponse::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .token = reader.text(QLatin1StringView("token")),
        .user = UserProfile::fromJson(reader.value(QLatin1StringView("user"))),
    };
}

QJsonObject AuthResponse::toJson() const
{
    return {
        {QStringLiteral("token"), token},
        {QStringLiteral("user"), user.toJson()},
    };
}

} // namespace talvenor
