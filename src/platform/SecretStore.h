#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace talvenor {

/// A small store for secrets that outlives the program. Any thread; calls are synchronous.
///
/// No call fails to its caller: a save that does not work is silent but for a line in the log, and what
/// cannot be read is absent. A store that is locked or broken is not the same as an empty one: nothing is
/// removed because of it.
class SecretStore
{
public:
    SecretStore() = default;
    SecretStore(const SecretStore &) = delete;
    SecretStore &operator=(const SecretStore &) = delete;
    virtual ~SecretStore() = default;

    /// Stores `data` under the two names, in place of what was there.
    virtual void save(const QString &service, const QString &account, const QByteArray &data) = 0;
    [[nodiscard]] virtual std::optional<QByteArray> load(const QString &service, const QString &account) = 0;
    virtual void remove(const QString &service, const QString &account) = 0;
};

} // namespace talvenor
