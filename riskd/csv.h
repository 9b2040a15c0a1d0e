// CSV lines and the number forms the import files use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace riskd {

// Splits one line (without its line end; a trailing '\r' is dropped) into
// fields. Grammar: field (',' field)*; a field is either raw text without '"'
// or '"' (any char | '""')* '"'. Surrounding blanks of raw fields are kept.
// nullopt when a quote is unterminated or text follows a closing quote.
std::optional<std::vector<std::string>> SplitCsvLine(std::string_view line);

// A whole decimal number, optional leading '-'; nullopt for anything else
// (blanks, signs alone, overflow, trailing text).
std::optional<int64_t> ParseWhole(std::string_view text);

// A decimal with at most two places ("12", "12.5", "-0.05") in hundredths;
// nullopt for anything else.
std::optional<int64_t> ParseHundredths(std::string_view text);

// Hundredths as text with exactly two places ("-0.05", "1234.50").
std::string FormatHundredths(int64_t value);

} // namespace riskd
