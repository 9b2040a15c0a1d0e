// Text-to-number conversions and case folding exactly as the C library does
// them in the "C" locale, whatever locale the process runs in. Cell texts
// are converted millions of times per sort or filter pass, so these take a
// string_view and do not allocate on the common decimal forms.
#pragma once

#include <cstdint>
#include <string_view>

namespace vh {

// atoi: leading white space, optional sign, decimal digits; the long result
// of strtol cut to 32 bits. 0 when no digits follow.
int32_t CAtoi(std::string_view text);

// atol on this platform (64-bit long): saturates at the long limits as
// strtol does. 0 when no digits follow.
int64_t CAtol(std::string_view text);

// strtod: returns true and the value when a prefix of `text` converts
// (decimal, hexadecimal, inf, nan), else false with `value` untouched.
bool CParseDouble(std::string_view text, double& value);

// atof: the value of CParseDouble, or 0 when nothing converts.
double CAtof(std::string_view text);

// sscanf(text, "%lf", &value) == 1. Differs from CParseDouble only for a
// "0x" prefix without hexadecimal digits, which scanf rejects.
bool CScanDouble(std::string_view text, double& value);

inline char AsciiLower(char c) {
  return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

// stricmp(a, b) == 0 in the "C" locale.
bool EqualsNoCase(std::string_view a, std::string_view b);

// strnicmp(text, prefix, prefix.size()) == 0 in the "C" locale.
bool StartsWithNoCase(std::string_view text, std::string_view prefix);

} // namespace vh
