#pragma once

#include "foundation/ProgramEnd.h"
#include "platform/linux/audio/PulseObjects.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <optional>

namespace talvenor {

/// How long a caller waits for the sound server to answer before the server counts as out of order.
inline constexpr std::chrono::seconds kPulseAnswerTimeout{5};

/// One connection to the sound server with a thread of its own, which comes back by itself if asked to.
///
/// It serves PulseAudio and PipeWire's PulseAudio front alike, and never starts a server. All callbacks come
/// on the loop's thread with the loop's lock held; they must not block, for the server drops clients that do
/// not read. Whoever touches libpulse from elsewhere holds a PulseConnection::Lock.
class PulseConnection
{
public:
    /// What a user of the connection is told; loop thread, lock held.
    class Listener
    {
    public:
        /// The connection stands and can be used.
        virtual void connectionReady() = 0;
        /// The connection is gone: every stream and request of it is dead and must be let go of in this call.
        virtual void connectionLost() = 0;
        /// Something that was subscribed to has changed.
        virtual void serverChanged(pa_subscription_event_type_t event, std::uint32_t index) = 0;

    protected:
        ~Listener() = default;
    };

    /// Keeps the loop's thread out of the objects that belong to it. Not to be taken on the loop's thread.
    class Lock
    {
    public:
        explicit Lock(const PulseConnection &connection) : m_loop(connection.m_loop)
        {
            pa_threaded_mainloop_lock(m_loop);
        }
        ~Lock() { pa_threaded_mainloop_unlock(m_loop); }
        Lock(const Lock &) = delete;
        Lock &operator=(const Lock &) = delete;

    private:
        pa_threaded_mainloop *m_loop;
    };

    /// Makes ready but does not connect yet. `listener` outlives `close`.
    explicit PulseConnection(Listener &listener);
    ~PulseConnection();
    PulseConnection(const PulseConnection &) = delete;
    PulseConnection &operator=(const PulseConnection &) = delete;

    /// Connects unless that has been done or is under way, and waits for the outcome; throws PlatformError.
    /// May block for as long as kPulseAnswerTimeout: general pool. Throws as well if `close` was called.
    void open();

    /// Ends connection and thread; no callback comes any more. For good. Does not wait for the server.
    void close();

    /// Whether a lost connection is to be tried again and again. Lock held.
    void setReconnects(bool reconnects) { m_reconnects = reconnects; }

    /// The connection if it stands, else null. Lock held.
    [[nodiscard]] pa_context *context() const;

    /// The loop itself, for further connections on the same thread. Lock held.
    [[nodiscard]] pa_mainloop_api *loop() const { return pa_threaded_mainloop_get_api(m_loop); }

    /// Calls `action` on the loop's thread after `delay`, unless the connection is closed or lost before.
    /// Lock held.
    void after(std::chrono::milliseconds delay, std::function<void()> action);

private:
    struct Timer
    {
        PulseConnection *connection;
        pa_time_event *event;
        std::function<void()> action;
    };

    enum class State { idle, connecting, ready, failed, closed };

    void connect();
    void contextChanged();
    void lose(int code);
    void scheduleReconnect();
    void clearTimers();
    [[nodiscard]] bool isClosed();
    void setState(State state, int code);

    Listener &m_listener;
    pa_threaded_mainloop *m_loop;
    PulseContextPointer m_context; ///< guarded by the loop's lock, like all below up to m_stateLock
    std::list<Timer> m_timers;
    bool m_reconnects = false;
    bool m_running = false;
    std::chrono::milliseconds m_backOff;

    // A waiter with a limit cannot use the loop's own condition, which knows none.
    std::mutex m_stateLock;
    std::condition_variable m_stateChanged;
    State m_state = State::idle; ///< guarded by m_stateLock
    int m_errorCode = PA_OK;     ///< guarded by m_stateLock
};

/// Waits until `isDone`, but no longer than `limit` nor, since the end of the program waits for the pool,
/// than the program lasts. With the lock of the condition.
template<typename Predicate>
void waitUnlessEnding(std::unique_lock<std::mutex> &guard, std::condition_variable &condition,
                      std::chrono::milliseconds limit, Predicate isDone)
{
    constexpr std::chrono::milliseconds step{50};
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition.wait_for(guard, step, isDone)) {
        if (isProgramEnding() || std::chrono::steady_clock::now() >= end)
            return;
    }
}

/// One answer that a thread of the pool waits for and the loop's thread gives. Shared by both, since either
/// may be gone before the other is done.
template<typename T>
class PulseAnswer
{
public:
    /// Gives the answer; later ones are ignored.
    void give(T value)
    {
        const std::lock_guard guard(m_lock);
        if (!m_value) {
            m_value = std::move(value);
            m_given.notify_all();
        }
    }

    /// The answer, or nothing if none came in time.
    [[nodiscard]] std::optional<T> wait(std::chrono::milliseconds limit)
    {
        std::unique_lock guard(m_lock);
        waitUnlessEnding(guard, m_given, limit, [this] { return m_value.has_value(); });
        return m_value;
    }

private:
    std::mutex m_lock;
    std::condition_variable m_given;
    std::optional<T> m_value; ///< guarded by m_lock
};

} // namespace talvenor
