#include "server/storage/Sqlite.h"

#include <sqlite3.h>

namespace talvenor::server::sqlite {

namespace {

/// How long a statement waits for another writer, in milliseconds. Writers hold the lock for one short
/// transaction each, so a longer wait means that something is stuck.
constexpr int busyTimeout = 10'000;

[[noreturn]] void fail(sqlite3 *handle)
{
    throw Error(sqlite3_extended_errcode(handle), sqlite3_errmsg(handle));
}

void check(sqlite3_stmt *statement, int result)
{
    if (result != SQLITE_OK)
        fail(sqlite3_db_handle(statement));
}

} // namespace

bool Error::isUniqueViolation() const
{
    return m_code == SQLITE_CONSTRAINT_UNIQUE;
}

Query::~Query()
{
    // The result repeats the error of the last step, which was thrown there.
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
}

void Query::bind(int index, std::int64_t value)
{
    check(m_statement, sqlite3_bind_int64(m_statement, index, value));
}

void Query::bind(int index, double value)
{
    check(m_statement, sqlite3_bind_double(m_statement, index, value));
}

void Query::bind(int index, std::string_view value)
{
    // A view without data would be bound as NULL.
    const char *const data = value.data() == nullptr ? "" : value.data();
    check(m_statement,
          sqlite3_bind_text64(m_statement, index, data, value.size(), SQLITE_STATIC, SQLITE_UTF8));
}

void Query::bind(int index, std::span<const std::byte> value)
{
    check(m_statement, sqlite3_bind_blob64(m_statement, index, value.data(), value.size(), SQLITE_STATIC));
}

void Query::bind(int index, const std::optional<std::int64_t> &value)
{
    check(m_statement,
          value ? sqlite3_bind_int64(m_statement, index, *value) : sqlite3_bind_null(m_statement, index));
}

bool Query::step()
{
    const int result = sqlite3_step(m_statement);
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        fail(sqlite3_db_handle(m_statement));
    return false;
}

void Query::run()
{
    while (step()) {
    }
}

std::int64_t Query::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::optional<std::int64_t> Query::optionalInteger(int column) const
{
    if (sqlite3_column_type(m_statement, column) == SQLITE_NULL)
        return std::nullopt;
    return integer(column);
}

std::string Query::text(int column) const
{
    const void *const data = sqlite3_column_text(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    if (data == nullptr)
        return {};
    return {static_cast<const char *>(data), static_cast<std::size_t>(size)};
}

Connection::Connection(const std::string &path)
{
    const int result = sqlite3_open_v2(
        path.c_str(), &m_handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK) {
        const Error error(result, path + ": " + sqlite3_errstr(result));
        sqlite3_close_v2(m_handle);
        throw error;
    }
    sqlite3_extended_result_codes(m_handle, 1);
    sqlite3_busy_timeout(m_handle, busyTimeout);
}

Connection::~Connection()
{
    for (const auto &[text, statement] : m_statements)
        sqlite3_finalize(statement);
    sqlite3_close_v2(m_handle);
}

void Connection::execute(const std::string &statements)
{
    if (sqlite3_exec(m_handle, statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail(m_handle);
}

std::int64_t Connection::changes() const
{
    return sqlite3_changes64(m_handle);
}

std::int64_t Connection::lastInsertId() const
{
    return sqlite3_last_insert_rowid(m_handle);
}

sqlite3_stmt *Connection::prepared(const std::string &statement)
{
    const auto known = m_statements.find(statement);
    if (known != m_statements.end())
        return known->second;
    sqlite3_stmt *handle = nullptr;
    if (sqlite3_prepare_v3(m_handle, statement.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &handle, nullptr) !=
        SQLITE_OK)
        fail(m_handle);
    m_statements.emplace(statement, handle);
    return handle;
}

Transaction::Transaction(Connection &connection) : m_connection(connection)
{
    // A transaction that begins as a reader could fail when it comes to write; this one waits at its start.
    m_connection.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!m_open)
        return;
    try {
        m_connection.execute("ROLLBACK");
    } catch (const Error &) {
        // SQLite has already undone it, which is what was wanted.
    }
}

void Transaction::commit()
{
    m_connection.execute("COMMIT");
    m_open = false;
}

} // namespace talvenor::server::sqlite
