#include "foundation/ThreadPool.h"

#include <atomic>

namespace talvenor {

void startOnPool(QThreadPool &pool, std::function<void()> work)
{
    // Qt hands work over under a mutex that the thread sanitizer cannot see; this it does see.
    static std::atomic<unsigned> handOver = 0;
    std::function<void()> job = [work = std::move(work)] {
        static_cast<void>(handOver.load(std::memory_order_acquire));
        work();
    };
    handOver.fetch_add(1, std::memory_order_release);
    pool.start(std::move(job));
}

} // namespace talvenor
