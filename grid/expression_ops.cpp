#include "grid/expression_detail.h"

#include "common/c_locale.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace vh::expr {

const OperatorEntry kOperators[kOperatorCount] = {
    {"<>=*/%+-^&|\\", -1},
    {"*", 19},
    {"^", 19},
    {"/", 19},
    {"\\", 19},
    {"%", 18},
    {"<<", 17},
    {">>", 17},
    {"-", 16},
    {"+", 16},
    {"^", 15},
    {"&", 15},
    {"|", 15},
    {"!|", 15},
    {"&&", 14},
    {"||", 14},
    {"!&", 15},
    {"==", 13},
    {"<", 13},
    {">", 13},
    {">=", 13},
    {"!=", 13},
    {"<=", 13},
};

namespace {

// [-]digits[.digits] with at least one digit: the shape almost every cell
// and constant has. from_chars rounds exactly as strtod does and needs no
// terminator or locale; anything else goes to strtod.
bool ParseSimpleDecimal(std::string_view s, double& value) {
  // Up to 15 significant digits fit a double exactly, and so does every
  // power of ten up to 1e22; one correctly rounded division then gives the
  // very double strtod would (the classic exact fast path).
  static constexpr double kPow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const bool negative = !s.empty() && s[0] == '-';
  bool digit = false, dot = false;
  uint64_t mantissa = 0;
  int significant = 0, decimals = 0;
  for (size_t k = negative ? 1 : 0; k < s.size(); ++k) {
    const char c = s[k];
    if (c >= '0' && c <= '9') {
      digit = true;
      if (mantissa != 0 || c != '0')
        ++significant;
      mantissa = mantissa * 10 + static_cast<uint64_t>(c - '0');
      decimals += dot;
      if (significant > 15)
        break;
    } else if (c == '.' && !dot) {
      dot = true;
    } else {
      return false;
    }
  }
  if (!digit)
    return false;
  if (significant <= 15 && decimals <= 22) {
    const double v = static_cast<double>(mantissa) / kPow10[decimals];
    value = negative ? -v : v;
    return true;
  }
  for (size_t k = negative ? 1 : 0; k < s.size(); ++k)
    if (!((s[k] >= '0' && s[k] <= '9') || s[k] == '.'))
      return false;
  auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), value);
  return ec == std::errc() && ptr == s.data() + s.size();
}

// Runs `parse` over a NUL-terminated copy of `text` (on the stack when short).
template <typename Parse> auto WithTerminatedCopy(std::string_view text, Parse parse) {
  char small[64];
  if (text.size() < sizeof small) {
    text.copy(small, text.size());
    small[text.size()] = '\0';
    return parse(small, text.size());
  }
  std::string copy(text);
  return parse(copy.c_str(), copy.size());
}

} // namespace

int32_t Truncate(double x) {
  if (!(x > -2147483649.0 && x < 2147483648.0))
    return INT32_MIN;
  return static_cast<int32_t>(x);
}

bool ApplyOperator(int op, double a, double b, double& result) {
  // Cheap enough to do for every operator; only the integer ones use them.
  const int32_t ta = Truncate(a);
  const int32_t tb = Truncate(b);
  switch (op) {
  case 1:
    result = a * b;
    return true;
  case 2:
    result = std::pow(a, b);
    return true;
  case 3:
    result = a / b;
    return true;
  case 4:
    result = Truncate(a / b);
    return true;
  case 5:
    if (tb == 0 || (ta == INT32_MIN && tb == -1))
      return false;
    result = ta % tb;
    return true;
  case 6:
    result = static_cast<int32_t>(static_cast<uint32_t>(ta) << (tb & 31));
    return true;
  case 7:
    result = ta >> (tb & 31);
    return true;
  case 8:
    result = a - b;
    return true;
  case 9:
    result = a + b;
    return true;
  case 10:
    result = ta ^ tb;
    return true;
  case 11:
    result = ta & tb;
    return true;
  case 12:
    result = ta | tb;
    return true;
  case 13:
    result = ~(ta | tb);
    return true;
  case 14:
    result = (a != 0 && b != 0) ? 1 : 0;
    return true;
  case 15:
    result = (a == 0 && b == 0) ? 0 : 1;
    return true;
  case 16:
    result = ~(ta & tb);
    return true;
  case 17:
    result = a == b ? 1 : 0;
    return true;
  case 18:
    result = a < b ? 1 : 0;
    return true;
  case 19:
    result = a > b ? 1 : 0;
    return true;
  case 20:
    result = a >= b ? 1 : 0;
    return true;
  case 21:
    result = a != b ? 1 : 0;
    return true;
  case 22:
    result = a <= b ? 1 : 0;
    return true;
  default:
    return false;
  }
}

bool ParseWholeNumber(std::string_view token, double& value) {
  if (token.empty())
    return false;
  if (ParseSimpleDecimal(token, value))
    return true;
  return WithTerminatedCopy(token, [&value](const char* text, size_t size) {
    char* end = nullptr;
    const double v = StrtodC(text, &end);
    if (end != text + size)
      return false;
    value = v;
    return true;
  });
}

double ParseLeadingNumber(std::string_view text) {
  double value = 0;
  if (ParseSimpleDecimal(text, value))
    return value;
  return WithTerminatedCopy(text, [](const char* s, size_t) { return StrtodC(s, nullptr); });
}

CellForm ClassifyCellText(std::string_view text, double& number) {
  double value = 0;
  if (ParseSimpleDecimal(text, value)) {
    if (value == 0) {
      number = 0;
      return CellForm::kZero;
    }
    number = text[0] == '-' ? -value : value;
    return text[0] == '-' ? CellForm::kNegative : CellForm::kPlain;
  }
  if (ParseLeadingNumber(text) == 0) {
    number = 0;
    return CellForm::kZero;
  }
  const auto allWord = [](std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), IsWordChar);
  };
  if (allWord(text))
    return ParseWholeNumber(text, number) ? CellForm::kPlain : CellForm::kOther;
  if (text[0] == '-' && allWord(text.substr(1)))
    return ParseWholeNumber(text.substr(1), number) ? CellForm::kNegative : CellForm::kOther;
  return CellForm::kOther;
}

} // namespace vh::expr
