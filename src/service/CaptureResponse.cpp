#include "service/CaptureResponse.h"

#include "service/JsonDecoding.h"

namespace talvenor {

CaptureResponse CaptureResponse::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .success = reader.boolean(QLatin1StringView("success")),
        .subscription_tier = reader.optionalText(QLatin1StringView("subscription_tier")),
        .expires_at = reader.optionalText(QLatin1StringView("expires_at")),
    };
}

QJsonObject CaptureResponse::toJson() const
{
    QJsonObject json{
        {QStringLiteral("success"), success},
    };
    if (subscription_tier)
        json.insert(QStringLiteral("subscription_tier"), *subscription_tier);
    if (expires_at)
        json.insert(QStringLiteral("expires_at"), *expires_at);
    return json;
}

} // namespace talvenor
