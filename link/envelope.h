// The envelope every request and response carries, and the result codes of
// the link's readers and status check.
#pragma once

#include <cstdint>

namespace vh {

// Field tags of the envelope.
inline constexpr uint32_t kTagRequestName = 0;      // requests: first field, the request name
inline constexpr uint32_t kTagUserId = 31003;       // requests: the requesting user id
inline constexpr uint32_t kTagAnsweredName = 32767; // responses: the request answered
inline constexpr uint32_t kTagStatus = 32766;       // responses: absent on a data record
inline constexpr uint32_t kTagSubKind = 32760;      // responses: "NSE", "BSE_LTP", ...
inline constexpr uint32_t kTagPeerValue = 64056;    // user-peer answer, holdings request

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
