#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

namespace talvenor {

/// A payment that has been opened and that the user has to approve on a page.
struct SubscriptionOrder
{
    QString order_id;
    QString approval_url;

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static SubscriptionOrder fromJson(const QJsonValue &json);
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const SubscriptionOrder &, const SubscriptionOrder &) = default;
};

} // namespace talvenor
