#include "excel/cell_value.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "common/c_locale.h"

namespace vh {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

size_t SkipDigits(std::string_view s, size_t i) {
  while (i < s.size() && IsDigit(s[i]))
    ++i;
  return i;
}

// Length of the valid UTF-8 sequence at `i`, 0 when the bytes there are not
// one (overlong forms, surrogates and values above U+10FFFF included) or
// a NUL byte.
size_t Utf8SequenceLength(std::string_view s, size_t i) {
  const auto b0 = static_cast<uint8_t>(s[i]);
  if (b0 == 0)
    return 0; // a NUL would end the cell's C string early
  if (b0 < 0x80)
    return 1;
  size_t n;
  uint32_t lo = 0x80, hi = 0xBF; // allowed range of the second byte
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    n = 2;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    n = 3;
    if (b0 == 0xE0)
      lo = 0xA0;
    if (b0 == 0xED)
      hi = 0x9F;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    n = 4;
    if (b0 == 0xF0)
      lo = 0x90;
    if (b0 == 0xF4)
      hi = 0x8F;
  } else {
    return 0;
  }
  if (i + n > s.size())
    return 0;
  const auto b1 = static_cast<uint8_t>(s[i + 1]);
  if (b1 < lo || b1 > hi)
    return 0;
  for (size_t k = 2; k < n; ++k) {
    const auto b = static_cast<uint8_t>(s[i + k]);
    if (b < 0x80 || b > 0xBF)
      return 0;
  }
  return n;
}

} // namespace

bool IsNumericColumnType(int columnType) {
  return columnType == 1 || columnType == 2 || columnType == 4 || columnType == 5;
}

bool ParseWholeNumber(std::string_view text, double& value) {
  size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    ++i;
  const size_t intStart = i;
  i = SkipDigits(text, i);
  size_t digits = i - intStart;
  if (i < text.size() && text[i] == '.') {
    const size_t fracStart = ++i;
    i = SkipDigits(text, i);
    digits += i - fracStart;
  }
  if (digits == 0)
    return false;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
      ++i;
    const size_t expStart = i;
    i = SkipDigits(text, i);
    if (i == expStart)
      return false;
  }
  if (i != text.size())
    return false;
  // The checked text is copied so strtod stops at its end, not at whatever
  // follows the view.
  const std::string copy(text);
  char* end = nullptr;
  const double parsed = StrtodC(copy.c_str(), &end);
  if (end != copy.c_str() + copy.size() || !std::isfinite(parsed))
    return false;
  value = parsed;
  return true;
}

std::string CellText(std::string_view text) {
  static constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
  std::string out;
  out.reserve(std::min(text.size(), kExcelMaxCellBytes));
  size_t i = 0;
  while (i < text.size()) {
    const size_t n = Utf8SequenceLength(text, i);
    const std::string_view piece = n ? text.substr(i, n) : kReplacement;
    if (out.size() + piece.size() > kExcelMaxCellBytes)
      break;
    out += piece;
    i += n ? n : 1;
  }
  return out;
}

} // namespace vh
