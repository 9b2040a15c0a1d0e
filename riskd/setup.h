// Getting a store ready to serve: open it, import, or fill it on first start.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "riskd/sample_data.h"
#include "riskd/sqlite.h"

namespace riskd {

using LogFn = std::function<void(const std::string&)>;

// Writes "tarn-riskd: <line>" to stderr.
void LogToStderr(const std::string& line);

struct StoreSetup {
  std::string dbPath;
  std::string importDir; // CSV files to load, or empty
  SampleOptions sample;  // used only when the store has no scrip after the import
};

// Opens the store, imports `importDir` when given (bad lines are logged and
// skipped) and generates the sample data when the store is still empty.
// False with *error when the store cannot be opened or the import or the
// generation fails; the store is then unchanged by that step.
bool SetUpStore(const StoreSetup& setup, const LogFn& log, Db* db, std::string* error);

} // namespace riskd
