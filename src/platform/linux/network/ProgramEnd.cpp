#include "platform/linux/network/ProgramEnd.h"

#include "foundation/Task.h"

#include <QCoreApplication>

#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

namespace talvenor {

namespace {

// Outside the class, because threads of the pool still read it while static objects are destroyed.
constinit std::atomic<bool> isEnding = false;

class EndWatch
{
public:
    EndWatch()
    {
        // Whether the application object is destroyed first or `exit` is called under it, one of the two
        // ways comes before the pool's own destruction.
        qAddPostRoutine([] { instance().announce(); });
    }
    ~EndWatch() { announce(); }
    Q_DISABLE_COPY_MOVE(EndWatch)

    static EndWatch &instance()
    {
        (void)generalPool(); // made before this object, so destroyed after it
        static EndWatch watch;
        return watch;
    }

    void add(std::function<void()> callback)
    {
        const std::lock_guard guard(m_lock);
        m_callbacks.push_back(std::move(callback));
    }

private:
    void announce()
    {
        isEnding = true;
        std::unique_lock guard(m_lock);
        const auto callbacks = std::exchange(m_callbacks, {});
        guard.unlock();
        for (const auto &callback : callbacks)
            callback();
    }

    std::mutex m_lock;
    std::vector<std::function<void()>> m_callbacks; ///< guarded by m_lock
};

} // namespace

bool isProgramEnding()
{
    return isEnding;
}

void watchForProgramEnd()
{
    (void)EndWatch::instance();
}

void callAtProgramEnd(std::function<void()> callback)
{
    EndWatch::instance().add(std::move(callback));
}

} // namespace talvenor
