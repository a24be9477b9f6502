#include "support/HttpTestServer.h"

#include <QJsonDocument>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <utility>

namespace talvenor::test {

namespace {

bool sendAll(int socket, const QByteArray &bytes)
{
    for (qsizetype sent = 0; sent < bytes.size();) {
        const auto count =
            ::send(socket, bytes.constData() + sent, std::size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        sent += count;
    }
    return true;
}

bool receiveMore(int socket, QByteArray &buffer)
{
    char chunk[16384];
    const auto count = ::recv(socket, chunk, sizeof chunk, 0);
    if (count <= 0)
        return false;
    buffer.append(chunk, qsizetype(count));
    return true;
}

QByteArray headOf(const HttpTestAnswer &answer, bool announcesLength)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(answer.status) + " Scripted\r\n";
    head += "Content-Type: application/json\r\n";
    if (announcesLength && answer.status != 204)
        head += "Content-Length: " + QByteArray::number(answer.body.size()) + "\r\n";
    for (const auto &[name, value] : answer.headers)
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

} // namespace

std::optional<QByteArray> HttpTestRequest::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return std::nullopt;
}

QJsonObject HttpTestRequest::json() const
{
    return QJsonDocument::fromJson(body).object();
}

HttpTestAnswer HttpTestAnswer::json(int status, const QByteArray &body)
{
    HttpTestAnswer answer;
    answer.status = status;
    answer.body = body;
    return answer;
}

HttpTestAnswer HttpTestAnswer::of(Conduct conduct, const QByteArray &body)
{
    HttpTestAnswer answer;
    answer.conduct = conduct;
    answer.body = body;
    return answer;
}

HttpTestServer::HttpTestServer()
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto *const generic = reinterpret_cast<sockaddr *>(&address);
    if (m_listener < 0 || ::bind(m_listener, generic, length) != 0 || ::listen(m_listener, 64) != 0 ||
        ::getsockname(m_listener, generic, &length) != 0)
        qFatal("HttpTestServer cannot listen on the loopback interface");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptConnections(); });
}

HttpTestServer::~HttpTestServer()
{
    std::unique_lock guard(m_lock);
    m_isStopping = true;
    ::shutdown(m_listener, SHUT_RDWR); // ends the wait for connections
    for (const int socket : m_sockets)
        ::shutdown(socket, SHUT_RDWR);
    m_stopCondition.notify_all();
    guard.unlock();
    m_acceptor.join();
    for (std::thread &thread : m_threads)
        thread.join();
    ::close(m_listener);
}

QString HttpTestServer::url() const
{
    return QStringLiteral("http://127.0.0.1:%1").arg(m_port);
}

void HttpTestServer::enqueue(HttpTestAnswer answer)
{
    const std::lock_guard guard(m_lock);
    m_answers.push_back(std::move(answer));
}

void HttpTestServer::setHandler(Handler handler)
{
    const std::lock_guard guard(m_lock);
    m_handler = std::move(handler);
}

QList<HttpTestRequest> HttpTestServer::requests() const
{
    const std::lock_guard guard(m_lock);
    return m_requests;
}

void HttpTestServer::clearRequests()
{
    const std::lock_guard guard(m_lock);
    m_requests.clear();
}

void HttpTestServer::acceptConnections()
{
    for (;;) {
        const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard guard(m_lock);
        if (m_isStopping || socket < 0) {
            if (socket >= 0)
                ::close(socket);
            return;
        }
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        ++m_connectionCount;
        ++m_openConnectionCount;
        m_sockets.push_back(socket);
        m_threads.emplace_back([this, socket] { serve(socket); });
    }
}

void HttpTestServer::serve(int socket)
{
    QByteArray buffer;
    HttpTestRequest request;
    while (readRequest(socket, buffer, request)) {
        const HttpTestAnswer answer = answerFor(request);
        if (!give(socket, answer))
            break;
    }
    const std::lock_guard guard(m_lock);
    m_sockets.remove(socket);
    ::close(socket);
    --m_openConnectionCount;
}

bool HttpTestServer::readRequest(int socket, QByteArray &buffer, HttpTestRequest &request)
{
    qsizetype headEnd = -1;
    while ((headEnd = buffer.indexOf("\r\n\r\n")) < 0) {
        if (!receiveMore(socket, buffer))
            return false;
    }
    request = {};
    const QList<QByteArray> lines = buffer.left(headEnd).replace("\r\n", "\n").split('\n');
    const QList<QByteArray> first = lines.constFirst().split(' ');
    request.method = first.value(0);
    request.target = first.value(1);
    request.version = first.value(2);
    for (const QByteArray &line : lines.mid(1)) {
        const auto colon = line.indexOf(':');
        request.headers.append({line.left(colon), line.mid(colon + 1).trimmed()});
    }
    const qsizetype length = request.header("Content-Length").value_or("0").toLongLong();
    buffer.remove(0, headEnd + 4);
    while (buffer.size() < length) {
        if (!receiveMore(socket, buffer))
            return false;
    }
    request.body = buffer.left(length);
    buffer.remove(0, length);
    return true;
}

HttpTestAnswer HttpTestServer::answerFor(const HttpTestRequest &request)
{
    std::unique_lock guard(m_lock);
    m_requests.append(request);
    if (!m_answers.empty()) {
        HttpTestAnswer answer = std::move(m_answers.front());
        m_answers.pop_front();
        return answer;
    }
    const Handler handler = m_handler;
    guard.unlock();
    return handler ? handler(request) : HttpTestAnswer::json(404, R"({"error":"not scripted"})");
}

/// False if the connection is to be closed.
bool HttpTestServer::give(int socket, const HttpTestAnswer &answer)
{
    using Conduct = HttpTestAnswer::Conduct;
    if (!sleep(answer.delay))
        return false;
    switch (answer.conduct) {
    case Conduct::complete:
        return sendAll(socket, headOf(answer, true) + (answer.status == 204 ? QByteArray() : answer.body));
    case Conduct::byteAtATime:
        return giveSlowly(socket, headOf(answer, true) + answer.body, answer.pause);
    case Conduct::dropBeforeAnswer:
        return false;
    case Conduct::dropWithinHead:
        (void)sendAll(socket, headOf(answer, true).left(25));
        return false;
    case Conduct::dropWithinBody:
        (void)sendAll(socket, headOf(answer, true) + answer.body.left(answer.body.size() / 2));
        return false;
    case Conduct::neverAnswer:
        waitUntilClosed(socket);
        return false;
    case Conduct::raw:
        (void)sendAll(socket, answer.body);
        return false;
    case Conduct::endless:
        for (bool goesOn = sendAll(socket, headOf(answer, false)); goesOn;)
            goesOn = sendAll(socket, answer.body);
        return false;
    }
    return false;
}

bool HttpTestServer::giveSlowly(int socket, const QByteArray &bytes, std::chrono::milliseconds pause)
{
    for (const char byte : bytes) {
        if (!sendAll(socket, QByteArray(1, byte)) || !sleep(pause))
            return false;
    }
    return true;
}

/// False if the server is to stop.
bool HttpTestServer::sleep(std::chrono::milliseconds time)
{
    std::unique_lock guard(m_lock);
    if (time.count() > 0)
        m_stopCondition.wait_for(guard, time, [this] { return m_isStopping; });
    return !m_isStopping;
}

void HttpTestServer::waitUntilClosed(int socket)
{
    QByteArray ignored;
    while (receiveMore(socket, ignored))
        ignored.clear();
}

} // namespace talvenor::test
