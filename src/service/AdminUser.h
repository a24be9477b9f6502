#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace talvenor {

/// One user as administrators see him; identified by `id`.
struct AdminUser
{
    qint64 id = 0;
    QString email;
    QString name;
    QString role;                                   ///< "user" or "admin"
    QString subscription_tier;                      ///< "free", "basic", "premium" or "lifetime"
    std::optional<QString> subscription_expires_at; ///< ISO 8601
    qint64 recordings_count = 0;                    ///< logged in the current month
    std::optional<QString> created_at;              ///< ISO 8601

    [[nodiscard]] bool isAdmin() const;
    /// The plan's name for the user, the same in both languages; "Free" for every unknown plan.
    [[nodiscard]] QString tierDisplayName() const;

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static AdminUser fromJson(const QJsonValue &json);
    /// What is absent is left out.
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const AdminUser &, const AdminUser &) = default;
};

} // namespace talvenor
