// How one exported cell text becomes a sheet value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vh {

// Longest text a sheet cell holds, in bytes here (a character count in the
// file format; never more bytes than characters).
inline constexpr size_t kExcelMaxCellBytes = 32767;

// True for the comparison types whose columns are exported as numbers:
// integer (1), decimal (2 and 5) and long integer (4). Text (3), date or
// time (6) and anything else export as text.
bool IsNumericColumnType(int columnType);

// Reads `text` as a number when the whole of it is one decimal number:
//   [+|-] digits [. [digits]] | [+|-] . digits, then optionally e|E [+|-] digits
// with no blanks around it. Hexadecimal, "inf", "nan", thousands separators
// and results out of the double range are refused. Uses "." as the decimal
// point whatever the process locale. Returns false (value untouched) when
// the text is not such a number.
bool ParseWholeNumber(std::string_view text, double& value);

// `text` made safe for a cell: every NUL byte and every byte sequence that
// is not valid UTF-8 becomes U+FFFD, and the result is cut (on a character boundary) to
// kExcelMaxCellBytes.
std::string CellText(std::string_view text);

} // namespace vh
