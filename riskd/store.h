// The risk store: opening a database file with the current schema.
#pragma once

#include <string>

#include "riskd/sqlite.h"

namespace riskd {

// PRAGMA user_version of the schema this build writes.
// Version 2 added user_password; version 3 replaced the holding_scrip index
// by holding_by_scrip. An older store is brought up to date on opening.
inline constexpr int kSchemaVersion = 4;

// Opens or creates `path` and brings it to the current schema. Fails (false,
// *error says why) when the file cannot be opened, is not a database, or was
// written by a newer tarn-riskd (user_version above kSchemaVersion).
bool OpenStore(const std::string& path, Db* db, std::string* error);

// True when the store holds no scrip yet (a fresh file).
bool StoreIsEmpty(const Db& db);

} // namespace riskd
