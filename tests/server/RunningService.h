#pragma once

#include "HttpClient.h"
#include "server/operation/Service.h"

#include <QTemporaryDir>
#include <QUrl>

#include <atomic>

namespace talvenor::test {

/// The least that Argon2id takes: the tests are about what surrounds it.
inline constexpr server::PasswordCost cheapPasswords{1, 8192};

/// A service in this process, in a folder of its own, with a clock that can be moved.
class RunningService
{
public:
    explicit RunningService(const server::HttpLimits &http = {}, const server::LoginLimits &logins = {})
        : m_hasher(cheapPasswords), m_log(-1)
    {
        server::ServiceOptions options;
        options.dataFolder = m_folder.path().toStdString();
        options.http = http;
        options.logins = logins;
        options.clock = [this] { return server::systemTime() + std::chrono::milliseconds(m_ahead.load()); };
        m_service = std::make_unique<server::Service>(options, m_hasher, m_log);
        m_url = QString::fromStdString(m_service->start());
    }

    [[nodiscard]] QString url() const { return m_url; }
    [[nodiscard]] quint16 port() const { return static_cast<quint16>(QUrl(m_url).port()); }
    [[nodiscard]] HttpClient client() const { return HttpClient(m_url); }
    [[nodiscard]] server::Service &service() { return *m_service; }
    [[nodiscard]] server::Accounts &accounts() { return m_service->accounts(); }
    [[nodiscard]] QString folder() const { return m_folder.path(); }
    /// Moves the service's clock ahead.
    void advance(std::chrono::milliseconds time) { m_ahead += time.count(); }

    /// A signed-in client of a new account.
    HttpClient signedIn(const QString &email, server::Tier tier = server::Tier::free)
    {
        accounts().create(email.toStdString(), "secret", "Anna", tier, server::Role::user);
        HttpClient client(m_url);
        client.token = QString::fromStdString(accounts().login(email.toStdString(), "secret", "test").token);
        return client;
    }

private:
    QTemporaryDir m_folder;
    server::PasswordHasher m_hasher;
    server::Log m_log;
    std::atomic<std::int64_t> m_ahead = 0; ///< milliseconds
    std::unique_ptr<server::Service> m_service;
    QString m_url;
};

} // namespace talvenor::test
