#include "riskd/store.h"

#include <sqlite3.h>

#include "riskd/schema_sql.h"

namespace riskd {

bool OpenStore(const std::string& path, Db* db, std::string* error) {
  if (!db->Open(path, error))
    return false;
  // A file that is not a database fails here rather than on first use.
  const int64_t version = db->QueryInt("PRAGMA user_version", -1);
  if (version < 0) {
    if (error)
      *error = path + ": not a tarn-riskd database (" + db->LastError() + ")";
    return false;
  }
  if (version > kSchemaVersion) {
    if (error)
      *error = path + ": database schema version " + std::to_string(version) +
               " is newer than this tarn-riskd understands (" + std::to_string(kSchemaVersion) +
               "); use a newer tarn-riskd or another --db file";
    return false;
  }
  // WAL gives every answer a snapshot of its own while a transfer or an
  // import writes; without it an open answer would block every writer.
  std::string why;
  Stmt wal = db->Prepare("PRAGMA journal_mode=WAL", &why);
  if (!wal.ok() || wal.Step() != SQLITE_ROW || wal.Text(0) != "wal") {
    if (error)
      *error = path + ": cannot use write-ahead logging (" + db->LastError() + ")";
    return false;
  }
  wal = Stmt();
  if (!db->Exec("PRAGMA synchronous=NORMAL", &why) || !db->Exec("PRAGMA foreign_keys=ON", &why)) {
    if (error)
      *error = path + ": " + why;
    return false;
  }
  if (version == kSchemaVersion)
    return true;
  // Steps for older stores; the schema's IF NOT EXISTS adds what is new.
  if (version < 3 && !db->Exec("DROP INDEX IF EXISTS holding_scrip", &why)) {
    if (error)
      *error = path + ": cannot upgrade the schema: " + why;
    return false;
  }
  if (!db->Exec(kSchemaSql, &why) ||
      !db->Exec("PRAGMA user_version=" + std::to_string(kSchemaVersion), &why)) {
    if (error)
      *error = path + ": cannot create the schema: " + why;
    return false;
  }
  return true;
}

bool StoreIsEmpty(const Db& db) {
  return db.QueryInt("SELECT count(*) FROM scrip", 0) == 0;
}

} // namespace riskd
