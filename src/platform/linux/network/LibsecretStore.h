#pragma once

#include "platform/SecretStore.h"

#include <memory>

namespace talvenor {

/// Secrets in the desktop's secret store, by libsecret.
///
/// No call waits for a person, and none for more than two seconds for a store that hangs, except a reading
/// off the main thread of what this run has not seen yet. What does not come is what this run has seen of it
/// last, or absent. A removal is never waited for but by the destructor. Where the store is locked, the user
/// is asked once in a run, in the background; what was to be written or removed meanwhile is kept in memory,
/// is what this program reads, and is done when the store has been unlocked. Where there is no store, or it
/// fails, memory keeps it for this run, and no file ever does. Each kind of trouble is told in one line of
/// the log.
class LibsecretStore : public SecretStore
{
public:
    LibsecretStore();
    ~LibsecretStore() override;

    void save(const QString &service, const QString &account, const QByteArray &data) override;
    [[nodiscard]] std::optional<QByteArray> load(const QString &service, const QString &account) override;
    void remove(const QString &service, const QString &account) override;

private:
    class State;
    std::shared_ptr<State> m_state; ///< shared with the question that may be open in the background
};

} // namespace talvenor
