#include "grid/key_values.h"

#include "grid/custom_column_detail.h"
#include "grid/filter_match.h"
#include "grid/row_convert.h"
#include "grid/sort_keys.h"

#include <algorithm>
#include <cmath>

namespace vh::keys {
namespace {

constexpr uint64_t kTopBit = uint64_t{1} << 63;

// "123" or "-45" with at most 15 digits: atoi, atol and "%lf" all read the
// integer itself, exactly.
bool PlainInteger(std::string_view text, int64_t& value) {
  const size_t start = !text.empty() && text[0] == '-' ? 1 : 0;
  const size_t digits = text.size() - start;
  if (digits == 0 || digits > 15)
    return false;
  int64_t v = 0;
  for (size_t i = start; i < text.size(); ++i) {
    const char c = text[i];
    if (c < '0' || c > '9')
      return false;
    v = v * 10 + (c - '0');
  }
  value = start ? -v : v;
  return true;
}

// Two decimals of a cached custom value (itself read back from such a
// text): the cents are exact below 2^40, printed two digits at a time.
size_t FormatCustomNumber(double value, char* buffer) {
  const double scaled = std::fabs(value) * 100;
  if (!(scaled < 1099511627776.0))
    return custom::FormatTwoDecimals(value, buffer);
  static constexpr char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  const uint64_t cents = uint64_t(scaled + 0.5);
  uint64_t whole = cents / 100;
  // Digits from the bit width: log10(2) ~ 1233 / 4096, then one correction.
  static constexpr uint64_t kPowers[] = {
      1,        10,        100,        1000,        10000,        100000,       1000000,
      10000000, 100000000, 1000000000, 10000000000, 100000000000, 1000000000000};
  const int log = (64 - __builtin_clzll(whole | 1)) * 1233 >> 12;
  const size_t wholeDigits = std::max<size_t>(1, size_t(log + 1 - (whole < kPowers[log] ? 1 : 0)));
  // Written from the end, straight into place.
  const size_t length = (std::signbit(value) ? 1 : 0) + wholeDigits + 3;
  buffer[0] = '-';
  char* p = buffer + length;
  std::memcpy(p -= 2, kPairs + 2 * (cents % 100), 2);
  *--p = '.';
  while (whole >= 100) {
    std::memcpy(p -= 2, kPairs + 2 * (whole % 100), 2);
    whole /= 100;
  }
  if (whole >= 10)
    std::memcpy(p - 2, kPairs + 2 * whole, 2);
  else
    p[-1] = char('0' + whole);
  return length;
}

} // namespace

uint64_t NumberKey(int type, std::string_view text, bool& scanAgrees) {
  double scanned = 0;
  if (IsIntegerType(type)) {
    int64_t plain = 0;
    if (PlainInteger(text, plain)) {
      // atoi keeps the low 32 bits of strtol's long.
      const int64_t v =
          type == kCompareInteger ? int64_t(int32_t(uint32_t(uint64_t(plain)))) : plain;
      scanAgrees = v == plain;
      return SignedKey(v);
    }
    const int64_t v = type == kCompareInteger ? int64_t(CAtoi(text)) : CAtol(text);
    scanAgrees = CScanDouble(text, scanned) && scanned == double(v);
    return SignedKey(v);
  }
  double v = 0;
  if (!CParseDouble(text, v)) {
    scanAgrees = false; // atof reads 0, "%lf" nothing
    return DecimalKey(0);
  }
  // strtod and "%lf" part only on a "0x" without hexadecimal digits.
  if (text.find_first_of("xX") == std::string_view::npos)
    scanAgrees = true;
  else
    scanAgrees = CScanDouble(text, scanned) && (scanned == v || (scanned != scanned && v != v));
  return DecimalKey(v);
}

double NumberOfKey(int type, uint64_t key) {
  if (IsIntegerType(type))
    return double(int64_t(key ^ kTopBit));
  const uint64_t bits = (key & kTopBit) ? key & ~kTopBit : ~key;
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

// The keys whose numbers pass a ">"/"<" filter, as ranges of keys: keys
// order like their numbers, so each test is one range. False for long
// columns, whose numbers a double does not always hold exactly.
bool KeyRanges(int type, const FilterPattern& pattern,
               std::vector<std::pair<uint64_t, uint64_t>>& ranges) {
  constexpr double kMin = -2147483648.0, kMax = 2147483647.0;
  for (const FilterPattern::NumberTest& test : pattern.NumberTests()) {
    const double b = test.bound;
    if (b != b)
      continue; // no number compares with NaN
    if (type == kCompareInteger) {
      // An integer v > b exactly when v >= floor(b) + 1; v < b when v < ceil(b).
      if (test.greater) {
        const double t = std::floor(b) + 1;
        if (t > kMax)
          continue;
        ranges.emplace_back(SignedKey(int64_t(std::max(t, kMin))), SignedKey(int64_t(kMax) + 1));
      } else {
        const double t = std::ceil(b);
        if (t <= kMin)
          continue;
        ranges.emplace_back(SignedKey(int64_t(kMin)), SignedKey(int64_t(std::min(t, kMax + 1))));
      }
    } else if (type == kCompareDecimal || type == kCompareDecimalAlt) {
      // Every NaN key is UINT64_MAX, outside both ranges.
      if (test.greater)
        ranges.emplace_back(DecimalKey(b) + 1, UINT64_MAX);
      else
        ranges.emplace_back(0, DecimalKey(b));
    } else {
      return false;
    }
  }
  return true;
}

std::string_view CustomText(uint64_t bits, char* buffer) {
  if (bits == kCustomLeftEmpty)
    return {};
  if (bits == kCustomDividedByZero)
    return kDividedByZeroText;
  return {buffer, FormatCustomNumber(CustomNumber(bits), buffer)};
}

} // namespace vh::keys
