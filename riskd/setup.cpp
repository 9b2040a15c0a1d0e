#include "riskd/setup.h"

#include <chrono>
#include <cstdio>

#include "riskd/csv_import.h"
#include "riskd/store.h"

namespace riskd {

void LogToStderr(const std::string& line) {
  std::fprintf(stderr, "tarn-riskd: %s\n", line.c_str());
}

bool SetUpStore(const StoreSetup& setup, const LogFn& log, Db* db, std::string* error) {
  if (!OpenStore(setup.dbPath, db, error))
    return false;
  if (!setup.importDir.empty()) {
    ImportReport report;
    if (!ImportCsvDir(*db, setup.importDir, &report, error))
      return false;
    for (const auto& problem : report.problems)
      log("import: skipped " + problem);
    log("import: " + std::to_string(report.rows) + " rows from " + std::to_string(report.files) +
        " files in " + setup.importDir + ", " + std::to_string(report.problems.size()) +
        " lines skipped");
  }
  if (!StoreIsEmpty(*db))
    return true;
  const auto start = std::chrono::steady_clock::now();
  log("creating sample data: " + std::to_string(setup.sample.holdings) + " holdings, seed " +
      std::to_string(setup.sample.seed));
  if (!GenerateSample(*db, setup.sample, error))
    return false;
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - start)
                      .count();
  log("sample data created in " + std::to_string(ms) + " ms");
  return true;
}

} // namespace riskd
