#pragma once

#include <boost/asio/thread_pool.hpp>

#include <atomic>
#include <cstddef>

namespace talvenor::server {

/// Threads for work that blocks, with a bound on what may wait for them: a service that takes on more than it
/// can do answers nobody in time.
class WorkerPool
{
public:
    /// A place in the pool, taken before the work is handed over and given back when it is done.
    class Place
    {
    public:
        /// Throws Refusal (busy) if all places are taken.
        explicit Place(WorkerPool &pool);
        ~Place();
        Place(const Place &) = delete;
        Place &operator=(const Place &) = delete;

    private:
        WorkerPool &m_pool;
    };

    WorkerPool(std::size_t threads, std::size_t places) : m_threads(threads), m_places(places) {}

    [[nodiscard]] boost::asio::thread_pool::executor_type executor() { return m_threads.get_executor(); }
    /// Waits until all work is done; none may be handed over any more.
    void join() { m_threads.join(); }

private:
    boost::asio::thread_pool m_threads;
    const std::size_t m_places;
    std::atomic<std::size_t> m_taken = 0;
};

} // namespace talvenor::server
