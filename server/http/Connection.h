#pragma once

#include "server/common/Log.h"
#include "server/common/Refusal.h"
#include "server/http/HttpServer.h"
#include "server/http/Router.h"
#include "server/http/WorkerPool.h"

#include <boost/asio/awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_set>

namespace talvenor::server {

/// The threads for each kind of work.
class WorkPools
{
public:
    explicit WorkPools(const HttpLimits &limits);
    [[nodiscard]] WorkerPool &of(Work work);
    void join();

private:
    WorkerPool m_database;
    WorkerPool m_hashing;
    WorkerPool m_summaries;
};

/// What all connections of a server share; outlives them.
struct ConnectionContext
{
    const Router &router;
    Log &log;
    const HttpLimits &limits;
    WorkPools &pools;
};

/// One client's connection: reads a request, has it answered, writes the answer, and begins anew. Everything
/// but construction happens on the strand of its socket.
class Connection : public std::enable_shared_from_this<Connection>
{
public:
    Connection(boost::asio::ip::tcp::socket socket, const ConnectionContext &context);

    /// The strand.
    [[nodiscard]] boost::asio::any_io_executor executor() { return m_stream.get_executor(); }
    /// Serves until either side closes. Keep the connection alive meanwhile.
    [[nodiscard]] boost::asio::awaitable<void> serve();
    /// Ends after the running request, or at once if there is none; from any thread.
    void finish();
    /// Ends at once; from any thread.
    void abort();

private:
    using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;

    boost::asio::awaitable<bool> awaitRequest();
    boost::asio::awaitable<bool> serveOne();
    boost::asio::awaitable<std::optional<Reason>> readBody(Parser &parser, std::size_t limit);
    boost::asio::awaitable<HttpResponse> carryOut(const Route &route, HttpRequest request);
    boost::asio::awaitable<bool> write(HttpResponse response, Language language, bool keepAlive);
    boost::asio::awaitable<void> drain();
    [[nodiscard]] HttpRequest describe(const Parser &parser) const;

    ConnectionContext m_context;
    boost::beast::tcp_stream m_stream;
    boost::beast::flat_buffer m_buffer;
    std::string m_address; ///< the peer's
    bool m_idle = true;    ///< no byte of a request is here
    bool m_finishing = false;
};

/// The connections that are open, so that they can be ended. Callable from any thread.
class ConnectionSet
{
public:
    /// Serves a connection until it ends by itself; one that comes after stop() is closed at once.
    void begin(std::shared_ptr<Connection> connection);
    [[nodiscard]] std::size_t size();
    /// Tells all connections to finish.
    void stop();
    /// Tells all connections to end at once.
    void abort();
    /// True if all connections have ended within `time`.
    bool waitUntilEmpty(std::chrono::milliseconds time);

private:
    std::mutex m_lock;
    std::condition_variable m_ended;
    std::unordered_set<std::shared_ptr<Connection>> m_connections; ///< guarded by m_lock
    bool m_stopping = false;                                       ///< guarded by m_lock
};

} // namespace talvenor::server
