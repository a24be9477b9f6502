#include "foundation/Task.h"

#include "foundation/LocalizedError.h"
#include "foundation/ProgrammingError.h"
#include "foundation/ThreadPool.h"

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
    startOnPool(generalPool(), std::move(work));
}

void startTask(QObject *context, std::function<Task<>()> operation)
{
    QMetaObject::invokeMethod(
        context, [operation = std::move(operation)] { runToTheEnd(operation); }, Qt::QueuedConnection);
}

} // namespace talvenor
