#include "common/c_locale.h"

#include <cstdlib>

namespace vh {

locale_t CLocaleHandle() {
  // Never freed: conversions may run during static destruction.
  static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
  return c;
}

double StrtodC(const char* text, char** end) {
  const locale_t c = CLocaleHandle();
  return c ? strtod_l(text, end, c) : std::strtod(text, end);
}

} // namespace vh
