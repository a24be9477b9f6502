#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace talvenor::server::sqlite {

/// What SQLite refused: its extended result code and its message, which holds no values of the statement.
class Error : public std::runtime_error
{
public:
    Error(int code, const std::string &message) : std::runtime_error(message), m_code(code) {}

    /// SQLite's extended result code.
    [[nodiscard]] int code() const { return m_code; }
    /// True if a row with this value of a UNIQUE column is there already.
    [[nodiscard]] bool isUniqueViolation() const;

private:
    int m_code;
};

/// One running statement of a connection. Gives the statement back to its connection when it ends; must end
/// before the connection does, and a connection runs each text once at a time.
class Query
{
public:
    explicit Query(sqlite3_stmt *statement) : m_statement(statement) {}
    ~Query();
    Query(const Query &) = delete;
    Query &operator=(const Query &) = delete;

    void bind(int index, std::int64_t value);
    void bind(int index, double value);
    void bind(int index, std::string_view value);
    void bind(int index, std::span<const std::byte> value);
    void bind(int index, const std::optional<std::int64_t> &value);

    /// Goes to the next row; false after the last one. Throws Error.
    bool step();
    /// Runs a statement that gives no rows, to its end. Throws Error.
    void run();

    [[nodiscard]] std::int64_t integer(int column) const;
    [[nodiscard]] std::optional<std::int64_t> optionalInteger(int column) const;
    [[nodiscard]] std::string text(int column) const;

private:
    sqlite3_stmt *m_statement; ///< the connection's
};

/// One connection to a database file, used by one thread at a time. Statements are prepared once and kept.
class Connection
{
public:
    /// Opens the file, making it where it is missing. Throws Error.
    explicit Connection(const std::string &path);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /// Runs one or more statements without values. Throws Error.
    void execute(const std::string &statements);

    /// A statement with its values in the order of ?1, ?2 ... Texts and blobs must outlive the query.
    template<typename... Values>
    [[nodiscard]] std::unique_ptr<Query> query(const std::string &statement, const Values &...values)
    {
        auto query = std::make_unique<Query>(prepared(statement));
        int index = 0;
        (query->bind(++index, values), ...);
        return query;
    }

    /// Rows that the last INSERT, UPDATE or DELETE touched.
    [[nodiscard]] std::int64_t changes() const;
    [[nodiscard]] std::int64_t lastInsertId() const;

private:
    sqlite3_stmt *prepared(const std::string &statement);

    sqlite3 *m_handle = nullptr;
    std::unordered_map<std::string, sqlite3_stmt *> m_statements; ///< owned, by their text
};

/// A transaction that may write. Undone at the end of its scope unless committed.
class Transaction
{
public:
    explicit Transaction(Connection &connection);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

private:
    Connection &m_connection;
    bool m_open = true;
};

} // namespace talvenor::server::sqlite
