// Lien report rows decoded as the list shows them: the edges tarn-riskd
// never sends (no numbers, missing fields, repeated fields).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "holdings/lien_report.h"
#include "kdl/message.h"

namespace {

using namespace vh;
using Texts = std::vector<std::string>;
using Fields = std::vector<std::pair<uint32_t, std::string>>;

kdl::Message Answer(const Fields& fields) {
  kdl::Message m(1 << 12);
  for (const auto& [tag, text] : fields)
    EXPECT_TRUE(m.Add(tag, text));
  return m;
}

TEST(ReportAnswers, LienRowsAsShown) {
  const struct {
    const char* name;
    Fields fields;
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
    SCOPED_TRACE(c.name);
    kdl::Message m = Answer(c.fields);
    const sLienRow row = DecodeLienRow(m.get());
    Texts shown;
    for (int col = 0; col < 5; ++col)
      shown.push_back(LienCellText(row, col));
    EXPECT_EQ(shown, c.shown);
  }
}

} // namespace
