#include "service/SubscriptionOrder.h"

#include "service/JsonDecoding.h"

namespace talvenor {

SubscriptionOrder SubscriptionOrder::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    return {
        .order_id = reader.text(QLatin1StringView("order_id")),
        .approval_url = reader.text(QLatin1StringView("approval_url")),
    };
}

QJsonObject SubscriptionOrder::toJson() const
{
    return {
        {QStringLiteral("order_id"), order_id},
        {QStringLiteral("approval_url"), approval_url},
    };
}

} // namespace talvenor
