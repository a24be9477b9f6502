#include "server/storage/SqliteDatabase.h"

#include "server/storage/Migrations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace talvenor::server {

SqliteDatabase::Lease::Lease(SqliteDatabase &database, std::unique_ptr<sqlite::Connection> connection)
    : m_database(database), m_connection(std::move(connection))
{
}

SqliteDatabase::Lease::~Lease()
{
    const std::lock_guard guard(m_database.m_lock);
    m_database.m_free.push_back(std::move(m_connection));
}

SqliteDatabase::SqliteDatabase(const std::filesystem::path &folder)
    : m_path((folder / "talvenor-service.db").string())
{
    if (std::filesystem::create_directories(folder))
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    // SQLite gives its side files the mode of the database, so the mode is settled before it writes any.
    const int file = ::open(m_path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file >= 0)
        ::close(file);
    auto first = open();
    migrate(*first);
    m_free.push_back(std::move(first));
}

SqliteDatabase::Lease SqliteDatabase::connection()
{
    std::unique_ptr<sqlite::Connection> connection;
    {
        const std::lock_guard guard(m_lock);
        if (!m_free.empty()) {
            connection = std::move(m_free.back());
            m_free.pop_back();
        }
    }
    if (!connection)
        connection = open();
    return {*this, std::move(connection)};
}

std::unique_ptr<sqlite::Connection> SqliteDatabase::open() const
{
    auto connection = std::make_unique<sqlite::Connection>(m_path);
    // With the write-ahead log readers do not wait for the writer. FULL syncs the log at each commit, so an
    // acknowledged write survives a loss of power and not only the end of the process.
    connection->execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;");
    return connection;
}

} // namespace talvenor::server
