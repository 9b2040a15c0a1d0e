// The top-N holdings request ("rs_display_topten_holdings") and the decoding
// of its answer into the rows the top-N list shows.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "grid/col_info.h"
#include "kdl/kdl.h"
#include "link/link_request.h"

namespace vh {

// Valuation methods as the request codes them; 2 is never sent.
enum TopNMethod : int {
  kTopNByLtp = 1,        // "Top N based on LTP"
  kTopNByPercTop = 3,    // "Top 10 based on Perc Change"
  kBottomNByPercChg = 4, // "Bottom 10 based on Perc Change"
};

// One row of the list; every field is the text shown.
struct sTopNRow {
  std::string exchangeSegment; // 10101, first value
  std::string entityId;        // 54001, or "NA"
  std::string tradingSymbol;   // 20008
  std::string holdingsValue;   // 41231 scaled, "%0.2lf"
};

// List columns, in order: "Entity ID", "Exhg-Seg", "Trading Symbol",
// "Holdings Value".
std::vector<sTarnColInfo> TopNColumns();
// The text of `row` in list column `column`; empty for an unknown column.
const std::string& TopNCellText(const sTopNRow& row, int column);

// The request: 10101 "NSE" or "BSE", then 41232 the method as "%d". A
// failure to add the name composes the status " Request Failure", a later
// field composes it too (never shown: the request is dropped silently); a
// failed send shows and composes "rs_display_topten_holdings Request
// Failure".
CLinkRequest TopNRequest(bool nse, TopNMethod method);

// True when the entity id is one the module knows (the view's client ids).
using EntityLookup = std::function<bool(std::string_view entityId)>;

// The rows of one answer record, in the answer's order. Row i takes the
// i-th 20008 and 41231 and the i-th 54001 when there is one: its value is
// divided by 100; a row past the last 54001 shows "NA" and its value is
// multiplied by 100 (both scalings are kept as the back-end expects them).
// Empty when the answer has no 20008, or when its first 54001 is missing or
// unknown to `known` (an empty `known` accepts every answer).
std::vector<sTopNRow> DecodeTopNAnswer(const KdlMsg* msg, const EntityLookup& known);

} // namespace vh
