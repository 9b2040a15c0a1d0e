#include "grid/row_convert.h"

#include "common/c_locale.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace vh {
namespace {

bool IsCSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// strtol with saturation, the shape both atoi and atol share.
int64_t StrToLong(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && IsCSpace(text[i]))
    ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    negative = text[i++] == '-';
  uint64_t magnitude = 0;
  const uint64_t limit = negative ? uint64_t(INT64_MAX) + 1 : uint64_t(INT64_MAX);
  bool saturated = false;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const unsigned digit = unsigned(text[i] - '0');
    if (saturated || magnitude > (limit - digit) / 10) {
      saturated = true;
      continue;
    }
    magnitude = magnitude * 10 + digit;
  }
  if (saturated)
    magnitude = limit;
  return negative ? int64_t(0 - magnitude) : int64_t(magnitude);
}

enum class Fast { kDone, kNothing, kSlow };

// The decimal forms through from_chars; hexadecimal, inf/nan and values
// outside the double range go to the C library so that every rounding and
// overflow rule stays the library's own.
Fast ParseFast(std::string_view text, double& value) {
  size_t i = 0;
  while (i < text.size() && IsCSpace(text[i]))
    ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-'))
    negative = text[i++] == '-';
  if (i == text.size())
    return Fast::kNothing;
  const char c = text[i];
  if (c == '0' && i + 1 < text.size() && (text[i + 1] == 'x' || text[i + 1] == 'X'))
    return Fast::kSlow;
  if (c != '.' && (c < '0' || c > '9'))
    return (c == 'i' || c == 'I' || c == 'n' || c == 'N') ? Fast::kSlow : Fast::kNothing;
  double v = 0;
  const auto r = std::from_chars(text.data() + i, text.data() + text.size(), v);
  if (r.ec == std::errc::result_out_of_range)
    return Fast::kSlow;
  if (r.ec != std::errc())
    return Fast::kNothing;
  value = negative ? -v : v;
  return Fast::kDone;
}

// The fast path first; the rest goes to the C library's `slow` conversion on
// a terminated copy, in the "C" locale. `value` is written only on success.
template <typename Slow> bool ParseWith(std::string_view text, double& value, Slow slow) {
  switch (ParseFast(text, value)) {
  case Fast::kDone:
    return true;
  case Fast::kNothing:
    return false;
  case Fast::kSlow:
    break;
  }
  const std::string copy(text);
  return InCLocale([&] {
    double v = 0;
    if (!slow(copy.c_str(), v))
      return false;
    value = v;
    return true;
  });
}

} // namespace

int32_t CAtoi(std::string_view text) {
  return int32_t(uint32_t(uint64_t(StrToLong(text))));
}

int64_t CAtol(std::string_view text) {
  return StrToLong(text);
}

bool CParseDouble(std::string_view text, double& value) {
  return ParseWith(text, value, [](const char* s, double& v) {
    char* end = nullptr;
    v = std::strtod(s, &end);
    return end != s;
  });
}

double CAtof(std::string_view text) {
  double value = 0;
  return CParseDouble(text, value) ? value : 0.0;
}

bool CScanDouble(std::string_view text, double& value) {
  return ParseWith(text, value,
                   [](const char* s, double& v) { return std::sscanf(s, "%lf", &v) == 1; });
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (AsciiLower(a[i]) != AsciiLower(b[i]))
      return false;
  return true;
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsNoCase(text.substr(0, prefix.size()), prefix);
}

} // namespace vh
