#pragma once

#include "service/AdminUser.h"

#include <QList>

namespace talvenor {

/// All users of the service.
struct AdminUserList
{
    QList<AdminUser> users;

    /// Throws DecodingFailure unless every user is complete. Any thread.
    [[nodiscard]] static AdminUserList fromJson(const QJsonValue &json);
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const AdminUserList &, const AdminUserList &) = default;
};

} // namespace talvenor
