#include "foundation/Task.h"

#include "foundation/LocalizedError.h"
#include "foundation/ProgrammingError.h"

#include <atomic>

namespace talvenor {

namespace {

// The operation travels as a parameter, which the coroutine keeps, so that its captures outlive every wait.
Task<> runToTheEnd(std::function<Task<>()> operation)
{
    try {
        co_await operation();
    } catch (...) {
        programmingError(QStringLiteral("a task that nobody awaits has failed: ") +
                         localizedDescription(std::current_exception()));
    }
}

} // namespace

QThreadPool &generalPool()
{
    static QThreadPool *const pool = [] {
        static QThreadPool instance;
        instance.setMaxThreadCount(32);
        instance.setObjectName(QStringLiteral("general pool"));
        return &instance;
    }();
    return *pool;
}

void startOnGeneralPool(std::function<void()> work)
{
    // Qt hands work over under a mutex that the thread sanitizer cannot see; this it does see.
    static std::atomic<unsigned> handOver = 0;
    std::function<void()> job = [work = std::move(work)] {
        static_cast<void>(handOver.load(std::memory_order_acquire));
        work();
    };
    handOver.fetch_add(1, std::memory_order_release);
    generalPool().start(std::move(job));
}

void startTask(QObject *context, std::function<Task<>()> operation)
{
    QMetaObject::invokeMethod(
        context, [operation = std::move(operation)] { runToTheEnd(operation); }, Qt::QueuedConnection);
}

} // namespace talvenor
