// Internals of the expression engine shared by the text evaluator and the
// compiled form of custom columns. Not part of any other module's contract.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh::expr {

struct OperatorEntry {
  std::string_view text;
  int32_t precedence;
};

// Entry 0 holds the operator character set; 1..22 are searched in order, so
// entries 10, 13, 16 and 21 can never be found but are still defined.
inline constexpr int kOperatorCount = 23;
extern const OperatorEntry kOperators[kOperatorCount];

// Character classes of the "C" locale, so the process locale cannot change
// tokenisation.
inline bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
inline bool IsWordChar(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.';
}
inline bool IsOperatorChar(char c) {
  return kOperators[0].text.find(c) != std::string_view::npos;
}

// Toward zero into 32 bits; out of range, infinities and NaN give INT32_MIN.
int32_t Truncate(double x);

// Applies operator `op` (1..22) to a and b. False when the operator fails
// (remainder by a divisor that truncates to 0, or INT32_MIN % -1).
bool ApplyOperator(int op, double a, double b, double& result);

// strtod in the "C" locale over exactly `token` (never past it). False
// unless the whole token is consumed; an empty token is no number.
bool ParseWholeNumber(std::string_view token, double& value);

// atof in the "C" locale: leading white space, the longest number prefix,
// 0 when there is none. Reads `text` up to its end or an embedded NUL.
double ParseLeadingNumber(std::string_view text);

// How a fetched cell text reads once substituted into an expression.
enum class CellForm {
  kZero,     // atof gives 0: substituted as "0"
  kPlain,    // letters, digits and full stops that strtod reads wholly
  kNegative, // a minus, then a kPlain text
  kOther,    // anything else (spaces, a thousands separator, "1e-5", ...)
};
// Classifies `text`; for kPlain and kNegative `number` is strtod of the
// text after the minus, for kZero it is 0.
CellForm ClassifyCellText(std::string_view text, double& number);

// Where each character of a converted postfix text came from: an index
// into the infix text, or kInserted for spaces, parentheses, operator texts
// and the "0" that the converter writes itself.
inline constexpr int32_t kInserted = -1;

// ConvertToPostfix, optionally recording `origins` (one per postfix char).
int ConvertTracked(std::string_view infix, std::string& postfix, std::vector<int32_t>* origins);

} // namespace vh::expr
