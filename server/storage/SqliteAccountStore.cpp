#include "server/storage/SqliteAccountStore.h"

#include <stdexcept>

namespace talvenor::server {

namespace {

/// Sessions of one account. Every login opens one and no client closes any, so without a bound they would
/// gather for ever.
constexpr std::int64_t mostSessions = 100;

std::int64_t stored(TimePoint moment)
{
    return moment.time_since_epoch().count();
}

std::optional<std::int64_t> stored(const std::optional<TimePoint> &moment)
{
    if (!moment)
        return std::nullopt;
    return stored(*moment);
}

TimePoint moment(std::int64_t milliseconds)
{
    return TimePoint(std::chrono::milliseconds(milliseconds));
}

const std::string selectAccount =
    "SELECT a.id, a.email, a.name, a.password_hash, a.role, a.tier, a.expires_at, a.created_at "
    "FROM accounts a ";

std::optional<Account> accountOf(sqlite::Query &query)
{
    if (!query.step())
        return std::nullopt;
    const auto role = roleNamed(query.text(4));
    const auto tier = tierNamed(query.text(5));
    if (!role || !tier)
        throw std::runtime_error("an account has an unknown role or tier");
    Account account;
    account.id = query.integer(0);
    account.email = query.text(1);
    account.name = query.text(2);
    account.passwordHash = query.text(3);
    account.role = *role;
    account.tier = *tier;
    if (const auto expiry = query.optionalInteger(6))
        account.expiry = moment(*expiry);
    account.created = moment(query.integer(7));
    return account;
}

std::span<const std::byte> bytes(const TokenHash &token)
{
    return token;
}

} // namespace

Account SqliteAccountStore::add(const Account &account)
{
    const auto connection = m_database.connection();
    try {
        connection
            ->query("INSERT INTO accounts (email, name, password_hash, role, tier, expires_at, created_at) "
                    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)",
                    std::string_view(account.email), std::string_view(account.name),
                    std::string_view(account.passwordHash), name(account.role), name(account.tier),
                    stored(account.expiry), stored(account.created))
            ->run();
    } catch (const sqlite::Error &error) {
        if (error.isUniqueViolation())
            throw AddressTakenError();
        throw;
    }
    Account added = account;
    added.id = connection->lastInsertId();
    return added;
}

std::optional<Account> SqliteAccountStore::withEmail(const std::string &email)
{
    const auto connection = m_database.connection();
    return accountOf(*connection->query(selectAccount + "WHERE a.email = ?1", std::string_view(email)));
}

std::optional<Account> SqliteAccountStore::withToken(const TokenHash &token)
{
    const auto connection = m_database.connection();
    return accountOf(*connection->query(
        selectAccount + "JOIN tokens t ON t.account_id = a.id WHERE t.hash = ?1", bytes(token)));
}

bool SqliteAccountStore::addToken(std::int64_t account, const std::string &passwordHash,
                                  const TokenHash &token, TimePoint now)
{
    const auto connection = m_database.connection();
    sqlite::Transaction transaction(*connection);
    connection
        ->query("INSERT INTO tokens (hash, account_id, created_at) "
                "SELECT ?1, id, ?2 FROM accounts WHERE id = ?3 AND password_hash = ?4",
                bytes(token), stored(now), account, std::string_view(passwordHash))
        ->run();
    if (connection->changes() != 1)
        return false;
    connection
        ->query("DELETE FROM tokens WHERE account_id = ?1 AND id NOT IN "
                "(SELECT id FROM tokens WHERE account_id = ?1 ORDER BY id DESC LIMIT ?2)",
                account, mostSessions)
        ->run();
    transaction.commit();
    return true;
}

void SqliteAccountStore::rename(std::int64_t account, const std::string &name)
{
    const auto connection = m_database.connection();
    connection->query("UPDATE accounts SET name = ?2 WHERE id = ?1", account, std::string_view(name))->run();
}

void SqliteAccountStore::setTier(std::int64_t account, Tier tier, std::optional<TimePoint> expiry)
{
    const auto connection = m_database.connection();
    connection
        ->query("UPDATE accounts SET tier = ?2, expires_at = ?3 WHERE id = ?1", account, name(tier),
                stored(expiry))
        ->run();
}

void SqliteAccountStore::setRole(std::int64_t account, Role role)
{
    const auto connection = m_database.connection();
    connection->query("UPDATE accounts SET role = ?2 WHERE id = ?1", account, name(role))->run();
}

bool SqliteAccountStore::changePassword(std::int64_t account, const std::string &oldHash,
                                        const std::string &newHash, const TokenHash &kept)
{
    const auto connection = m_database.connection();
    sqlite::Transaction transaction(*connection);
    connection
        ->query("UPDATE accounts SET password_hash = ?3 WHERE id = ?1 AND password_hash = ?2", account,
                std::string_view(oldHash), std::string_view(newHash))
        ->run();
    if (connection->changes() != 1)
        return false;
    connection->query("DELETE FROM tokens WHERE account_id = ?1 AND hash <> ?2", account, bytes(kept))->run();
    transaction.commit();
    return true;
}

std::int64_t SqliteAccountStore::recordings(std::int64_t account, TimePoint since)
{
    const auto connection = m_database.connection();
    const auto query =
        connection->query("SELECT count(*) FROM recordings WHERE account_id = ?1 AND recorded_at >= ?2",
                          account, stored(since));
    query->step();
    return query->integer(0);
}

bool SqliteAccountStore::addRecording(std::int64_t account, const LoggedRecording &recording, TimePoint since,
                                      std::optional<std::int64_t> limit)
{
    const auto connection = m_database.connection();
    // One statement is one transaction: nobody can add a row between the count and the insertion.
    connection
        ->query("INSERT INTO recordings (account_id, title, duration, recorded_at) "
                "SELECT ?1, ?2, ?3, ?4 WHERE ?6 IS NULL OR "
                "(SELECT count(*) FROM recordings WHERE account_id = ?1 AND recorded_at >= ?5) < ?6",
                account, std::string_view(recording.title), recording.duration, stored(recording.recorded),
                stored(since), limit)
        ->run();
    return connection->changes() == 1;
}

} // namespace talvenor::server
