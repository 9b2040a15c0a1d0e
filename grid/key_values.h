// How the key caches read and show values: the order keys of number
// columns, what "%lf" makes of them, and the values kept for custom cells.
// Shared by the engine's cache files only.
#pragma once

#include "grid/col_info.h"
#include "grid/key_cache.h"

#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace vh {

class FilterPattern;

namespace keys {

inline bool IsNumberType(int type) {
  return type == kCompareInteger || type == kCompareDecimal || type == kCompareDecimalAlt ||
         type == kCompareLong;
}

inline bool IsIntegerType(int type) {
  return type == kCompareInteger || type == kCompareLong;
}

// The order key the sort of `type` (a number type) reads from `text`, and
// whether "%lf" reads exactly that key's number from it.
uint64_t NumberKey(int type, std::string_view text, bool& scanAgrees);

// The number a number column's key stands for; -0 comes back as 0 and
// every NaN as one NaN, which no comparison tells apart.
double NumberOfKey(int type, uint64_t key);

// The keys whose numbers pass the ">"/"<" tests of `pattern`, as ranges
// [first, second) of keys. False for long columns, whose numbers a double
// does not always hold exactly.
bool KeyRanges(int type, const FilterPattern& pattern,
               std::vector<std::pair<uint64_t, uint64_t>>& ranges);

// A text of up to 8 bytes without a zero byte as a key: its bytes from
// the most significant end, zeros after, so that keys order as the texts do
// byte-wise (a prefix first) and the first zero ends the text. False,
// `key` untouched, for any other text.
inline bool ShortTextKey(std::string_view text, uint64_t& key) {
  const size_t n = text.size();
  if (n > 8)
    return false;
  if (n == 0) {
    key = 0;
    return true;
  }
  // Byte i at bits 8i, in two overlapping loads that read nothing outside
  // the text (a byte loop costs a branch per byte, on every row).
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  uint64_t word;
  if (n >= 4) {
    uint32_t low, high;
    std::memcpy(&low, p, 4);
    std::memcpy(&high, p + n - 4, 4);
    word = low | uint64_t(high) << (8 * (n - 4));
  } else {
    word = p[0] | uint64_t(p[n / 2]) << (8 * (n / 2)) | uint64_t(p[n - 1]) << (8 * (n - 1));
  }
  // A zero byte among the first n: the classic has-zero-byte test, with
  // the bytes past the text filled.
  constexpr uint64_t kOnes = 0x0101010101010101ull, kHigh = 0x8080808080808080ull;
  const uint64_t filled = n == 8 ? word : word | ~uint64_t{0} << (8 * n);
  if (((filled - kOnes) & ~filled & kHigh) != 0)
    return false;
  key = __builtin_bswap64(word);
  return true;
}

// The text of a ShortTextKey, written into `buffer` (8 characters).
inline std::string_view ShortText(uint64_t key, char* buffer) {
  for (int i = 0; i < 8; ++i)
    buffer[i] = char(key >> (56 - 8 * i));
  return {buffer, key == 0 ? 0 : size_t(8 - __builtin_ctzll(key) / 8)};
}

// Each byte of a ShortTextKey lower-cased as AsciiLower does ('A'-'Z'
// only), all eight at once.
inline uint64_t LowerShortKey(uint64_t key) {
  constexpr uint64_t kOnes = 0x0101010101010101ull, kHigh = 0x8080808080808080ull;
  const uint64_t low7 = key & ~kHigh;
  const uint64_t atLeastA = (low7 + (0x80 - 'A') * kOnes) & kHigh;
  const uint64_t pastZ = (low7 + (0x80 - 'Z' - 1) * kOnes) & kHigh;
  const uint64_t upper = atLeastA & ~pastZ & ~key & kHigh;
  return key | (upper >> 2);
}

inline double CustomNumber(uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

inline bool IsCustomNumber(uint64_t bits) {
  return bits != kCustomLeftEmpty && bits != kCustomDividedByZero;
}

// What atof reads from a custom cell: its value, 0 for the other texts.
inline double CustomSortNumber(uint64_t bits) {
  return IsCustomNumber(bits) ? CustomNumber(bits) : 0.0;
}

// The text a custom cell shows, from its kept bits; `buffer` holds
// custom::kFormatBufferSize characters.
std::string_view CustomText(uint64_t bits, char* buffer);

} // namespace keys
} // namespace vh
