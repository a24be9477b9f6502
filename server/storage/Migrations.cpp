#include "server/storage/Migrations.h"

#include <array>
#include <stdexcept>

namespace talvenor::server {

namespace {

/// Each entry leads from the version of its index to the next one. Entries are never changed once released.
/// Moments are milliseconds since 1970 in UTC.
const std::array migrations = {
    R"sql(
        CREATE TABLE accounts (
            id            INTEGER PRIMARY KEY AUTOINCREMENT,
            email         TEXT NOT NULL UNIQUE,
            name          TEXT NOT NULL,
            password_hash TEXT NOT NULL,
            role          TEXT NOT NULL CHECK (role IN ('user', 'admin')),
            tier          TEXT NOT NULL CHECK (tier IN ('free', 'basic', 'premium', 'lifetime')),
            expires_at    INTEGER,
            created_at    INTEGER NOT NULL
        ) STRICT;
        CREATE TABLE tokens (
            id         INTEGER PRIMARY KEY AUTOINCREMENT,
            hash       BLOB NOT NULL UNIQUE,
            account_id INTEGER NOT NULL REFERENCES accounts (id) ON DELETE CASCADE,
            created_at INTEGER NOT NULL
        ) STRICT;
        CREATE INDEX tokens_by_account ON tokens (account_id);
        CREATE TABLE recordings (
            id          INTEGER PRIMARY KEY AUTOINCREMENT,
            account_id  INTEGER NOT NULL REFERENCES accounts (id) ON DELETE CASCADE,
            title       TEXT NOT NULL,
            duration    REAL NOT NULL,
            recorded_at INTEGER NOT NULL
        ) STRICT;
        CREATE INDEX recordings_by_account ON recordings (account_id, recorded_at);
    )sql",
};

int schemaVersion(sqlite::Connection &connection)
{
    const auto query = connection.query("PRAGMA user_version");
    query->step();
    return static_cast<int>(query->integer(0));
}

} // namespace

int newestSchemaVersion()
{
    return static_cast<int>(migrations.size());
}

void migrate(sqlite::Connection &connection)
{
    // Asked without the write lock first: nearly every start finds nothing to do.
    if (schemaVersion(connection) == newestSchemaVersion())
        return;
    sqlite::Transaction transaction(connection);
    const int version = schemaVersion(connection);
    if (version > newestSchemaVersion())
        throw std::runtime_error("The database was made by a newer version of talvenor-service.");
    for (int next = version; next < newestSchemaVersion(); ++next) {
        connection.execute(migrations.at(static_cast<std::size_t>(next)));
        connection.execute("PRAGMA user_version = " + std::to_string(next + 1));
    }
    transaction.commit();
}

} // namespace talvenor::server
