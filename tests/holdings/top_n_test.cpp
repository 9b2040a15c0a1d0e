#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "holdings/top_n.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "tests/holdings/request_fields.h"

namespace {

using namespace vh;
using vh::test::FieldList;

TEST(TopNRequest, ExchangeAndMethodCodes) {
  const struct {
    const char* name;
    bool nse;
    TopNMethod method;
    FieldList fields;
  } cases[] = {
      {"nseByLtp", true, kTopNByLtp, {{10101, "NSE"}, {41232, "1"}}},
      {"bseTopChange", false, kTopNByPercTop, {{10101, "BSE"}, {41232, "3"}}},
      {"nseBottomChange", true, kBottomNByPercChg, {{10101, "NSE"}, {41232, "4"}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const CLinkRequest r = TopNRequest(c.nse, c.method);
    EXPECT_EQ(r.name(), "rs_display_topten_holdings");
    EXPECT_EQ(vh::test::FieldsOf(r), c.fields);
    EXPECT_EQ(r.fieldFailure().text, " Request Failure");
    EXPECT_EQ(r.fieldFailure().report, Report::Status);
    EXPECT_EQ(r.sendFailure().text, "rs_display_topten_holdings Request Failure");
    EXPECT_EQ(r.sendFailure().report, Report::ShowAndStatus);
    EXPECT_EQ(r.sentText(), "rs_display_topten_holdings request sent successfully");
  }
}

// An answer record: the segment once, then per row an optional entity id,
// a symbol and a value.
struct Row {
  std::optional<std::string> entity;
  std::string symbol, value;
};

kdl::Message Answer(const std::vector<Row>& rows, bool withSegment = true) {
  kdl::Message m(1 << 16);
  EXPECT_TRUE(m.Add(kTagAnsweredName, "rs_display_topten_holdings"));
  if (withSegment)
    EXPECT_TRUE(m.Add(kTagExchange, "nse_cm"));
  for (const Row& r : rows) {
    if (r.entity) {
      EXPECT_TRUE(m.Add(kTagClientId, *r.entity));
    }
    EXPECT_TRUE(m.Add(kTagTopSymbol, r.symbol));
    EXPECT_TRUE(m.Add(kTagValue, r.value));
  }
  return m;
}

TEST(TopNAnswer, RowsScalingAndLookup) {
  const std::set<std::string, std::less<>> known{"C001", "C002"};
  const EntityLookup lookup = [&](std::string_view id) { return known.count(id) > 0; };
  const struct {
    const char* name;
    std::vector<Row> rows;
    bool useLookup;
    std::vector<std::vector<std::string>> shown; // entity, segment, symbol, value
  } cases[] = {
      {"idsScaledDown",
       {{"C001", "INFY-EQ", "123456"}, {"C009", "TCS-EQ", "5"}},
       true,
       {{"C001", "nse_cm", "INFY-EQ", "1234.56"}, {"C009", "nse_cm", "TCS-EQ", "0.05"}}},
      {"trailingRowWithoutIdIsNaScaledUp",
       {{"C002", "INFY-EQ", "100"}, {std::nullopt, "SBIN-EQ", "2.5"}},
       true,
       {{"C002", "nse_cm", "INFY-EQ", "1.00"}, {"NA", "nse_cm", "SBIN-EQ", "250.00"}}},
      {"valueThatIsNoNumberCountsZero",
       {{"C001", "INFY-EQ", "abc"}, {std::nullopt, "X-EQ", ""}},
       true,
       {{"C001", "nse_cm", "INFY-EQ", "0.00"}, {"NA", "nse_cm", "X-EQ", "0.00"}}},
      {"firstIdUnknownIgnoresAll", {{"C404", "INFY-EQ", "100"}, {"C001", "TCS-EQ", "1"}}, true, {}},
      {"noIdAtAllIgnored", {{std::nullopt, "INFY-EQ", "100"}}, true, {}},
      {"noLookupAcceptsAny",
       {{"C404", "INFY-EQ", "-250"}},
       false,
       {{"C404", "nse_cm", "INFY-EQ", "-2.50"}}},
      {"noRowsIgnored", {}, false, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    kdl::Message m = Answer(c.rows);
    const auto rows = DecodeTopNAnswer(m.get(), c.useLookup ? lookup : EntityLookup());
    std::vector<std::vector<std::string>> shown;
    for (const sTopNRow& r : rows)
      shown.push_back(
          {TopNCellText(r, 0), TopNCellText(r, 1), TopNCellText(r, 2), TopNCellText(r, 3)});
    EXPECT_EQ(shown, c.shown);
  }
}

TEST(TopNAnswer, SegmentIsAlwaysTheFirstAndMayBeMissing) {
  kdl::Message m = Answer({{"C1", "A", "1"}, {"C2", "B", "2"}});
  ASSERT_TRUE(m.Add(kTagExchange, "bse_cm")); // a second value is never read
  auto rows = DecodeTopNAnswer(m.get(), {});
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1].exchangeSegment, "nse_cm");

  kdl::Message bare = Answer({{"C1", "A", "1"}}, false);
  rows = DecodeTopNAnswer(bare.get(), {});
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].exchangeSegment, "");
  EXPECT_EQ(TopNCellText(rows[0], 4), "");
}

} // namespace
