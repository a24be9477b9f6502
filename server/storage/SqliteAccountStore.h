#pragma once

#include "server/accounts/AccountStore.h"
#include "server/storage/SqliteDatabase.h"

namespace talvenor::server {

/// Accounts in the service's SQLite file.
class SqliteAccountStore : public AccountStore
{
public:
    /// `database` must outlive this.
    explicit SqliteAccountStore(SqliteDatabase &database) : m_database(database) {}

    Account add(const Account &account) override;
    [[nodiscard]] std::optional<Account> withEmail(const std::string &email) override;
    [[nodiscard]] std::optional<Account> withToken(const TokenHash &token) override;
    [[nodiscard]] bool addToken(std::int64_t account, const std::string &passwordHash, const TokenHash &token,
                                TimePoint now) override;
    void rename(std::int64_t account, const std::string &name) override;
    void setTier(std::int64_t account, Tier tier, std::optional<TimePoint> expiry) override;
    void setRole(std::int64_t account, Role role) override;
    [[nodiscard]] bool changePassword(std::int64_t account, const std::string &oldHash,
                                      const std::string &newHash, const TokenHash &kept) override;
    [[nodiscard]] std::int64_t recordings(std::int64_t account, TimePoint since) override;
    [[nodiscard]] bool addRecording(std::int64_t account, const LoggedRecording &recording, TimePoint since,
                                    std::optional<std::int64_t> limit) override;

private:
    SqliteDatabase &m_database;
};

} // namespace talvenor::server
