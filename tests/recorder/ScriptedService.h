#pragma once

#include "platform/HttpTransport.h"
#include "platform/SecretStore.h"

#include <QHash>
#include <QJsonObject>
#include <QList>

#include <optional>

namespace talvenor::test {

/// A hosted service that says what a test tells it to, and when. Main thread.
///
/// The real transport and a real server are tested elsewhere; here the answers' contents and their moments
/// count.
class ScriptedService : public HttpTransport
{
public:
    struct Request
    {
        QString route; ///< such as "POST /auth/record"
        QJsonObject body;
    };

    /// From now on requests to `route` are answered so; `status` 0 lets the connection fail.
    void answer(const QString &route, int status, const QJsonObject &body);
    /// From now on requests to `route` wait until `release`.
    void hold(const QString &route);
    /// Lets the waiting requests to `route` go on, to the answer that is set by then.
    void release(const QString &route);
    /// The same for every route, at the end of a test.
    void releaseAll();

    [[nodiscard]] QList<Request> requests(const QString &route) const;
    [[nodiscard]] const QList<Request> &allRequests() const { return m_requests; }

    [[nodiscard]] bool isValidUrl(const QString &) const override { return true; }
    Task<HttpResponse> send(HttpRequest request) override;

private:
    struct Answer
    {
        int status = 404;
        QJsonObject body;
    };
    QHash<QString, Answer> m_answers;
    QHash<QString, OneShot<void>> m_held;
    QList<Request> m_requests;
};

/// A secret store in memory.
class MemorySecretStore : public SecretStore
{
public:
    void save(const QString &service, const QString &account, const QByteArray &data) override;
    std::optional<QByteArray> load(const QString &service, const QString &account) override;
    void remove(const QString &service, const QString &account) override;

private:
    std::mutex m_lock;
    QHash<QString, QByteArray> m_items; ///< guarded by m_lock
};

} // namespace talvenor::test
