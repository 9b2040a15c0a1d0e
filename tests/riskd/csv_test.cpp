// Numbers in CSV files. (How lines split into fields is the import test's.)
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "riskd/csv.h"

namespace riskd_test {
namespace {

TEST(CsvNumbers, HundredthsBothWaysAndWholeNumbers) {
  const struct {
    int64_t value;
    const char* text;
  } both[] = {{0, "0.00"}, {5, "0.05"}, {-5, "-0.05"}, {123450, "1234.50"}, {-100, "-1.00"}};
  for (const auto& c : both) {
    EXPECT_EQ(riskd::FormatHundredths(c.value), c.text);
    EXPECT_EQ(riskd::ParseHundredths(c.text), c.value) << c.text;
  }
  EXPECT_EQ(riskd::FormatHundredths(INT64_MIN), "-92233720368547758.08");
  for (const char* bad : {"", "12.", ".5", "1.234", "-", "+1", "92233720368547758.07", "12a"})
    EXPECT_FALSE(riskd::ParseHundredths(bad)) << bad;
  for (const char* bad : {"", "4 2", "x", "+3", "99999999999999999999"})
    EXPECT_FALSE(riskd::ParseWhole(bad)) << bad;
}

} // namespace
} // namespace riskd_test
