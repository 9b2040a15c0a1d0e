#include "grid/row_convert.h"

#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace vh {
namespace {

// The C library is the reference: the process runs in the "C" locale here.
void ExpectSameAsLibc(const std::string& text) {
  SCOPED_TRACE("text \"" + text + "\"");
  EXPECT_EQ(CAtoi(text), std::atoi(text.c_str()));
  EXPECT_EQ(CAtol(text), std::atol(text.c_str()));
  const double want = std::atof(text.c_str());
  const double got = CAtof(text);
  if (std::isnan(want)) {
    EXPECT_TRUE(std::isnan(got));
  } else {
    EXPECT_EQ(std::signbit(got), std::signbit(want));
    EXPECT_EQ(got, want);
  }
  double scanned = -7;
  double mine = -7;
  const bool scanOk = std::sscanf(text.c_str(), "%lf", &scanned) == 1;
  EXPECT_EQ(CScanDouble(text, mine), scanOk);
  if (scanOk && !std::isnan(scanned)) {
    EXPECT_EQ(mine, scanned);
  }
}

TEST(RowConvert, AwkwardTextsMatchTheCLibrary) {
  // clang-format off
  const char* const cases[] = {
      "", " ", "42", "  -17", "+8", "+-3", "- 5", "12abc", "abc", "1e", "1e+", "1.5e3x", ".5",
      "-.5", ".", "-.", "5.", "0x", "0x1p3", "0X1A", "0xg", "inf", "-Infinity", "nan", "nan(12)",
      "1e999", "-1e999", "1e-999", "\t\n 9", "1,234", "2147483647", "2147483648", "-2147483649",
      "9223372036854775807", "9223372036854775808", "-9223372036854775809",
      "99999999999999999999999", "0.1", "123456789012345678901234567890.5",
      "4.9406564584124654e-324", "2.2250738585072011e-308",
  };
  // clang-format on
  for (const char* text : cases)
    ExpectSameAsLibc(text);
}

TEST(RowConvert, RandomTextsMatchTheCLibrary) {
  std::mt19937 rng(1234);
  for (int i = 0; i < 20000; ++i)
    ExpectSameAsLibc(test::RandomText(rng, " +-0123456789.eExXa", 14));
}

} // namespace
} // namespace vh
