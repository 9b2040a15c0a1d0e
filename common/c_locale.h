// Conversions that must read "." as the decimal point whatever LC_NUMERIC
// the host process has chosen: numbers travel and are shown as C-locale text.
#pragma once

#include <locale.h>

namespace vh {

// The "C" locale, made once for the life of the process; (locale_t)0 when it
// cannot be made, in which case callers fall back to the process locale.
locale_t CLocaleHandle();

// strtod in the "C" locale.
double StrtodC(const char* text, char** end);

// Runs `fn` with the calling thread switched to the "C" locale, for the
// conversions that have no _l form (sscanf), and switches back.
template <typename Fn> auto InCLocale(Fn fn) {
  const locale_t c = CLocaleHandle();
  const locale_t old = c ? uselocale(c) : static_cast<locale_t>(0);
  auto result = fn();
  if (c)
    uselocale(old);
  return result;
}

} // namespace vh
