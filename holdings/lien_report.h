// The lien report request ("om_get_client_reports"), its segment list and
// the decoding of one answer row.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "grid/col_info.h"
#include "kdl/kdl.h"
#include "link/link_request.h"

namespace vh {

struct LienSegment {
  const char* shown; // the combo's text
  const char* code;  // what the request carries
};

// The combo's entries in order; entry 0, "--ALL--", sends no segment field.
inline constexpr std::array<LienSegment, 6> kLienSegments{{
    {"--ALL--", "--ALL--"},
    {"CASH", "CASH"},
    {"Derivatives", "FO"},
    {"Currency", "CUR"},
    {"Commodities", "COM"},
    {"Spot", "SPOT"},
}};
inline constexpr int kAllSegments = 0;

// One report row as received; amounts are converted as the readers convert
// (text that is no number counts 0, a missing amount stays 0).
struct sLienRow {
  std::string clientId; // 54001
  std::string segment;  // 32760
  double lien = 0;      // 41363
  double payin = 0;     // 64287
  double payout = 0;    // 64288
};

// List columns, in order: "Client ID", "Segment", "Lien Amount", "PayIn
// Amount", "PayOut Amount".
std::vector<sTarnColInfo> LienReportColumns();
// The text of `row` in list column `column` (amounts "%.2lf"); empty for an
// unknown column.
std::string LienCellText(const sLienRow& row, int column);

// The request for the source user `userId` and the combo entry `segment`
// (an index of kLienSegments; one outside it counts as "--ALL--"): 54247 the
// user, 63002 the code unless "--ALL--", then 32760 the code ("--ALL--"
// itself for all segments). A failure to add the name composes the status
// " Request Failure", the user "Add source user id Failure", the segment
// " Request Failure" (the request is dropped); a failed send shows and
// composes "om_get_client_reports Request Failure".
CLinkRequest LienReportRequest(std::string_view userId, int segment);

// The first value of each field of one answer record; missing fields leave
// the row's empty text or 0.
sLienRow DecodeLienRow(const KdlMsg* msg);

} // namespace vh
