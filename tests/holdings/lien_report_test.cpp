#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "holdings/lien_report.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "tests/holdings/request_fields.h"

namespace {

using namespace vh;
using vh::test::FieldList;

TEST(LienRequest, FieldsPerSegment) {
  const struct {
    const char* name;
    int segment;
    FieldList fields;
  } cases[] = {
      {"all", 0, {{54247, "RMS1"}, {32760, "--ALL--"}}},
      {"cash", 1, {{54247, "RMS1"}, {63002, "CASH"}, {32760, "CASH"}}},
      {"derivatives", 2, {{54247, "RMS1"}, {63002, "FO"}, {32760, "FO"}}},
      {"currency", 3, {{54247, "RMS1"}, {63002, "CUR"}, {32760, "CUR"}}},
      {"commodities", 4, {{54247, "RMS1"}, {63002, "COM"}, {32760, "COM"}}},
      {"spot", 5, {{54247, "RMS1"}, {63002, "SPOT"}, {32760, "SPOT"}}},
      {"pastTheListCountsAsAll", 6, {{54247, "RMS1"}, {32760, "--ALL--"}}},
      {"negativeCountsAsAll", -1, {{54247, "RMS1"}, {32760, "--ALL--"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const CLinkRequest r = LienReportRequest("RMS1", c.segment);
    EXPECT_EQ(r.name(), "om_get_client_reports");
    EXPECT_EQ(vh::test::FieldsOf(r), c.fields);
    EXPECT_EQ(r.fields().front().failureText, "Add source user id Failure");
    EXPECT_EQ(r.fieldFailure().text, " Request Failure");
    EXPECT_EQ(r.fieldFailure().report, Report::Status);
    EXPECT_EQ(r.sendFailure().text, "om_get_client_reports Request Failure");
    EXPECT_EQ(r.sendFailure().report, Report::ShowAndStatus);
  }
}

TEST(LienRow, DecodedAndShownWithTwoDecimals) {
  using Fields = std::vector<std::pair<uint32_t, std::string>>;
  const struct {
    const char* name;
    Fields fields;
    std::vector<std::string> shown;
  } cases[] = {
      {"whole",
       {{54001, "C001"}, {32760, "FO"}, {41363, "1250.5"}, {64287, "10"}, {64288, "0.004"}},
       {"C001", "FO", "1250.50", "10.00", "0.00"}},
      {"missingAmountsShowZero",
       {{54001, "C002"}, {32760, "CASH"}},
       {"C002", "CASH", "0.00", "0.00", "0.00"}},
      {"textThatIsNoNumberCountsZero",
       {{54001, "C003"}, {32760, "CUR"}, {41363, "n/a"}, {64287, "-3.456"}, {64288, "7e2"}},
       {"C003", "CUR", "0.00", "-3.46", "700.00"}},
      {"firstValueOfEachField",
       {{54001, "C004"}, {54001, "C005"}, {41363, "1"}, {41363, "2"}},
       {"C004", "", "1.00", "0.00", "0.00"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    kdl::Message m(1 << 12);
    ASSERT_TRUE(m.Add(kTagAnsweredName, "om_get_client_reports"));
    for (const auto& [tag, text] : c.fields)
      ASSERT_TRUE(m.Add(tag, text));
    const sLienRow row = DecodeLienRow(m.get());
    std::vector<std::string> shown;
    for (int col = 0; col < 5; ++col)
      shown.push_back(LienCellText(row, col));
    EXPECT_EQ(shown, c.shown);
    EXPECT_EQ(LienCellText(row, 5), "");
  }
}

TEST(LienRow, ColumnsInOrder) {
  std::vector<std::string> names;
  for (const auto& c : LienReportColumns())
    names.emplace_back(c.Name());
  EXPECT_EQ(names, (std::vector<std::string>{"Client ID", "Segment", "Lien Amount", "PayIn Amount",
                                             "PayOut Amount"}));
}

} // namespace
