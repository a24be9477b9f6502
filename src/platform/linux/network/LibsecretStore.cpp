#include "platform/linux/network/LibsecretStore.h"

#include "foundation/LocalizedError.h"
#include "foundation/Task.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/network/ProgramEnd.h"
#include "platform/linux/network/SecretServiceClient.h"

#include <map>
#include <mutex>
#include <utility>

namespace talvenor {

namespace {

const auto kLocked = QStringLiteral("The secret store is locked; its secrets stay untouched.");
const auto kAbsent =
    QStringLiteral("There is no secret store on the session bus; secrets last until the program ends.");

} // namespace

/// What the store's calls share with the question in the background.
class LibsecretStore::State : public std::enable_shared_from_this<State>
{
public:
    State() : m_cancellable(g_cancellable_new(), GLibRelease())
    {
        // An open question must not hold up the end of the program.
        callAtProgramEnd([cancellable = m_cancellable] { g_cancellable_cancel(cancellable.get()); });
    }

    void save(const SecretName &name, const QByteArray &data)
    {
        const std::lock_guard guard(m_lock);
        m_pending[name] = data;
        tryOut([&](SecretServiceClient &client) {
            if (!client.isDefaultCollectionReady()) {
                askToUnlock(name);
                return;
            }
            client.store(name, data, nullptr);
            m_pending.erase(name);
            m_lastTrouble.clear();
        });
    }

    std::optional<QByteArray> load(const SecretName &name)
    {
        const std::lock_guard guard(m_lock);
        if (const auto pending = m_pending.find(name); pending != m_pending.end())
            return pending->second;
        std::optional<QByteArray> value;
        tryOut([&](SecretServiceClient &client) {
            FoundSecret found = client.find(name);
            if (!found.newest && found.isAnyLocked)
                askToUnlock(name);
            else
                m_lastTrouble.clear();
            value = std::move(found.newest);
        });
        return value;
    }

    void remove(const SecretName &name)
    {
        const std::lock_guard guard(m_lock);
        m_pending[name] = std::nullopt;
        tryOut([&](SecretServiceClient &client) {
            if (!client.remove(name)) {
                askToUnlock(name);
                return;
            }
            m_pending.erase(name);
            m_lastTrouble.clear();
        });
    }

private:
    /// Runs `call` on the connection, and once more on a fresh one if it fails: the store may have been
    /// started anew since the last call. Failures end in the log. Under the lock.
    template<typename Call>
    void tryOut(Call call)
    {
        try {
            if (m_client) {
                try {
                    call(*m_client);
                    return;
                } catch (const PlatformError &) {
                    m_client.reset(); // the second attempt tells
                }
            }
            m_client = std::make_unique<SecretServiceClient>();
            call(*m_client);
        } catch (const PlatformError &error) {
            m_client.reset();
            const bool isAbsent = error.domain() == QLatin1StringView("secret store absent");
            tell(isAbsent ? kAbsent : QStringLiteral("The secret store fails: ") + error.errorDescription());
        }
    }

    /// Logs what is wrong, once as long as it stays wrong in the same way. Under the lock.
    void tell(const QString &trouble)
    {
        if (std::exchange(m_lastTrouble, trouble) != trouble)
            qCCritical(platformLog, "%s", qUtf8Printable(trouble));
    }

    /// Has the user asked, on a thread that may wait for him, the first time in a run. Under the lock.
    void askToUnlock(const SecretName &name)
    {
        tell(kLocked);
        if (std::exchange(m_hasAsked, true))
            return;
        generalPool().start([state = shared_from_this(), name] {
            try {
                // A connection of its own, so that nobody waits for the lock while a person thinks.
                SecretServiceClient client;
                if (client.unlock(name, state->m_cancellable.get()))
                    state->settle(client);
            } catch (const PlatformError &error) {
                const std::lock_guard guard(state->m_lock);
                state->tell(QStringLiteral("The secret store stays locked: ") + error.errorDescription());
            }
        });
    }

    /// Does what had to wait for the store to be unlocked. On the pool, without the lock.
    void settle(SecretServiceClient &client)
    {
        std::unique_lock guard(m_lock);
        const auto pending = m_pending;
        guard.unlock();
        for (const auto &[name, value] : pending) {
            if (value)
                client.store(name, *value, m_cancellable.get());
            else if (!client.remove(name))
                continue;
            guard.lock();
            // A newer wish has been carried out by its own call, or is pending in its own right.
            if (const auto entry = m_pending.find(name); entry != m_pending.end() && entry->second == value)
                m_pending.erase(entry);
            guard.unlock();
        }
    }

    const std::shared_ptr<GCancellable> m_cancellable;
    std::mutex m_lock;
    // All of the following is guarded by m_lock.
    std::unique_ptr<SecretServiceClient> m_client;             ///< absent until needed and after a failure
    std::map<SecretName, std::optional<QByteArray>> m_pending; ///< what the store lacks; absent: removed
    QString m_lastTrouble;                                     ///< what the log was told last
    bool m_hasAsked = false;
};

LibsecretStore::LibsecretStore() : m_state(std::make_shared<State>())
{
}

LibsecretStore::~LibsecretStore() = default;

void LibsecretStore::save(const QString &service, const QString &account, const QByteArray &data)
{
    m_state->save({service, account}, data);
}

std::optional<QByteArray> LibsecretStore::load(const QString &service, const QString &account)
{
    return m_state->load({service, account});
}

void LibsecretStore::remove(const QString &service, const QString &account)
{
    m_state->remove({service, account});
}

} // namespace talvenor
