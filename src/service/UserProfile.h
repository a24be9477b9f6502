#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QJsonValue>
#include <QMetaType>
#include <QString>
#include <QVariant>

#include <optional>

namespace talvenor {

/// The signed-in user as the service describes him. Field names are the keys on the wire.
///
/// Plan and role are plain texts that are compared exactly; a value unknown here is kept as it came.
struct UserProfile
{
    Q_GADGET
    Q_PROPERTY(qint64 id MEMBER id)
    Q_PROPERTY(QString email MEMBER email)
    Q_PROPERTY(QString name MEMBER name)
    Q_PROPERTY(QString role MEMBER role)
    Q_PROPERTY(QString subscription_tier MEMBER subscription_tier)
    Q_PROPERTY(QVariant subscription_expires_at READ expiresAtVariant)
    Q_PROPERTY(qint64 recordings_count MEMBER recordings_count)
    Q_PROPERTY(QVariant recordings_limit READ recordingsLimitVariant)
    Q_PROPERTY(bool isAdmin READ isAdmin)
    Q_PROPERTY(bool isPremium READ isPremium)
    Q_PROPERTY(bool isLifetime READ isLifetime)
    Q_PROPERTY(bool isBasic READ isBasic)
    Q_PROPERTY(bool isFree READ isFree)
    Q_PROPERTY(bool hasPaidPlan READ hasPaidPlan)
    Q_PROPERTY(QString tierDisplayName READ tierDisplayName)
    Q_PROPERTY(QVariant expiresDate READ expiresDateVariant)
    Q_PROPERTY(qint64 recordingsRemaining READ recordingsRemaining)

public:
    qint64 id = 0;
    QString email;
    QString name;
    QString role;                                   ///< "user" or "admin"
    QString subscription_tier;                      ///< "free", "basic", "premium" or "lifetime"
    std::optional<QString> subscription_expires_at; ///< ISO 8601
    qint64 recordings_count = 0;                    ///< logged in the current month
    std::optional<qint64> recordings_limit;         ///< for a month
    std::optional<bool> can_record;                 ///< the service's own verdict

    [[nodiscard]] bool isAdmin() const;
    [[nodiscard]] bool isPremium() const;
    [[nodiscard]] bool isLifetime() const;
    [[nodiscard]] bool isBasic() const;
    [[nodiscard]] bool isFree() const;
    [[nodiscard]] bool hasPaidPlan() const;

    /// The plan's name for the user, the same in both languages; "Free" for every unknown plan.
    [[nodiscard]] QString tierDisplayName() const;

    /// The end of the paid period; absent if the service sent none or no complete ISO 8601 instant.
    [[nodiscard]] std::optional<QDateTime> expiresDate() const;

    /// The limit, 3 where the service sends none, less the count; negative for a user over the limit.
    [[nodiscard]] qint64 recordingsRemaining() const;

    /// Throws DecodingFailure unless all that is required is there with the right type. Any thread.
    [[nodiscard]] static UserProfile fromJson(const QJsonValue &json);
    /// What is absent is left out.
    [[nodiscard]] QJsonObject toJson() const;

    friend bool operator==(const UserProfile &, const UserProfile &) = default;

private:
    // QML knows no std::optional: absent reads as undefined there.
    [[nodiscard]] QVariant expiresAtVariant() const;
    [[nodiscard]] QVariant recordingsLimitVariant() const;
    [[nodiscard]] QVariant expiresDateVariant() const;
};

} // namespace talvenor
