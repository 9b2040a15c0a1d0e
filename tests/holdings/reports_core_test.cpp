// Lien report rows decoded as the list shows them: the edges tarn-riskd
// never sends (no numbers, missing fields, repeated fields).
#include <gtest/gtest.h>

#include "holdings/lien_report.h"
#include "kdl/message.h"

namespace {

TEST(ReportAnswers, LienRowsAsShown) {
  using Texts = std::vector<std::string>;
  const struct {
    const char* name;
    std::vector<std::pair<uint32_t, std::string>> fields;
    Texts shown;
  } cases[] = {
      {"missingAmountsShowZero",
       {{54001, "C2"}, {32760, "CASH"}},
       {"C2", "CASH", "0.00", "0.00", "0.00"}},
      {"noNumberRoundedFirstValue",
       {{54001, "C3"},
        {54001, "C4"},
        {41363, "n/a"},
        {64287, "-3.456"},
        {64288, "7e2"},
        {64288, "1"}},
       {"C3", "", "0.00", "-3.46", "700.00"}},
  };
  for (const auto& c : cases) {
    kdl::Message m(1 << 12);
    for (const auto& [tag, text] : c.fields)
      ASSERT_TRUE(m.Add(tag, text));
    const vh::sLienRow row = vh::DecodeLienRow(m.get());
    Texts shown;
    for (int col = 0; col < 5; ++col)
      shown.push_back(vh::LienCellText(row, col));
    EXPECT_EQ(shown, c.shown) << c.name;
  }
}

} // namespace
