// One grid column's description, shared by the row engine, the custom column
// editor and the column profiles.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace vh {

// Comparison types used when a column is sorted.
enum ColumnCompare : int32_t {
  kCompareInteger = 1,
  kCompareDecimal = 2,
  kCompareText = 3,
  kCompareLong = 4,
  kCompareDecimalAlt = 5,
  kCompareDateTime = 6,
};

// Drawing formats (anything else is centred).
enum ColumnFormat : int32_t {
  kFormatLeft = 0,
  kFormatRight = 1,
  kFormatImage = 2048,
};

struct sTarnColInfo {
  // Fixed 64-byte name, NUL-terminated: profiles and header lookups compare
  // it as a C string, so a longer name is cut rather than rejected.
  char szName[64] = {};
  int32_t nWidth = 0;
  int32_t nFormat = kFormatLeft;
  int32_t nType = kCompareText;
  // A custom column keeps its stored expression here (leading space, column
  // references as quoted numbers) and what the user typed in the second.
  std::string strExpression;
  std::string strDisplayExpression;

  void SetName(std::string_view name) {
    const size_t n = std::min(name.size(), sizeof(szName) - 1);
    std::copy_n(name.data(), n, szName);
    std::fill(szName + n, szName + sizeof(szName), '\0');
  }
  std::string_view Name() const { return szName; }
};

} // namespace vh
