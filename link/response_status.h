// The status check every response handler runs before it looks at a record.
#pragma once

#include <cstdint>
#include <string_view>

#include "kdl/kdl.h"

namespace vh {

// Returns kStatusRecord (5) when `msg` has no status field: a data record.
// Otherwise the stream has ended and the result is its status code, except:
// - a status field without a readable value: *kind is set as the readers set
//   it, "Lien Report Download Completed." is shown when `requestName` is
//   "om_get_client_reports" (that stream ends this way), and the result is 1;
// - a status code of 0: "Fatal error.Please contact administrator." is shown
//   and the result is 1.
// `flag` is always 1 and has no effect.
int CheckResponseStatus(const KdlMsg* msg, std::string_view requestName, int32_t* kind,
                        int flag = 1);

} // namespace vh
