#include "service/AdminUserList.h"

#include "service/JsonDecoding.h"

#include <QJsonArray>

namespace talvenor {

AdminUserList AdminUserList::fromJson(const QJsonValue &json)
{
    const JsonObjectReader reader(json);
    const QJsonValue list = reader.value(QLatin1StringView("users"));
    if (!list.isArray())
        throw DecodingFailure();
    AdminUserList result;
    const QJsonArray entries = list.toArray();
    result.users.reserve(entries.size());
    for (const QJsonValue &entry : entries)
        result.users.append(AdminUser::fromJson(entry));
    return result;
}

QJsonObject AdminUserList::toJson() const
{
    QJsonArray entries;
    for (const AdminUser &user : users)
        entries.append(user.toJson());
    return {{QStringLiteral("users"), entries}};
}

} // namespace talvenor
