// The envelope every request and response carries, and the result codes of
// the link's readers and status check.
#pragma once

#include <cstdint>

#include "kdl/tags.h" // the field tags

namespace vh {

// Response status: a data record; every other status ends the stream.
inline constexpr int kStatusRecord = 5;
// The status given to a stream that ended without a usable code.
inline constexpr int kStatusEnded = 1;

// Reader error kinds written by the typed readers on failure.
inline constexpr int32_t kReaderMissing = 7; // the library reported no such field or index
inline constexpr int32_t kReaderFailed = 3;  // any other library failure

// Exchange indexes handed to the owner.
inline constexpr int kExchangeNse = 0;
inline constexpr int kExchangeBse = 1;
inline constexpr int kExchangeCse = 2;

} // namespace vh
