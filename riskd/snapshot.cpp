#include "riskd/snapshot.h"

#include <sqlite3.h>

namespace riskd {
namespace {

struct EndReadTransaction {
  void operator()(Db* db) const {
    // A read transaction has nothing to lose; closing ends it anyway.
    (void)db->Exec("COMMIT", nullptr);
    delete db;
  }
};

} // namespace

std::shared_ptr<const Db> TakeSnapshot(const std::string& path, std::string* error) {
  auto db = std::make_unique<Db>();
  if (!db->Open(path, error, Db::kReadOnly))
    return nullptr;
  // BEGIN alone takes no snapshot; the first read does, so read at once.
  Stmt first;
  if (db->Exec("BEGIN", error)) {
    first = db->Prepare("SELECT count(*) FROM sqlite_schema", error);
    if (first.ok() && first.Step() == SQLITE_ROW) {
      first = Stmt();
      return std::shared_ptr<const Db>(db.release(), EndReadTransaction());
    }
  }
  if (error && error->empty())
    *error = db->LastError();
  return nullptr;
}

} // namespace riskd
