#include "recorderfakes/ScriptedService.h"

#include "foundation/LocalizedError.h"

#include <QJsonDocument>
#include <QUrl>

#include <utility>

namespace talvenor::test {

void ScriptedService::answer(const QString &route, int status, const QJsonObject &body)
{
    m_answers[route] = {status, body};
}

void ScriptedService::hold(const QString &route)
{
    m_held[route] = OneShot<void>();
}

void ScriptedService::release(const QString &route)
{
    m_held.take(route).resume();
}

void ScriptedService::releaseAll()
{
    for (const OneShot<void> &held : std::exchange(m_held, {}))
        held.resume();
}

QList<ScriptedService::Request> ScriptedService::requests(const QString &route) const
{
    QList<Request> matching;
    for (const Request &request : m_requests) {
        if (request.route == route)
            matching.append(request);
    }
    return matching;
}

Task<HttpResponse> ScriptedService::send(HttpRequest request)
{
    const QString path = QUrl(request.url).path().mid(int(qstrlen("/api")));
    const QString route = QString::fromLatin1(request.method) + u' ' + path;
    m_requests.append({route, QJsonDocument::fromJson(request.body.value_or(QByteArray())).object()});
    if (m_held.contains(route)) {
        const OneShot<void> gate = m_held.value(route);
        co_await gate;
    }
    const Answer answer = m_answers.value(route);
    if (answer.status == 0)
        throw PlatformError(QStringLiteral("network"), 7, QStringLiteral("The connection was lost."));
    co_return HttpResponse{answer.status, QJsonDocument(answer.body).toJson()};
}

void MemorySecretStore::save(const QString &service, const QString &account, const QByteArray &data)
{
    const std::lock_guard guard(m_lock);
    m_items[service + u'/' + account] = data;
}

std::optional<QByteArray> MemorySecretStore::load(const QString &service, const QString &account)
{
    const std::lock_guard guard(m_lock);
    const auto found = m_items.constFind(service + u'/' + account);
    return found == m_items.cend() ? std::nullopt : std::optional(*found);
}

void MemorySecretStore::remove(const QString &service, const QString &account)
{
    const std::lock_guard guard(m_lock);
    m_items.remove(service + u'/' + account);
}

} // namespace talvenor::test
