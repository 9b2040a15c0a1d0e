#include "riskd/summary.h"

#include <sqlite3.h>

namespace riskd {
namespace {

bool AppendRows(const Db& db, const char* sql, const char* label, std::string* out) {
  Stmt s = db.Prepare(sql, nullptr);
  if (!s.ok())
    return false;
  int rc;
  while ((rc = s.Step()) == SQLITE_ROW) {
    out->append(label).append(" ").append(s.Text(0)).append(" ");
    out->append(std::to_string(s.Int(1))).append("\n");
  }
  return rc == SQLITE_DONE;
}

} // namespace

std::string Summary(const Db& db) {
  static const char* const kTables[] = {"scrip", "client", "user", "holding", "lien", "ledger"};
  static const char* const kLabels[] = {"scrips", "clients", "users", "holdings", "lien", "ledger"};
  std::string out;
  for (size_t i = 0; i < std::size(kTables); ++i) {
    const int64_t n = db.QueryInt(std::string("SELECT count(*) FROM ") + kTables[i], -1);
    if (n < 0)
      return {};
    out.append(kLabels[i]).append(" ").append(std::to_string(n)).append("\n");
  }
  const bool ok = AppendRows(db,
                             "SELECT 'NSE:' || s.nse_symbol || '-' || s.nse_series, h.n FROM"
                             " (SELECT scrip_id, count(*) AS n FROM holding GROUP BY scrip_id) h"
                             " JOIN scrip s ON s.id = h.scrip_id WHERE s.nse_symbol IS NOT NULL"
                             " ORDER BY h.n DESC, s.nse_symbol, s.nse_series LIMIT 10",
                             "scrip", &out) &&
                  AppendRows(db,
                             "SELECT client_id, count(*) AS n FROM holding GROUP BY client_id"
                             " ORDER BY n DESC, client_id LIMIT 10",
                             "client", &out);
  return ok ? out : std::string();
}

} // namespace riskd
