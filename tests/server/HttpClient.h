#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace talvenor::test {

/// An answer as a client sees it.
struct HttpAnswer
{
    int status = 0; ///< 0 if none came
    QByteArray headers;
    QByteArray body;

    /// The body as an object; empty if it is none.
    [[nodiscard]] QJsonObject object() const;
    /// The text under "error".
    [[nodiscard]] QString error() const { return object().value(QStringLiteral("error")).toString(); }
};

/// A client of the service by libcurl, blocking; one for each thread.
class HttpClient
{
public:
    /// `baseUrl` as the service prints it.
    explicit HttpClient(QString baseUrl) : m_baseUrl(std::move(baseUrl)) {}

    QString token;                                ///< sent as the bearer token if not empty
    QByteArray acceptLanguage = QByteArray("en"); ///< sent if not empty

    [[nodiscard]] HttpAnswer get(const QString &path) const { return send("GET", path, std::nullopt); }
    [[nodiscard]] HttpAnswer post(const QString &path, const QJsonObject &body) const;
    [[nodiscard]] HttpAnswer put(const QString &path, const QJsonObject &body) const;
    [[nodiscard]] HttpAnswer send(const QByteArray &method, const QString &path,
                                  const std::optional<QByteArray> &body) const;

    /// Registers an account and keeps its token.
    HttpAnswer signUp(const QString &email, const QString &password = QStringLiteral("secret"));

private:
    QString m_baseUrl;
};

/// A connection to a port on loopback that sends and receives bytes as they are.
class RawConnection
{
public:
    explicit RawConnection(quint16 port);
    ~RawConnection();
    Q_DISABLE_COPY_MOVE(RawConnection)

    /// False if the service does not take it all.
    bool send(const QByteArray &bytes);
    /// Says that nothing more will be sent.
    void finishSending();
    /// What has come until it holds `marker`, the service closes, or nothing comes for `timeoutMs`
    /// milliseconds.
    QByteArray readUntil(const QByteArray &marker, int timeoutMs = 10'000);
    /// What comes until the service closes, or nothing comes for `timeoutMs` milliseconds.
    QByteArray readAll(int timeoutMs = 10'000) { return readUntil(QByteArray(), timeoutMs); }
    /// True if the last read ended because the service closed the connection.
    [[nodiscard]] bool isClosed() const { return m_closed; }

private:
    int m_descriptor;
    bool m_closed = false;
};

/// Sends bytes to a port on loopback and gives all that comes back until the service closes.
[[nodiscard]] QByteArray exchangeRaw(quint16 port, const QByteArray &bytes);

/// The status of a raw answer, 0 if it is none.
[[nodiscard]] int statusOf(const QByteArray &rawAnswer);

} // namespace talvenor::test
