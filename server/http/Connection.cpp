#include "server/http/Connection.h"

#include "server/http/Answers.h"
#include "server/http/Headers.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/redirect_error.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>

#include <array>

namespace talvenor::server {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;

namespace {

/// Places in the pools: what waits there is answered in time, what does not fit is refused at once.
constexpr std::size_t databasePlaces = 2048;
constexpr std::size_t hashingPlaces = 64;
constexpr std::size_t summaryPlaces = 16;

/// Bytes that are read from a client whose request was refused, and how long; see drain().
constexpr std::size_t drainBytes = 32 * 1024 * 1024;
constexpr std::chrono::seconds drainTime{5};

/// Why a message could not be read; absent where the connection has simply ended and nobody would hear.
std::optional<Reason> readFailure(const boost::system::error_code &error)
{
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
        return Reason::headerTooLarge;
    if (error == http::error::body_limit)
        return Reason::bodyTooLarge;
    if (error == http::error::end_of_stream || error == http::error::partial_message)
        return std::nullopt;
    if (error.category() == http::make_error_code(http::error::bad_method).category())
        return Reason::malformedRequest;
    return std::nullopt;
}

std::string_view view(beast::string_view text)
{
    return {text.data(), text.size()};
}

std::string milliseconds(std::chrono::steady_clock::duration time)
{
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

} // namespace

WorkPools::WorkPools(const HttpLimits &limits)
    : m_database(limits.databaseThreads, databasePlaces), m_hashing(limits.hashingThreads, hashingPlaces),
      m_summaries(limits.summaryThreads, summaryPlaces)
{
}

WorkerPool &WorkPools::of(Work work)
{
    switch (work) {
    case Work::hashing:
        return m_hashing;
    case Work::summaries:
        return m_summaries;
    case Work::database:
        break;
    }
    return m_database;
}

void WorkPools::join()
{
    m_database.join();
    m_hashing.join();
    m_summaries.join();
}

Connection::Connection(asio::ip::tcp::socket socket, const ConnectionContext &context)
    : m_context(context), m_stream(std::move(socket)), m_buffer(context.limits.headerBytes)
{
    boost::system::error_code error;
    const auto peer = m_stream.socket().remote_endpoint(error);
    if (!error)
        m_address = peer.address().to_string();
    // Answers are written whole, so waiting to fill a packet would only delay them.
    m_stream.socket().set_option(asio::ip::tcp::no_delay(true), error);
}

asio::awaitable<void> Connection::serve()
{
    try {
        for (;;) {
            const bool arrived = co_await awaitRequest();
            if (!arrived)
                break;
            const bool more = co_await serveOne();
            if (!more)
                break;
        }
    } catch (const std::exception &error) {
        // One connection ends, for instance without memory for its body; the others must not notice.
        m_context.log.error("connection-failed", {{"what", error.what()}});
    }
    boost::system::error_code ignored; // The other side may be gone already.
    m_stream.socket().shutdown(asio::ip::tcp::socket::shutdown_both, ignored);
    m_stream.close();
}

void Connection::finish()
{
    asio::post(executor(), [self = shared_from_this()] {
        self->m_finishing = true;
        if (self->m_idle)
            self->m_stream.close();
    });
}

void Connection::abort()
{
    asio::post(executor(), [self = shared_from_this()] {
        self->m_finishing = true;
        self->m_stream.close();
    });
}

/// Waits for the first byte of the next request; false if none comes.
asio::awaitable<bool> Connection::awaitRequest()
{
    if (m_finishing)
        co_return false;
    if (m_buffer.size() > 0)
        co_return true;
    m_idle = true;
    boost::system::error_code error;
    m_stream.expires_after(m_context.limits.idle);
    const std::size_t size = co_await m_stream.async_read_some(
        m_buffer.prepare(4096), asio::redirect_error(asio::use_awaitable, error));
    m_buffer.commit(size);
    m_idle = false;
    // finish() may have closed the socket when the bytes were on their way here already.
    co_return !error && m_stream.socket().is_open();
}

/// Reads one request and answers it; true if the connection can be used again.
asio::awaitable<bool> Connection::serveOne()
{
    const auto began = std::chrono::steady_clock::now();
    const HttpLimits &limits = m_context.limits;
    Parser parser;
    parser.header_limit(static_cast<std::uint32_t>(limits.headerBytes));
    parser.body_limit(boost::none); // Each endpoint has its own, looked at below.
    m_stream.expires_after(limits.header);
    boost::system::error_code error;
    co_await http::async_read_header(m_stream, m_buffer, parser,
                                     asio::redirect_error(asio::use_awaitable, error));
    std::optional<Reason> failure;
    HttpRequest request;
    if (error) {
        failure = readFailure(error);
        if (!failure)
            co_return false;
    } else {
        request = describe(parser);
    }
    const Language language = request.language;
    const std::string method = request.method;
    const std::string path = request.path;
    HttpResponse response;
    bool keepAlive = false;
    const Route *route = nullptr;
    if (!failure) {
        try {
            route = &m_context.router.route(request.method, request.path);
        } catch (const Refusal &refusal) {
            failure = refusal.reason();
        }
    }
    if (route != nullptr) {
        failure = co_await readBody(parser, route->bodyLimit);
        if (m_finishing && !m_stream.socket().is_open())
            co_return false;
    }
    if (failure) {
        response = answerTo(Refusal(*failure), language);
        if (failure == Reason::methodNotAllowed)
            response.allow = m_context.router.methods(path);
        // A request whose body is still under way leaves the connection in the middle of it.
        keepAlive = route == nullptr && !error && !parser.chunked() &&
                    parser.content_length_remaining().value_or(0) == 0 && parser.keep_alive();
    } else {
        if (!parser.is_done())
            co_return false; // The client has gone away in the middle.
        keepAlive = parser.keep_alive();
        request.body = std::move(parser.get().body());
        m_stream.expires_never();
        response = co_await carryOut(*route, std::move(request));
    }
    keepAlive = keepAlive && !m_finishing;
    const int status = response.status;
    const bool written = co_await write(std::move(response), language, keepAlive);
    m_context.log.info("request", {{"method", method},
                                   {"path", path},
                                   {"status", std::to_string(status)},
                                   {"ms", milliseconds(std::chrono::steady_clock::now() - began)}});
    if (!written)
        co_return false;
    if (failure && !keepAlive)
        co_await drain();
    co_return keepAlive;
}

/// Reads the body of a request whose header is here. Gives why it is refused; where the client has gone away
/// the parser stays unfinished and nothing is given.
asio::awaitable<std::optional<Reason>> Connection::readBody(Parser &parser, std::size_t limit)
{
    if (parser.content_length().value_or(0) > limit)
        co_return Reason::bodyTooLarge;
    parser.body_limit(limit);
    boost::system::error_code error;
    m_stream.expires_after(m_context.limits.body);
    if (view(parser.get()[http::field::expect]) == "100-continue") {
        http::response<http::empty_body> proceed{http::status::continue_, 11};
        co_await http::async_write(m_stream, proceed, asio::redirect_error(asio::use_awaitable, error));
        if (error)
            co_return std::nullopt;
    }
    co_await http::async_read(m_stream, m_buffer, parser, asio::redirect_error(asio::use_awaitable, error));
    if (error)
        co_return readFailure(error);
    co_return std::nullopt;
}

HttpRequest Connection::describe(const Parser &parser) const
{
    const auto &message = parser.get();
    HttpRequest request;
    request.method = view(message.method_string());
    request.path = pathOf(view(message.target()));
    request.bearerToken = bearerToken(view(message[http::field::authorization]));
    request.language = preferredLanguage(view(message[http::field::accept_language]));
    request.address = m_address;
    return request;
}

/// Runs the endpoint on a thread of its kind of work. Does not throw.
asio::awaitable<HttpResponse> Connection::carryOut(const Route &route, HttpRequest request)
{
    const Language language = request.language;
    const auto work = [this, &route, &request]() -> HttpResponse {
        try {
            return route.handler(request);
        } catch (const Refusal &refusal) {
            return answerTo(refusal, request.language);
        } catch (const std::exception &error) {
            // What went wrong is for the operator; the client learns only that something did.
            m_context.log.error("request-failed", {{"path", request.path}, {"what", error.what()}});
            return answerTo(Refusal(Reason::internalError), request.language);
        }
    };
    HttpResponse response;
    WorkerPool &pool = m_context.pools.of(route.work);
    try {
        const WorkerPool::Place place(pool);
        // `work` and what it refers to live in this coroutine, which waits here until it is done.
        const auto run = [&work, &response]() -> asio::awaitable<void> {
            response = work();
            co_return;
        };
        co_await asio::co_spawn(pool.executor(), run, asio::use_awaitable);
    } catch (const Refusal &refusal) {
        response = answerTo(refusal, language);
    }
    co_return response;
}

/// Writes an answer; false if the client does not take it.
asio::awaitable<bool> Connection::write(HttpResponse response, Language language, bool keepAlive)
{
    http::response<http::string_body> message;
    message.result(static_cast<unsigned>(response.status));
    message.version(11);
    message.set(http::field::content_type, "application/json");
    message.set(http::field::content_language, language == Language::german ? "de" : "en");
    message.set(http::field::cache_control, "no-store");
    message.set("X-Content-Type-Options", "nosniff");
    if (response.status == 401)
        message.set(http::field::www_authenticate, "Bearer"); // RFC 9110, 11.6.1 asks for it.
    if (!response.allow.empty())
        message.set(http::field::allow, response.allow);
    message.body() = std::move(response.body);
    message.keep_alive(keepAlive);
    message.prepare_payload();
    boost::system::error_code error;
    m_stream.expires_after(m_context.limits.write);
    co_await http::async_write(m_stream, message, asio::redirect_error(asio::use_awaitable, error));
    co_return !error;
}

/// Takes in what a refused client still sends, within bounds. Closing a socket with unread bytes resets the
/// connection, and the reset can overtake the answer that tells the client why.
asio::awaitable<void> Connection::drain()
{
    boost::system::error_code error;
    m_stream.socket().shutdown(asio::ip::tcp::socket::shutdown_send, error);
    m_stream.expires_after(drainTime);
    std::array<char, 16 * 1024> bytes{};
    std::size_t total = 0;
    while (!error && !m_finishing && total < drainBytes)
        total += co_await m_stream.async_read_some(asio::buffer(bytes),
                                                   asio::redirect_error(asio::use_awaitable, error));
}

} // namespace talvenor::server
