// The one reading of a typed quantity that the mark/unmark dialog and
// tarn-riskd share, so the server checks exactly the value the dialog
// checked: blanks, an optional sign, then leading decimal digits; 0 when
// there are none; clamped to the signed 32-bit range.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string_view>

namespace vh {

inline int32_t LeadingWhole32(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
    ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    negative = text[i++] == '-';
  int64_t v = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    v = std::min<int64_t>(v * 10 + (text[i] - '0'), int64_t{INT32_MAX} + 1);
  return int32_t(std::clamp<int64_t>(negative ? -v : v, INT32_MIN, INT32_MAX));
}

} // namespace vh
