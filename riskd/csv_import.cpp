#include "riskd/csv_import.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "riskd/csv.h"
#include "riskd/limits.h"

namespace riskd {
namespace {

using Fields = std::vector<std::string>;

constexpr int64_t kMaxUserType = 255;
// Binds one row's fields to `s`; returns an empty text, or why the row is bad.
using Binder = std::function<std::string(const Fields&, Stmt& s)>;

struct CsvTable {
  const char* name;
  const char* header;
  const char* sql; // one or more statements, all bound alike
  Binder bind;
  const char* noRow; // why a row that changed nothing is bad, or nullptr
};

// A whole number from 0 to `max`.
std::string BindWhole(Stmt& s, int index, const std::string& text, const char* what, int64_t max) {
  const auto v = ParseWhole(text);
  if (!v || *v < 0)
    return std::string("bad ") + what + " '" + text + "'";
  if (*v > max)
    return std::string(what) + " '" + text + "' exceeds " + std::to_string(max);
  s.Bind(index, *v);
  return {};
}

// An amount in hundredths, at most `max` either way (from 0 when
// `negativeAllowed` is false).
std::string BindAmount(Stmt& s, int index, const std::string& text, const char* what, int64_t max,
                       bool negativeAllowed) {
  const auto v = ParseHundredths(text);
  if (!v)
    return std::string("bad ") + what + " '" + text + "'";
  if (*v < 0 && !negativeAllowed)
    return std::string(what) + " '" + text + "' is negative";
  if (*v > max || *v < -max)
    return std::string(what) + " '" + text + "' exceeds " + FormatHundredths(max);
  s.Bind(index, *v);
  return {};
}

void BindOptional(Stmt& s, int index, const std::string& text) {
  if (text.empty())
    s.BindNull(index);
  else
    s.Bind(index, text);
}

std::string BindScrip(const Fields& f, Stmt& s) {
  if (f[0].size() != 12)
    return "ISIN '" + f[0] + "' is not 12 characters";
  if (f[1].empty())
    return "empty name";
  const bool nse = !f[4].empty() || !f[5].empty() || !f[6].empty();
  const bool bse = !f[7].empty() || !f[8].empty() || !f[9].empty();
  if (!nse && !bse)
    return "neither an NSE nor a BSE leg";
  if (nse && (f[4].empty() || f[5].empty() || f[6].empty()))
    return "NSE leg needs symbol, series and token";
  if (bse && (f[7].empty() || f[8].empty()))
    return "BSE leg needs code and symbol";
  s.Bind(1, f[0]).Bind(2, f[1]);
  std::string why = BindAmount(s, 3, f[2], "close", kMaxPricePaise, false);
  if (why.empty())
    why = BindWhole(s, 4, f[3], "lot_size", kMaxQuantity);
  for (int i = 4; i < 10; ++i)
    BindOptional(s, i + 1, f[static_cast<size_t>(i)]);
  return why;
}

std::string BindHolding(const Fields& f, Stmt& s) {
  static const char* const kQty[] = {"holdings_qty",
                                     "holdings_update_qty",
                                     "used_qty",
                                     "collateral_qty",
                                     "collateral_update_qty",
                                     "withheld_holding_qty",
                                     "withheld_collateral_qty",
                                     "t1_qty",
                                     "t1_collateral_qty"};
  if (f[2].empty())
    return "empty product";
  s.Bind(1, f[0]).Bind(2, f[1]).Bind(3, f[2]);
  for (int i = 0; i < 9; ++i)
    if (auto why = BindWhole(s, 4 + i, f[static_cast<size_t>(3 + i)], kQty[i], kMaxQuantity);
        !why.empty())
      return why;
  const auto haircut = ParseHundredths(f[12]);
  if (!haircut)
    return "bad haircut '" + f[12] + "'";
  if (*haircut < 0 || *haircut > kMaxHaircutBp)
    return "haircut '" + f[12] + "' is not between 0 and 100";
  s.Bind(13, *haircut);
  static const char* const kTypes[] = {"CL", "LT", "WC"};
  if (f[13].empty()) {
    s.BindNull(14);
    return {};
  }
  for (int64_t t = 0; t < 3; ++t)
    if (f[13] == kTypes[t]) {
      s.Bind(14, t);
      return {};
    }
  return "bad collateral_type '" + f[13] + "' (CL, LT, WC or empty)";
}

std::string BindLien(const Fields& f, Stmt& s) {
  static const char* const kSegments[] = {"CASH", "FO", "CUR", "COM", "SPOT"};
  if (std::find(std::begin(kSegments), std::end(kSegments), f[1]) == std::end(kSegments))
    return "bad segment '" + f[1] + "'";
  s.Bind(1, f[0]).Bind(2, f[1]);
  for (int i = 0; i < 3; ++i)
    if (auto why =
            BindAmount(s, 3 + i, f[static_cast<size_t>(2 + i)], "amount", kMaxAmountPaise, true);
        !why.empty())
      return why;
  return {};
}

std::string BindUser(const Fields& f, Stmt& s) {
  if (f[0].empty())
    return "empty user_id";
  if (f[3] != "0" && f[3] != "1")
    return "bad admin '" + f[3] + "' (0 or 1)";
  s.Bind(1, f[0]).Bind(3, f[2]).Bind(4, int64_t{f[3] == "1"}).Bind(5, f[4]);
  return BindWhole(s, 2, f[1], "type", kMaxUserType);
}

std::string BindPair(const Fields& f, Stmt& s) {
  if (f[0].empty())
    return "empty first column";
  s.Bind(1, f[0]).Bind(2, f[1]);
  return {};
}

const CsvTable kFiles[] = {
    {"scrips.csv",
     "isin,name,close,lot_size,nse_symbol,nse_series,nse_token,bse_code,bse_symbol,"
     "bse_group",
     "INSERT INTO scrip(isin,name,close_paise,lot_size,nse_symbol,nse_series,nse_token,bse_code,"
     "bse_symbol,bse_group) VALUES(?,?,?,?,?,?,?,?,?,?) ON CONFLICT(isin) DO UPDATE SET"
     " name=excluded.name, close_paise=excluded.close_paise, lot_size=excluded.lot_size,"
     " nse_symbol=excluded.nse_symbol, nse_series=excluded.nse_series,"
     " nse_token=excluded.nse_token, bse_code=excluded.bse_code,"
     " bse_symbol=excluded.bse_symbol, bse_group=excluded.bse_group",
     BindScrip, nullptr},
    {"clients.csv", "client_id,name", "INSERT OR REPLACE INTO client(id,name) VALUES(?,?)",
     BindPair, nullptr},
    // The rights column holds right names separated by ';'.
    {"users.csv", "user_id,type,peer,admin,rights",
     "INSERT OR REPLACE INTO user(id,type,peer,admin) VALUES(?1,?2,?3,?4);"
     "DELETE FROM user_right WHERE user_id=?1;"
     "INSERT INTO user_right WITH RECURSIVE r(n,rest) AS (SELECT '',?5||';' UNION ALL"
     " SELECT substr(rest,1,instr(rest,';')-1), substr(rest,instr(rest,';')+1) FROM r"
     " WHERE rest<>'') SELECT DISTINCT ?1,n FROM r WHERE n<>''",
     BindUser, nullptr},
    {"user_clients.csv", "user_id,client_id",
     "INSERT OR IGNORE INTO user_client(user_id,client_id) VALUES(?,?)", BindPair, nullptr},
    {"holdings.csv",
     "client_id,isin,product,holdings_qty,holdings_update_qty,used_qty,"
     "collateral_qty,collateral_update_qty,withheld_holding_qty,"
     "withheld_collateral_qty,t1_qty,t1_collateral_qty,haircut,collateral_type",
     "INSERT OR REPLACE INTO holding SELECT ?1,id,?3,?4,?5,?6,?7,?8,?9,?10,?11,?12,?13,?14"
     " FROM scrip WHERE isin=?2",
     BindHolding, "unknown ISIN"},
    {"lien.csv", "client_id,segment,lien_amount,payin_amount,payout_amount",
     "INSERT OR REPLACE INTO lien VALUES(?,?,?,?,?)", BindLien, nullptr},
};

size_t CountColumns(const char* header) {
  return static_cast<size_t>(std::count(header, header + std::strlen(header), ',')) + 1;
}

std::vector<Stmt> PrepareAll(Db& db, const char* sql, std::string* error) {
  std::vector<Stmt> out;
  while (*sql) {
    sqlite3_stmt* raw = nullptr;
    const char* tail = nullptr;
    if (sqlite3_prepare_v2(db.raw(), sql, -1, &raw, &tail) != SQLITE_OK) {
      *error = db.LastError();
      return {};
    }
    if (raw) {
      out.emplace_back(raw);
      out.back().SkipParametersPastTheLast();
    }
    sql = tail;
  }
  return out;
}

// Empty when the row went in; otherwise why it is bad.
std::string RunRow(Db& db, const CsvTable& table, std::vector<Stmt>& stmts, const Fields& f) {
  for (Stmt& s : stmts) {
    if (std::string why = table.bind(f, s); !why.empty()) {
      s.Reset();
      return why;
    }
    if (!s.Run()) {
      const std::string why = db.LastError();
      if ((sqlite3_extended_errcode(db.raw()) & 0xff) != SQLITE_CONSTRAINT)
        return "!" + why; // the database failed, not the line
      return why.find("FOREIGN KEY") != std::string::npos ? "unknown client or user id" : why;
    }
  }
  if (table.noRow && db.Changes() == 0)
    return std::string(table.noRow) + " " + f[1];
  return {};
}

bool ImportFile(Db& db, const CsvTable& table, const std::filesystem::path& path,
                ImportReport* report, std::string* error) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    *error = path.string() + ": cannot open";
    return false;
  }
  std::string line;
  std::getline(in, line);
  if (!line.empty() && line.back() == '\r')
    line.pop_back();
  if (line != table.header) {
    *error = std::string(table.name) + ":1: header must be '" + table.header + "'";
    return false;
  }
  const size_t columns = CountColumns(table.header);
  std::vector<Stmt> stmts = PrepareAll(db, table.sql, error);
  if (stmts.empty())
    return false;
  for (int64_t number = 2; std::getline(in, line); ++number) {
    if (line.empty() || line == "\r")
      continue;
    const auto where = std::string(table.name) + ":" + std::to_string(number) + ": ";
    const auto fields = SplitCsvLine(line);
    std::string why;
    if (!fields)
      why = "unbalanced quotes";
    else if (fields->size() != columns)
      why = std::to_string(fields->size()) + " columns, expected " + std::to_string(columns);
    else
      why = RunRow(db, table, stmts, *fields);
    if (why.empty()) {
      ++report->rows;
    } else if (why.front() == '!') {
      *error = where + why.substr(1);
      return false;
    } else {
      report->problems.push_back(where + why);
    }
  }
  if (in.bad()) {
    *error = path.string() + ": read error";
    return false;
  }
  return true;
}

} // namespace

bool ImportCsvDir(Db& db, const std::string& dir, ImportReport* report, std::string* error) {
  *report = ImportReport();
  Transaction tx(db);
  if (!tx.ok()) {
    *error = "cannot start a transaction: " + db.LastError();
    return false;
  }
  for (const CsvTable& table : kFiles) {
    const std::filesystem::path path = std::filesystem::path(dir) / table.name;
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec))
      continue;
    ++report->files;
    if (!ImportFile(db, table, path, report, error))
      return false;
  }
  if (report->files == 0) {
    *error = dir + ": no known CSV file (scrips.csv, clients.csv, users.csv, user_clients.csv,"
                   " holdings.csv, lien.csv)";
    return false;
  }
  return tx.Commit(error);
}

} // namespace riskd
