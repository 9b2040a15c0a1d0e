// The date-or-time comparison of sort type 6. Unlike the other types it
// compares a with b, so the first click (direction -1) puts the latest
// first; texts of different lengths fall back to a reversed byte-wise order
// and so still sort ascending on the first click. Kept as the users know it.
//
//   "dd/mm/yyyy[rest]" or "dd-mm-yyyy[rest]"  year, month, day, then rest as time
//   "hh:mm:ss [AM|PM]"                         AM before PM, then the time
//   "ddMonyyyy"                                day 0-1, month name 2-4, year 5-8
#pragma once

#include <string_view>

namespace vh {

// Negative when `a` goes before `b`, positive after, 0 equal; `direction`
// is the sort direction (+1 or -1).
int CompareDateTime(std::string_view a, std::string_view b, int direction);

} // namespace vh
