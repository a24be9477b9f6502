#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QPair>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <thread>

namespace talvenor::test {

/// A request as the server has received it, complete.
struct HttpTestRequest
{
    QByteArray method;
    QByteArray target; ///< path and query as they were sent
    QByteArray version;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;

    /// The first header of that name, whatever its case; absent if there is none.
    [[nodiscard]] std::optional<QByteArray> header(const QByteArray &name) const;
    /// The body as a JSON object; empty if it is none.
    [[nodiscard]] QJsonObject json() const;
};

/// What the server does with a request.
struct HttpTestAnswer
{
    enum class Conduct {
        complete = 1,
        byteAtATime,      ///< head and body in single bytes, `pause` after each
        dropBeforeAnswer, ///< closes without a byte
        dropWithinHead,   ///< closes in the middle of the head
        dropWithinBody,   ///< closes after half of the body
        neverAnswer,      ///< waits until the client goes away
        raw,              ///< sends `body` with no head at all and closes
        endless,          ///< repeats `body` without announcing an end, until the client goes away
    };

    int status = 200;
    QByteArray body;
    Conduct conduct = Conduct::complete;
    QList<QPair<QByteArray, QByteArray>> headers; ///< besides type and length
    std::chrono::milliseconds delay{0};           ///< before the first byte
    std::chrono::milliseconds pause{0};           ///< between bytes

    [[nodiscard]] static HttpTestAnswer json(int status, const QByteArray &body);
    [[nodiscard]] static HttpTestAnswer of(Conduct conduct, const QByteArray &body = {});
};

/// An HTTP/1.1 server on a free loopback port, scripted by the test, on threads of its own.
///
/// Connections are kept open after an answer, so that it shows if a client uses one twice. Destroying the
/// server closes everything. All methods may be called at any time.
class HttpTestServer
{
public:
    using Handler = std::function<HttpTestAnswer(const HttpTestRequest &)>;

    HttpTestServer();
    ~HttpTestServer();
    HttpTestServer(const HttpTestServer &) = delete;
    HttpTestServer &operator=(const HttpTestServer &) = delete;

    /// "http://127.0.0.1:" and the port.
    [[nodiscard]] QString url() const;
    [[nodiscard]] int port() const { return m_port; }

    /// Answers the next request that no earlier answer is waiting for.
    void enqueue(HttpTestAnswer answer);
    /// Answers what no queued answer is there for; without one, such a request gets 404. Called on threads of
    /// the server's.
    void setHandler(Handler handler);

    /// All complete requests so far, in the order in which they came.
    [[nodiscard]] QList<HttpTestRequest> requests() const;
    void clearRequests();
    /// How many connections have been accepted, and how many of them the client has not closed.
    [[nodiscard]] int connectionCount() const { return m_connectionCount; }
    [[nodiscard]] int openConnectionCount() const { return m_openConnectionCount; }

private:
    void acceptConnections();
    void serve(int socket);
    [[nodiscard]] bool readRequest(int socket, QByteArray &buffer, HttpTestRequest &request);
    [[nodiscard]] HttpTestAnswer answerFor(const HttpTestRequest &request);
    [[nodiscard]] bool give(int socket, const HttpTestAnswer &answer);
    [[nodiscard]] bool giveSlowly(int socket, const QByteArray &bytes, std::chrono::milliseconds pause);
    [[nodiscard]] bool sleep(std::chrono::milliseconds time);
    void waitUntilClosed(int socket);

    int m_listener = -1;
    int m_port = 0;
    std::atomic<int> m_connectionCount = 0;
    std::atomic<int> m_openConnectionCount = 0;

    mutable std::mutex m_lock;
    std::condition_variable m_stopCondition;
    // Guarded by m_lock.
    bool m_isStopping = false;
    std::deque<HttpTestAnswer> m_answers;
    Handler m_handler;
    QList<HttpTestRequest> m_requests;
    std::list<int> m_sockets;
    std::list<std::thread> m_threads;

    std::thread m_acceptor;
};

} // namespace talvenor::test
