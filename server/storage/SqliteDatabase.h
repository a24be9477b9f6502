#pragma once

#include "server/storage/Sqlite.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace talvenor::server {

/// The database file of the service and the connections to it. Callable from any thread.
class SqliteDatabase
{
public:
    /// A connection on loan to one thread; goes back at the end of its scope.
    class Lease
    {
    public:
        Lease(SqliteDatabase &database, std::unique_ptr<sqlite::Connection> connection);
        ~Lease();
        Lease(const Lease &) = delete;
        Lease &operator=(const Lease &) = delete;
        [[nodiscard]] sqlite::Connection &operator*() const { return *m_connection; }
        [[nodiscard]] sqlite::Connection *operator->() const { return m_connection.get(); }

    private:
        SqliteDatabase &m_database;
        std::unique_ptr<sqlite::Connection> m_connection;
    };

    /// Opens talvenor-service.db in `folder`, making both where they are missing (for the owner's eyes
    /// alone), and brings its tables up to date. Throws sqlite::Error, std::filesystem::filesystem_error,
    /// std::runtime_error.
    explicit SqliteDatabase(const std::filesystem::path &folder);

    /// A free connection, or a new one: there are as many as threads that ask at once. Throws sqlite::Error.
    [[nodiscard]] Lease connection();

private:
    [[nodiscard]] std::unique_ptr<sqlite::Connection> open() const;

    std::string m_path;
    std::mutex m_lock;
    std::vector<std::unique_ptr<sqlite::Connection>> m_free; ///< guarded by m_lock
};

} // namespace talvenor::server
