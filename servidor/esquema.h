#pragma once

#include <sqlite3.h>

namespace servidor {

// Creates the schema of a new database and migrates an older one to the current version
// (PRAGMA user_version). Also turns on WAL and foreign keys for the connection.
void prepararEsquema(sqlite3 *db);

} // namespace servidor
