#include "grid/expression.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

namespace {

constexpr double kUntouched = -777.25;

// Runs the whole engine and reports the value only when it was written.
struct Outcome {
  int code;
  double value;
  bool written;
};
Outcome Evaluate(std::string_view text) {
  double value = kUntouched;
  const int code = EvaluateExpression(text, value);
  return {code, value, !(value == kUntouched)};
}

TEST(ExpressionEvaluate, Values) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    std::string_view text;
    double value;
  } cases[] = {
      // clang-format off
      // signs and grouping: power binds like product, remainder below it
      {"3 * -5", -15}, {"3*(-5)", -15}, {"-5+3", -2}, {"(-5)", -5}, {"3 - -2", 5},
      {"2<< -3", 1 << 30}, {"+5", 5}, {"2*3^2", 36}, {"2^3^2", 64}, {"2+3*4", 14},
      {"7+5%3*2", 12}, {"10-4-3", 3}, {"64/4/2", 8}, {"1+2<<3", 17}, {"1 | 2 && 0", 0},
      {"3 > 2 == 1", 1}, {"(1+2)*3", 9}, {"2 - 3 % 2", 1}, {"8 \\ 3 * 2", 4}, {" ((2)) ", 2},
      // each operator
      {"6*7", 42}, {"2^10", 1024}, {"7/2", 3.5}, {"10\\3", 3}, {"-7\\2", -3}, {"-7 % 3", -1},
      {"7 % -3", 1}, {"2<<3", 16}, {"-16>>2", -4}, {"5-8", -3}, {"5+8", 13}, {"6&3", 2},
      {"6|3", 7}, {"1.9 & 3", 1}, {"7 && 0", 0}, {"2 && -1", 1}, {"0 || 0", 0}, {"0 || 3", 1},
      {"5 == 5", 1}, {"5 == 4", 0}, {"1<2", 1}, {"2<1", 0}, {"2>1", 1}, {"2>=2", 1},
      {"3<=2", 0}, {"2 ^ 0.5", std::sqrt(2.0)},
      // 32-bit truncation: out of range, infinities and NaN are INT_MIN
      {"2147483647.9 | 0", INT_MAX}, {"2147483648 | 0", INT_MIN}, {"3e9 & -1", INT_MIN},
      {"-2147483648.9 | 0", INT_MIN}, {"inf | 0", INT_MIN}, {"nan & -1", INT_MIN},
      {"5 \\ 0", INT_MIN}, {"1 << 31", INT_MIN}, {"1 << 32", 1}, {"-1 >> 40", -1},
      {"-1 << 1", -2}, {"3 << -1", INT_MIN},
      // operands are what strtod reads wholly
      {"1.5e3", 1500}, {"1.5e3*2", 3000}, {"0x10", 16}, {"inf", inf}, {".5", 0.5}, {"5.", 5},
      {"-.5", -0.5}, {"1e999", inf},
      // clang-format on
  };
  for (const auto& c : cases) {
    const Outcome r = Evaluate(c.text);
    EXPECT_EQ(r.code, 0) << c.text;
    EXPECT_EQ(r.value, c.value) << c.text;
  }
}

TEST(ExpressionEvaluate, CodesAndWhenTheValueIsWritten) {
  const struct {
    const char* name;
    std::string_view text;
    int code;
    bool written;
    double value;
  } cases[] = {
      {"operands left over keep the top", "1 2", 4, true, 2},
      {"adjacent operators", "3*-5", 1, false, 0},
      {"dangling operator", "1+", 1, false, 0},
      {"open paren", "(1+2", 1, false, 0},
      {"nothing to evaluate", "", 1, false, 0},
      {"only parens", " ( ) ", 1, false, 0},
      {"lone sign", "10 - - 2", 3, false, 0},
      {"sign before paren", "-(3)", 3, false, 0},
      {"not equal is no operator", "5 != 5", 3, false, 0},
      {"non-sign operator as sign", "1 + *2", 3, false, 0},
      {"remainder by zero", "7 % 0.5", 4, false, 0},
      {"remainder overflow", "-2147483648 % -1", 4, false, 0},
      {"a minus splits an exponent", "1e-5", 3, false, 0},
      {"thousands separator", "1,234", 3, false, 0},
      {"text after digits", "12abc", 3, false, 0},
      {"two decimal points", "1..2", 3, false, 0},
  };
  for (const auto& c : cases) {
    const Outcome r = Evaluate(c.text);
    EXPECT_EQ(r.code, c.code) << c.name;
    EXPECT_EQ(r.written, c.written) << c.name;
    if (c.written) {
      EXPECT_EQ(r.value, c.value) << c.name;
    }
  }
}

} // namespace
