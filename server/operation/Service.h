#pragma once

#include "server/accounts/Accounts.h"
#include "server/common/Log.h"
#include "server/http/Endpoints.h"
#include "server/http/HttpServer.h"
#include "server/storage/SqliteAccountStore.h"
#include "server/storage/SqliteDatabase.h"

#include <filesystem>
#include <memory>

namespace talvenor::server {

/// How a service is set up.
struct ServiceOptions
{
    std::filesystem::path dataFolder;
    std::string address = "127.0.0.1";
    std::uint16_t port = 0; ///< 0 takes a free one
    HttpLimits http;
    LoginLimits logins;
    Clock clock = systemTime;
};

/// The whole service in one process: storage, accounts, summaries and HTTP put together.
class Service
{
public:
    /// Opens the database. `log` and `hasher` must outlive this. Throws what SqliteDatabase throws.
    Service(const ServiceOptions &options, const PasswordHasher &hasher, Log &log);
    ~Service();
    Service(const Service &) = delete;
    Service &operator=(const Service &) = delete;

    /// Begins to serve and gives the base URL, "http://127.0.0.1:8787/api". Throws
    /// boost::system::system_error where the address cannot be had.
    std::string start();
    /// Lets running requests end and serves no more.
    void stop();

    [[nodiscard]] Accounts &accounts() { return m_accounts; }

private:
    const ServiceOptions m_options;
    SqliteDatabase m_database;
    SqliteAccountStore m_store;
    Accounts m_accounts;
    std::unique_ptr<Summarizer> m_summarizer;
    Router m_router;
    HttpServer m_http;
};

} // namespace talvenor::server
