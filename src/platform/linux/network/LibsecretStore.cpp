#include "platform/linux/network/LibsecretStore.h"

#include "foundation/LocalizedError.h"
#include "foundation/ProgramEnd.h"
#include "platform/UnifiedLog.h"
#include "platform/linux/network/SecretServiceClient.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace talvenor {

namespace {

const auto kLocked = QStringLiteral("The secret store is locked or not set up; nothing in it is touched.");
const auto kAbsent =
    QStringLiteral("There is no secret store on the session bus; secrets last until the program ends.");
const auto kSilent =
    QStringLiteral("The secret store does not answer; what this run has not seen of it counts as absent.");

/// How long the window may stand still for a store that does not answer: such a store is a broken one, for a
/// healthy one takes milliseconds.
constexpr std::chrono::seconds kPatienceOfWindow{2};
/// How soon the end of the program is noticed.
constexpr std::chrono::milliseconds kEndCheck{50};

bool isMainThread()
{
    return QCoreApplication::instance() && QThread::currentThread() == QCoreApplication::instance()->thread();
}

/// Something that one thread waits for and another one brings.
template<typename Value>
class Answer
{
public:
    void give(Value value)
    {
        const std::lock_guard guard(m_lock);
        m_value = std::move(value);
        m_given.notify_all();
    }

    /// Waits for the answer; no longer than a window can on the main thread, or once the program ends, or
    /// where the caller `canDoWithout`.
    [[nodiscard]] std::optional<Value> wait(bool canDoWithout)
    {
        const auto limit = std::chrono::steady_clock::now() + kPatienceOfWindow;
        const bool isLimited = canDoWithout || isMainThread();
        std::unique_lock guard(m_lock);
        while (!m_given.wait_for(guard, kEndCheck, [this] { return m_value.has_value(); })) {
            // At the end of the program threads wait no longer than the window does.
            if ((isLimited || isProgramEnding()) && std::chrono::steady_clock::now() >= limit)
                return std::nullopt;
        }
        return m_value;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_given;
    std::optional<Value> m_value; ///< guarded by m_lock
};

} // namespace

/// What the store's calls share with the threads that carry them out.
///
/// libsecret cannot take a call back, and a service that hangs holds one for D-Bus's 25 seconds. So each call
/// runs on a thread that nobody has to wait for.
class LibsecretStore::State : public std::enable_shared_from_this<State>
{
public:
    State() { watchForProgramEnd(); }

    /// What is wanted counts from now on; answers when the store has it, or has refused it for now.
    std::shared_ptr<Answer<bool>> put(const SecretName &name, const std::optional<QByteArray> &value)
    {
        {
            const std::lock_guard guard(m_memoryLock);
            m_pending[name] = {++m_wishes, value};
            remember(name, value);
        }
        return attempt(name);
    }

    /// Gives what is under way the time that it needs, if that is not long.
    void waitForTheLast()
    {
        const auto lacking = wishes();
        for (const auto &[name, wish] : lacking)
            tryAgain(name);
        std::shared_ptr<Answer<bool>> outcome;
        {
            const std::lock_guard guard(m_memoryLock);
            outcome = m_lastOutcome;
        }
        if (outcome && !outcome->wait(true))
            tell(kSilent);
    }

    std::optional<QByteArray> load(const SecretName &name)
    {
        if (const auto wish = wishFor(name)) {
            tryAgain(name); // the store may have been unlocked or mended since
            return wish->value;
        }
        const auto answer =
            inBackground<std::optional<QByteArray>>([name](State &state) { return state.find(name); });
        if (const auto value = answer->wait(remembered(name).has_value()))
            return *value;
        tell(kSilent);
        return remembered(name);
    }

    /// Logs what is wrong, once as long as it stays wrong in the same way.
    void tell(const QString &trouble)
    {
        {
            const std::lock_guard guard(m_memoryLock);
            if (std::exchange(m_lastTrouble, trouble) == trouble)
                return;
        }
        qCCritical(platformLog, "%s", qUtf8Printable(trouble));
    }

private:
    /// What a secret is to become. Without a value it is to go.
    struct Wish
    {
        quint64 number = 0; ///< tells a wish from a later one for the same name
        std::optional<QByteArray> value;
    };

    std::shared_ptr<Answer<bool>> attempt(const SecretName &name)
    {
        const std::lock_guard guard(m_memoryLock);
        ++m_attempts;
        m_lastOutcome = inBackground<bool>([name](State &state) {
            state.carryOut(name);
            const std::lock_guard done(state.m_memoryLock);
            --state.m_attempts;
            return true;
        });
        return m_lastOutcome;
    }

    /// Attempts what the store lacks once more, unless that is under way. Waits for nothing.
    void tryAgain(const SecretName &name)
    {
        {
            const std::lock_guard guard(m_memoryLock);
            if (m_attempts > 0)
                return;
        }
        static_cast<void>(attempt(name)); // what fails again is still wanted
    }

    template<typename Value, typename Call>
    std::shared_ptr<Answer<Value>> inBackground(Call call)
    {
        auto answer = std::make_shared<Answer<Value>>();
        std::thread([state = shared_from_this(), answer, call] { answer->give(call(*state)); }).detach();
        return answer;
    }

