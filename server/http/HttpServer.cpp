#include "server/http/HttpServer.h"

#include "server/http/Connection.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/use_awaitable.hpp>

#include <thread>
#include <vector>

namespace talvenor::server {

namespace asio = boost::asio;
using asio::ip::tcp;

class HttpServer::Implementation
{
public:
    Implementation(const Router &router, Log &log, const HttpLimits &limits)
        : m_log(log), m_limits(limits), m_pools(limits), m_context{router, log, m_limits, m_pools},
          m_acceptor(asio::make_strand(m_io)), m_pause(m_acceptor.get_executor())
    {
    }

    std::uint16_t start(const std::string &address, std::uint16_t port)
    {
        const tcp::endpoint endpoint(asio::ip::make_address(address), port);
        m_acceptor.open(endpoint.protocol());
        m_acceptor.set_option(asio::socket_base::reuse_address(true));
        m_acceptor.bind(endpoint);
        m_acceptor.listen();
        const std::uint16_t bound = m_acceptor.local_endpoint().port();
        asio::co_spawn(m_acceptor.get_executor(), accept(), asio::detached);
        for (std::size_t index = 0; index < m_limits.connectionThreads; ++index)
            m_threads.emplace_back([this] { m_io.run(); });
        return bound;
    }

    void stop()
    {
        asio::post(m_acceptor.get_executor(), [this] {
            boost::system::error_code ignored; // Closed it is in any case.
            m_acceptor.close(ignored);
            m_pause.cancel();
            m_stopping = true;
        });
        m_connections.stop();
        if (!m_connections.waitUntilEmpty(m_limits.stop)) {
            m_log.warning("requests-cut-off");
            m_connections.abort();
        }
        for (std::thread &thread : m_threads)
            thread.join();
        m_threads.clear();
        m_pools.join();
    }

private:
    /// Takes connections until the acceptor is closed.
    asio::awaitable<void> accept()
    {
        while (!m_stopping) {
            boost::system::error_code error;
            if (m_connections.size() >= m_limits.connections) {
                error = boost::system::errc::make_error_code(boost::system::errc::too_many_files_open);
            } else {
                tcp::socket socket = co_await m_acceptor.async_accept(
                    asio::make_strand(m_io), asio::redirect_error(asio::use_awaitable, error));
                if (!error) {
                    m_connections.begin(std::make_shared<Connection>(std::move(socket), m_context));
                    continue;
                }
            }
            if (!m_acceptor.is_open())
                co_return;
            // Out of descriptors or of places: those there are will end, so it is worth waiting for.
            m_pause.expires_after(std::chrono::milliseconds(20));
            co_await m_pause.async_wait(asio::redirect_error(asio::use_awaitable, error));
        }
    }

    Log &m_log;
    const HttpLimits m_limits;
    asio::io_context m_io;
    WorkPools m_pools;
    const ConnectionContext m_context;
    tcp::acceptor m_acceptor;   ///< used on its strand once started
    asio::steady_timer m_pause; ///< used on the acceptor's strand
    bool m_stopping = false;    ///< used on the acceptor's strand
    ConnectionSet m_connections;
    std::vector<std::thread> m_threads;
};

HttpServer::HttpServer(const Router &router, Log &log, HttpLimits limits)
    : m_implementation(std::make_unique<Implementation>(router, log, limits))
{
}

HttpServer::~HttpServer()
{
    stop();
}

std::uint16_t HttpServer::start(const std::string &address, std::uint16_t port)
{
    return m_implementation->start(address, port);
}

void HttpServer::stop()
{
    m_implementation->stop();
}

} // namespace talvenor::server
