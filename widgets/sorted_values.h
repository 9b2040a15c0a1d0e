// The order of the distinct-value pop-up's list.
//
// Collation: alphabetical ignoring the case of the ASCII letters A-Z, ties
// (texts equal but for that case) broken by byte order, so "ABC" comes just
// before "abc" and the order is total and stable across runs. Other bytes,
// UTF-8 included, compare by byte value (for UTF-8, by code point). Digits
// sort as text: "10" before "9", as in any alphabetical list.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vh {

// `values` in that order, each distinct text once, empty texts dropped.
// Sorts on eight-byte keys (a byte-wise LSD radix pass for large ranges),
// refining runs of equal keys by the next eight bytes (a radix sort on
// eight-byte digits), so long shared prefixes cost little.
std::vector<std::string> SortedDistinctValues(std::vector<std::string> values);

// The same order as indexes into `values`, which stay where they are: a
// million texts need not move (nor their memory be touched again in random
// order) to be listed sorted. Of equal texts the one listed is any one.
std::vector<uint32_t> SortedValueOrder(const std::vector<std::string>& values);

// The collation above: negative, zero or positive as `a` sorts before, with
// or after `b`; zero only for equal texts.
int CompareListTexts(const std::string& a, const std::string& b);

} // namespace vh
