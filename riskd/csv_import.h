// Loading a desk's end-of-day CSV files into the store (columns: docs/riskd.md).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "riskd/sqlite.h"

namespace riskd {

struct ImportReport {
  int64_t rows = 0;                  // rows written, all files together
  int files = 0;                     // known files found and read
  std::vector<std::string> problems; // "holdings.csv:17: unknown ISIN INE0000A0101"
};

// Reads the known files of `dir` (scrips.csv, clients.csv, users.csv,
// user_clients.csv, holdings.csv, lien.csv, in that order; missing ones are
// skipped) in one transaction. A bad line is reported in report->problems
// and skipped. Returns false, with *error set and the store unchanged, when
// no known file is present, a file has the wrong header or cannot be read,
// or the database fails.
bool ImportCsvDir(Db& db, const std::string& dir, ImportReport* report, std::string* error);

} // namespace riskd
