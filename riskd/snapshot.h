// What a streamed answer reads from: a read-only connection to the store
// inside one read transaction. Every statement prepared on it sees the store
// as it was when the snapshot was taken, whatever the writer's connection
// commits meanwhile (write-ahead logging keeps both going).
#pragma once

#include <memory>
#include <string>

#include "riskd/sqlite.h"

namespace riskd {

// Opens `path` read-only and starts a read transaction on it; the
// transaction ends when the last owner lets go. nullptr with *error when
// the store cannot be opened or read.
std::shared_ptr<const Db> TakeSnapshot(const std::string& path, std::string* error);

} // namespace riskd
