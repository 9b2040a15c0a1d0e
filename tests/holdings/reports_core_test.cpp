// A lien report row decoded as the list shows it, on the edges tarn-riskd
// never sends: a missing segment and amount, an amount that is no number,
// a repeated field, a column past the last.
#include <gtest/gtest.h>

#include "holdings/lien_report.h"
#include "kdl/message.h"

namespace {

TEST(ReportAnswers, LienRowAsShown) {
  const std::pair<uint32_t, const char*> fields[] = {
      {54001, "C3"}, {54001, "C4"}, {64287, "n/a"}, {64288, "-3.456"}, {64288, "1"}};
  kdl::Message m(1 << 12);
  for (const auto& [tag, text] : fields)
    ASSERT_TRUE(m.Add(tag, text));
  const vh::sLienRow row = vh::DecodeLienRow(m.get());
  std::vector<std::string> shown;
  for (int col = 0; col < 6; ++col)
    shown.push_back(vh::LienCellText(row, col));
  EXPECT_EQ(shown, (std::vector<std::string>{"C3", "", "0.00", "0.00", "-3.46", ""}));
}

} // namespace
