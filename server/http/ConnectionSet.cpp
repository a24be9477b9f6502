#include "server/http/Connection.h"

#include <boost/asio/co_spawn.hpp>

namespace talvenor::server {

void ConnectionSet::begin(std::shared_ptr<Connection> connection)
{
    {
        const std::lock_guard guard(m_lock);
        if (m_stopping)
            return; // Dropping the last reference closes the socket.
        m_connections.insert(connection);
    }
    boost::asio::co_spawn(connection->executor(), connection->serve(),
                          [this, connection](const std::exception_ptr &) { // serve() throws nothing.
                              const std::lock_guard guard(m_lock);
                              m_connections.erase(connection);
                              m_ended.notify_all();
                          });
}

std::size_t ConnectionSet::size()
{
    const std::lock_guard guard(m_lock);
    return m_connections.size();
}

void ConnectionSet::stop()
{
    const std::lock_guard guard(m_lock);
    m_stopping = true;
    for (const auto &connection : m_connections)
        connection->finish();
}

void ConnectionSet::abort()
{
    const std::lock_guard guard(m_lock);
    for (const auto &connection : m_connections)
        connection->abort();
}

bool ConnectionSet::waitUntilEmpty(std::chrono::milliseconds time)
{
    std::unique_lock guard(m_lock);
    return m_ended.wait_for(guard, time, [this] { return m_connections.empty(); });
}

} // namespace talvenor::server
