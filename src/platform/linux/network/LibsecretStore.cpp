#include "platform/linux/network/LibsecretStore.h"

#include "foundation/LocalizedError.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/network/ProgramEnd.h"
#include "platform/linux/network/SecretServiceClient.h"

#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace talvenor {

namespace {

const auto kLocked = QStringLiteral("The secret store is locked or not set up; nothing in it is touched.");
const auto kAbsent =
    QStringLiteral("There is no secret store on the session bus; secrets last until the program ends.");

} // namespace

/// What the store's calls share with the question in the background.
class LibsecretStore::State : public std::enable_shared_from_this<State>
{
public:
    State() { watchForProgramEnd(); }

    void save(const SecretName &name, const QByteArray &data)
    {
        const std::lock_guard guard(m_lock);
        m_pending[name] = data;
        tryOut([&](SecretServiceClient &client) {
            if (!client.isDefaultCollectionReady()) {
                askToUnlock(name);
                return;
            }
            client.store(name, data);
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
        // A thread that nobody waits for: the person may never answer, libsecret cannot take a question back
        // once it is asked, and the pool would hold up the end of the program.
        std::thread([state = shared_from_this(), name] {
            try {
                // A connection of its own, so that nobody waits for the lock while a person thinks.
                SecretServiceClient client;
                // He may also have unlocked it by other means while the question was open.
                if (client.unlock(name) || client.isDefaultCollectionReady())
                    state->settle(client);
            } catch (const PlatformError &error) {
                const std::lock_guard guard(state->m_lock);
                state->tell(QStringLiteral("The secret store stays locked: ") + error.errorDescription());
            }
        }).detach();
    }

    /// Does what had to wait for the store to be unlocked. On the thread of the question.
    void settle(SecretServiceClient &client)
    {
        if (isProgramEnding())
            return;
        std::unique_lock guard(m_lock);
        if (!client.isDefaultCollectionReady()) {
            // Not locked then, but never set up: the first secret has the user asked for a password.
            const auto pending = m_pending;
            guard.unlock();
            for (const auto &[name, value] : pending) {
                if (value)
                    client.store(name, *value);
            }
            guard.lock();
            // What was removed while the question was open must not come back by its answer.
            for (const auto &[name, value] : pending) {
                if (value && !m_pending.contains(name))
                    m_pending[name] = std::nullopt;
            }
        }
        // Under the lock, so that no reader meets an item that is being replaced.
        for (auto entry = m_pending.begin(); entry != m_pending.end();) {
            const auto &[name, value] = *entry;
            if (value)
                client.store(name, *value);
            if (value || client.remove(name))
                entry = m_pending.erase(entry);
            else
                ++entry;
        }
        m_lastTrouble.clear();
    }

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
