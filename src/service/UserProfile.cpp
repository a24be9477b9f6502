#include "service/UserProfile.h"

#include "service/InternetDateTime.h"
#include "service/JsonDecoding.h"
#include "service/SubscriptionTier.h"

#include <limits>

namespace talvenor {

bool UserProfile::isAdmin() const
{
    return role == kRoleAdmin;
}

bool UserProfile::isPremium() const
{
    return subscription_tier == kTierPremium;
}

bool UserProfile::isLifetime() const
{
    return subscription_tier == kTierLifetime;
}

bool UserProfile::isBasic() const
{
    return subscription_tier == kTierBasic;
}

bool UserProfile::isFree() const
{
    return subscription_tier == kTierFree;
}

bool UserProfile::hasPaidPlan() const
{
    return isPremium() || isBasic() || isLifetime();
}

QString UserProfile::tierDisplayName() const
{
    return talvenor::tierDisplayName(subscription_tier);
}

std::optional<QDateTime> UserProfile::expiresDate() const
{
    return subscription_expires_at ? parseInternetDateTime(*subscription_expires_at) : std::nullopt;
}

qint64 UserProfile::recordingsRemaining() const
{
    constexpr qint64 defaultLimit = 3; // for every plan; AuthService::canRecord knows better ones
    qint64 remaining = 0;
    // A service may send anything; beyond the range the nearest value is close enough.
    if (__builtin_sub_overflow(recordings_limit.value_or(defaultLimit), recordings_count, &remaining))
        return recordings_count > 0 ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    return remaining;
}

QVariant UserProfile::expiresAtVariant() const
{
    return subscription_expires_at ? QVariant(*subscription_expires_at) : QVariant();
}

QVariant UserProfile::recordingsLimitVariant() const
{
    return recordings_limit ? QVariant(*recordings_limit) : QVariant();
}

QVariant UserProfile::expiresDateVariant() const
{
    const auto date = expiresDate();
    return date ? QVariant(*date) : QVariant();
}

UserProfile UserProfile::fromJson(const QJsonValue &json)
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
        .recordings_limit = reader.optionalInteger(QLatin1StringView("recordings_limit")),
        .can_record = reader.optionalBoolean(QLatin1StringView("can_record")),
    };
}

QJsonObject UserProfile::toJson() const
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
    if (recordings_limit)
        json.insert(QStringLiteral("recordings_limit"), *recordings_limit);
    if (can_record)
        json.insert(QStringLiteral("can_record"), *can_record);
    return json;
}

} // namespace talvenor
