// A short text picture of a store, to choose a first query from.
#pragma once

#include <string>

#include "riskd/sqlite.h"

namespace riskd {

// Lines, each ending in '\n':
//   scrips N / clients N / users N / holdings N / lien N / ledger N
//   scrip NSE:SYMBOL-SERIES N   the ten NSE scrips with most holdings rows
//   client ID N                 the ten clients with most holdings rows
// Ties are broken by name so the text is stable. Empty on a query failure.
std::string Summary(const Db& db);

} // namespace riskd
