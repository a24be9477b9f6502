#include "service/AdminUser.h"

#include "service/JsonDecoding.h"
#include "service/SubscriptionTier.h"

namespace talvenor {

bool AdminUser::isAdmin() const
{
    return role == kRoleAdmin;
}

QString AdminUser::tierDisplayName() const
{
    return talvenor::tierDisplayName(subscription_tier);
}

AdminUser AdminUser::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .id = reader.integer(QLatin1StringView("id")),
        .email = reader.text(QLatin1StringView("email")),
        .name = reader.text(QLatin1StringView("name")),
        .role = reader.text(QLatin1StringView("role")),
        .subscription_tier = reader.text(QLatin1StringView("subscription_tier")),
        .subscription_expires_at = reader.optionalText(QLatin1StringView("subscription_expires_at")),
        .recordings_count = reader.integer(QLatin1StringView("recordings_count")),
        .created_at = reader.optionalText(QLatin1StringView("created_at")),
    };
}

QJsonObject AdminUser::toJson() const
{
    QJsonObject json{
        {QStringLiteral("id"), id},
        {QStringLiteral("email"), email},
        {QStringLiteral("name"), name},
        {QStringLiteral("role"), role},
        {QStringLiteral("subscription_tier"), subscription_tier},
        {QStringLiteral("recordings_count"), recordings_count},
    };
    if (subscription_expires_at)
        json.insert(QStringLiteral("subscription_expires_at"), *subscription_expires_at);
    if (created_at)
        json.insert(QStringLiteral("created_at"), *created_at);
    return json;
}

} // namespace talvenor