    /// What the store says, or, where it is locked or fails, what it said last.
    std::optional<QByteArray> find(const SecretName &name)
    {
        const std::lock_guard guard(m_clientLock);
        std::optional<std::optional<QByteArray>> answer;
        const quint64 wishesBefore = wishCount();
        tryOut([&](SecretServiceClient &client) {
            FoundSecret found = client.find(name);
            if (!found.newest && found.isAnyLocked) {
                askToUnlock(name);
                return;
            }
            forgetTrouble();
            answer = std::move(found.newest);
        });
        if (!answer)
            return remembered(name);
        const std::lock_guard memoryGuard(m_memoryLock);
        if (m_wishes == wishesBefore) // else the answer may be older than what is remembered
            remember(name, *answer);
        return *answer;
    }

    [[nodiscard]] quint64 wishCount()
    {
        const std::lock_guard guard(m_memoryLock);
        return m_wishes;
    }

    /// With m_memoryLock.
    void remember(const SecretName &name, const std::optional<QByteArray> &value)
    {
        if (value)
            m_lastSeen[name] = *value;
        else
            m_lastSeen.erase(name);
    }

    [[nodiscard]] std::optional<QByteArray> remembered(const SecretName &name)
    {
        const std::lock_guard guard(m_memoryLock);
        const auto found = m_lastSeen.find(name);
        return found == m_lastSeen.end() ? std::nullopt : std::optional(found->second);
    }

    /// Does what is wanted of this secret now, which need not be what was wanted when the thread began.
    void carryOut(const SecretName &name)
    {
        const std::lock_guard guard(m_clientLock);
        const auto wish = wishFor(name);
        if (!wish)
            return;
        tryOut([&](SecretServiceClient &client) {
            if (wish->value && client.isDefaultCollectionReady())
                client.store(name, *wish->value);
            else if (wish->value || !client.remove(name)) {
                askToUnlock(name);
                return;
            }
            forget(name, wish->number);
            forgetTrouble();
        });
    }

    [[nodiscard]] std::optional<Wish> wishFor(const SecretName &name)
    {
        const std::lock_guard guard(m_memoryLock);
        const auto found = m_pending.find(name);
        return found == m_pending.end() ? std::nullopt : std::optional(found->second);
    }

    /// Ends a wish that has been met, unless there is a later one.
    void forget(const SecretName &name, quint64 number)
    {
        const std::lock_guard guard(m_memoryLock);
        const auto found = m_pending.find(name);
        if (found != m_pending.end() && found->second.number == number)
            m_pending.erase(found);
    }

    /// Runs `call` on the connection, and once more on a fresh one if it fails: the store may have been
    /// started anew since the last call. Failures end in the log. With m_clientLock.
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

    void forgetTrouble()
    {
        const std::lock_guard guard(m_memoryLock);
        m_lastTrouble.clear();
    }

    /// Has the user asked, on a thread that may wait for him, the first time in a run. With m_clientLock.
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
                state->tell(QStringLiteral("The secret store stays locked: ") + error.errorDescription());
            }
        }).detach();
    }

    [[nodiscard]] std::map<SecretName, Wish> wishes()
    {
        const std::lock_guard guard(m_memoryLock);
        return m_pending;
    }

    /// Does what had to wait for the store to be unlocked. On the thread of the question.
    void settle(SecretServiceClient &client)
    {
        if (isProgramEnding())
            return;
        if (!client.isDefaultCollectionReady()) {
            // Not locked then, but never set up: the first secret has the user asked for a password.
            const auto before = wishes();
            for (const auto &[name, wish] : before) {
                if (wish.value)
                    client.store(name, *wish.value);
            }
            // What was removed while the question was open must not come back by its answer.
            const std::lock_guard guard(m_memoryLock);
            for (const auto &[name, wish] : before) {
                if (wish.value && !m_pending.contains(name))
                    m_pending[name] = {++m_wishes, std::nullopt};
            }
        }
        // With the lock, so that no reader meets an item that is being replaced.
        const std::lock_guard guard(m_clientLock);
        for (const auto &[name, wish] : wishes()) {
            if (wish.value)
                client.store(name, *wish.value);
            if (wish.value || client.remove(name))
                forget(name, wish.number);
        }
        forgetTrouble();
    }

    std::mutex m_clientLock;                       ///< held through calls, before m_memoryLock if both are
    std::unique_ptr<SecretServiceClient> m_client; ///< absent until needed and after a failure; m_clientLock
    bool m_hasAsked = false;                       ///< guarded by m_clientLock

    std::mutex m_memoryLock; ///< never held while the store is asked
    // All of the following is guarded by m_memoryLock.
    std::map<SecretName, Wish> m_pending; ///< what the store lacks
    quint64 m_wishes = 0;
    /// What this run has read or wanted last. A store that is locked or hangs in the middle of a session must
    /// not look like an empty one: the service would refuse a request without the token, and a refusal has
    /// the token removed.
    std::map<SecretName, QByteArray> m_lastSeen;
    int m_attempts = 0; ///< under way
    std::shared_ptr<Answer<bool>> m_lastOutcome;
    QString m_lastTrouble; ///< what the log was told last
};

LibsecretStore::LibsecretStore() : m_state(std::make_shared<State>())
{
}

LibsecretStore::~LibsecretStore()
{
    // A session that was ended just before the program must not be there at its next start.
    m_state->waitForTheLast();
}

void LibsecretStore::save(const QString &service, const QString &account, const QByteArray &data)
{
    // Memory keeps it, so that nobody who signs in waits for a store that hangs.
    if (!m_state->put({service, account}, data)->wait(true))
        m_state->tell(kSilent);
}

std::optional<QByteArray> LibsecretStore::load(const QString &service, const QString &account)
{
    return m_state->load({service, account});
}

void LibsecretStore::remove(const QString &service, const QString &account)
{
    static_cast<void>(m_state->put({service, account}, std::nullopt)); // it is gone for this program at once
}

} // namespace talvenor
