// The small conversions every settings value grammar shares. The values were
// always split and converted with the C library's forgiving routines; these
// keep that forgiveness (junk converts to 0) without its undefined overflow.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vh {

// Walks a value field by field. A field runs to the next delimiter given to
// Next() or to the end; it is missing only once the cursor has passed the
// end, so "a," has the fields "a" and nothing after it, and "a,,b" has an
// empty second field.
class FieldReader {
public:
  explicit FieldReader(std::string_view text) : text_(text) {}
  std::optional<std::string_view> Next(char delimiter);

private:
  std::string_view text_;
  size_t pos_ = 0;
};

// Leading blanks, an optional sign and decimal digits, as atoi reads them;
// anything else stops the number; no digits give 0; out-of-range values are
// clamped to the int range.
int ToInt(std::string_view text);
// Hexadecimal as strtoul reads it (optional "0x"), cut to 32 bits; no digits
// give 0.
uint32_t ToHexColour(std::string_view text);
// "%lX" of a colour: upper case, no prefix, no leading zeros.
std::string HexColour(uint32_t colour);

} // namespace vh
