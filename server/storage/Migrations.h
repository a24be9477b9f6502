#pragma once

#include "server/storage/Sqlite.h"

namespace talvenor::server {

/// The number of migrations that this program knows, which is the version of the tables after them.
[[nodiscard]] int newestSchemaVersion();

/// Brings the tables to the newest version, each step whole or not at all. The version stands in SQLite's
/// user_version. Throws sqlite::Error, and std::runtime_error for tables of a newer program, which are left
/// alone. Safe with several processes at once.
void migrate(sqlite::Connection &connection);

} // namespace talvenor::server
