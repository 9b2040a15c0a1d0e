// A sample store in which scrip 1 is held by `clients` clients, each in two
// products: the largest holdings answer a risk user waits for, shared by the
// back-end's bench and the view's click-to-last-row bench.
#pragma once

#include <cstdint>
#include <string>

#include "riskd/setup.h"

namespace riskd::bench {

// Creates the store at `dbPath` (replacing any file there), leaves it open in
// `db` and sets `setup` to what a server over it is started with. False, with
// `error` set, when the store cannot be made.
[[nodiscard]] bool MakeWidelyHeldStore(const std::string& dbPath, int64_t clients,
                                       StoreSetup* setup, Db* db, std::string* error);

} // namespace riskd::bench
