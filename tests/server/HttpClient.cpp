#include "HttpClient.h"

#include <QJsonDocument>

#include <curl/curl.h>

#include <arpa/inet.h>
#include <array>
#include <memory>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace talvenor::test {

namespace {

std::size_t append(char *data, std::size_t size, std::size_t count, void *target)
{
    static_cast<QByteArray *>(target)->append(data, static_cast<qsizetype>(size * count));
    return size * count;
}

} // namespace

QJsonObject HttpAnswer::object() const
{
    return QJsonDocument::fromJson(body).object();
}

HttpAnswer HttpClient::post(const QString &path, const QJsonObject &body) const
{
    return send("POST", path, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

HttpAnswer HttpClient::put(const QString &path, const QJsonObject &body) const
{
    return send("PUT", path, QJsonDocument(body).toJson(QJsonDocument::Compact));
}

HttpAnswer HttpClient::send(const QByteArray &method, const QString &path,
                            const std::optional<QByteArray> &body) const
{
    const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
    curl_slist *list = curl_slist_append(nullptr, "Content-Type: application/json");
    if (!token.isEmpty())
        list = curl_slist_append(list, ("Authorization: Bearer " + token.toUtf8()).constData());
    if (!acceptLanguage.isEmpty())
        list = curl_slist_append(list, ("Accept-Language: " + acceptLanguage).constData());
    const std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers(list, curl_slist_free_all);
    HttpAnswer answer;
    curl_easy_setopt(handle.get(), CURLOPT_URL, (m_baseUrl + path).toUtf8().constData());
    curl_easy_setopt(handle.get(), CURLOPT_CUSTOMREQUEST, method.constData());
    curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT, 60L);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, append);
    curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &answer.body);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERFUNCTION, append);
    curl_easy_setopt(handle.get(), CURLOPT_HEADERDATA, &answer.headers);
    if (body) {
        curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
        curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body->constData());
    }
    // A connection that is reset after the answer still gave an answer.
    curl_easy_perform(handle.get());
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    answer.status = static_cast<int>(status);
    return answer;
}

HttpAnswer HttpClient::signUp(const QString &email, const QString &password)
{
    token.clear();
    HttpAnswer answer =
        post(QStringLiteral("/auth/register"), {{QStringLiteral("email"), email},
                                                {QStringLiteral("password"), password},
                                                {QStringLiteral("name"), QStringLiteral("Anna")}});
    token = answer.object().value(QStringLiteral("token")).toString();
    return answer;
}

RawConnection::RawConnection(quint16 port) : m_descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_closed = ::connect(m_descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0;
}

RawConnection::~RawConnection()
{
    ::close(m_descriptor);
}

bool RawConnection::send(const QByteArray &bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t size = ::send(m_descriptor, bytes.constData() + sent,
                                    static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (size <= 0)
            return false;
        sent += size;
    }
    return true;
}

void RawConnection::finishSending()
{
    ::shutdown(m_descriptor, SHUT_WR);
}

QByteArray RawConnection::readUntil(const QByteArray &marker, int timeoutMs)
{
    QByteArray answer;
    std::array<char, 65536> buffer{};
    pollfd waiting{m_descriptor, POLLIN, 0};
    while ((marker.isEmpty() || !answer.contains(marker)) && ::poll(&waiting, 1, timeoutMs) > 0) {
        const ssize_t size = ::recv(m_descriptor, buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            m_closed = true;
            break;
        }
        answer.append(buffer.data(), size);
    }
    return answer;
}

QByteArray exchangeRaw(quint16 port, const QByteArray &bytes)
{
    RawConnection connection(port);
    connection.send(bytes); // A service that has heard enough may close in the middle.
    return connection.readAll();
}

int statusOf(const QByteArray &rawAnswer)
{
    return rawAnswer.startsWith("HTTP/1.1 ") ? rawAnswer.mid(9, 3).toInt() : 0;
}

} // namespace talvenor::test
