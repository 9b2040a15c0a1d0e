#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "holdings/holdings_columns.h"
#include "tests/link/answers.h"

using namespace vh;
using linktest::Answer;
using linktest::AnswerFields;

namespace {

// Every scrip is known; its ISIN names the segment and symbol asked.
struct LookupLog {
  std::vector<std::string> calls;
  ScripDetailsLookup Lookup() {
    return [this](std::string_view segment, std::string_view symbol, ScripDetailFields& out) {
      calls.push_back(std::string(segment) + " " + std::string(symbol));
      out[kScripIsin] = "IN:" + std::string(symbol);
      return true;
    };
  }
};

// The 18 column texts, then the hidden NSE token, 63003 and scrip detail.
std::vector<std::string> Texts(const CViewHoldings& r, const HoldingsStore& s) {
  std::vector<std::string> t;
  std::string scratch;
  for (int c = 0; c < kHoldingsColumnCount; ++c)
    t.emplace_back(HoldingCellView(r, s, c, scratch));
  for (TextId id : {r.nseToken, r.value63003, r.scripDetail})
    t.emplace_back(s.Text(id));
  return t;
}

const AnswerFields kNseLeg{{63001, "nse_cm"}, {63100, "ABCD-EQ"}, {10100, "22"}};
const AnswerFields kBseLeg{{63001, "bse_cm"}, {63100, "ABCD"}, {10100, "500001"}};

AnswerFields Join(std::initializer_list<AnswerFields> parts) {
  AnswerFields all{{54001, "C1"}};
  for (const AnswerFields& p : parts)
    all.insert(all.end(), p.begin(), p.end());
  return all;
}

TEST(FillHoldingRecord, FromAnswerFields) {
  // Expected: the 18 columns, then NSE token, 63003 and scrip detail.
  const struct {
    const char* name;
    AnswerFields fields;
    const char* texts;
    std::vector<std::string> lookups;
  } cases[] = {
      // clang-format off
      {"NseLegSplitsAtTheDash", Join({kNseLeg}),
       "C1||EQ|ABCD||||||||||||---|---|0.00|22||IN:ABCD-EQ", {"nse_cm ABCD-EQ"}},
      {"TwoDashesSplitAtTheLast", Join({{{63001, "nse_cm"}, {63100, "AB-CD-BE"}}}),
       "C1||BE|AB-CD||||||||||||---|---|0.00|||IN:AB-CD-BE", {"nse_cm AB-CD-BE"}},
      {"DashOnBseIsBseLegWhole", Join({{{63001, "bse_cm"}, {63100, "AB-CD"}, {10100, "7"}}}),
       "C1||||7|AB-CD||||||||||---|---|0.00|||IN:AB-CD", {"bse_cm AB-CD"}},
      {"NoDashOnNseSegmentIsBseLeg", Join({{{63001, "nse_cm"}, {63100, "ABCD"}}}),
       "C1|||||ABCD||||||||||---|---|0.00|||IN:ABCD", {"bse_cm ABCD"}},
      {"LaterLegWinsScripDetail", Join({kNseLeg, kBseLeg}),
       "C1||EQ|ABCD|500001|ABCD||||||||||---|---|0.00|22||IN:ABCD", {"nse_cm ABCD-EQ", "bse_cm ABCD"}},
      {"SecondLegEmptySymbolStops", Join({kNseLeg, {{63001, "bse_cm"}, {63100, ""}, {10100, "9"}}}),
       "C1||EQ|ABCD||||||||||||---|---|0.00|22||IN:ABCD-EQ", {"nse_cm ABCD-EQ"}},
      {"SecondLegWithoutSegmentStops", Join({kNseLeg, {{63100, "XYZ"}}}),
       "C1||EQ|ABCD||||||||||||---|---|0.00|22||IN:ABCD-EQ", {"nse_cm ABCD-EQ"}},
      {"FirstLegNeverStops", Join({}), "C1|||||||||||||||---|---|0.00|||IN:", {"bse_cm "}},
      // Every visible column is compared with the database by the view's
      // end-to-end test; the hidden 63003 and the odd values are not.
      {"CodesAndOddNumbers",
       Join({kBseLeg, {{63003, "X3"}, {64172, "abc"}, {64171, "3"}, {59351, "123456701"}}}),
       "C1||||500001|ABCD||||||||||0.00||1234567.00||X3|IN:ABCD", {"bse_cm ABCD"}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    HoldingsStore store;
    LookupLog log;
    CViewHoldings r;
    kdl::Message m = Answer(c.fields);
    EXPECT_EQ(FillHoldingRecord(m.get(), r, store, log.Lookup()), 1);
    std::string joined;
    for (const std::string& t : Texts(r, store))
      joined += (joined.empty() ? "" : "|") + t;
    EXPECT_EQ(joined, c.texts);
    EXPECT_EQ(log.calls, c.lookups);
  }
}

TEST(FillHoldingRecord, RefillKeepsUnreadFieldsAddsCloseAndCachesLookups) {
  HoldingsStore store;
  LookupLog log;
  CViewHoldings r;
  const std::string longId(40, 'k');
  kdl::Message first =
      Answer({{54001, longId}, {63100, "AB-EQ"}, {64044, "5"}, {64171, "2"}, {59351, "100"}});
  kdl::Message second = Answer({{54001, "C2"}, {63100, "AB-EQ"}, {59351, "-30"}});
  FillHoldingRecord(first.get(), r, store, log.Lookup());
  EXPECT_EQ(Texts(r, store)[0], longId);
  FillHoldingRecord(second.get(), r, store, log.Lookup());
  const std::vector<std::string> t = Texts(r, store);
  EXPECT_EQ(t[0], "C2");
  EXPECT_EQ(t[kColFirstQuantity], "5");
  EXPECT_EQ(t[kColCollateralType], "---");
  EXPECT_EQ(t[kColClosePrice], "0.70");
  EXPECT_EQ(log.calls, std::vector<std::string>{"nse_cm AB-EQ"});
}

TEST(HoldingCells, ClosePriceInSinglePrecisionAndColumnsOutOfRange) {
  const struct {
    int32_t hundredths;
    const char* text;
  } prices[] = {{-5, "-0.05"}, {123456701, "1234567.00"}, {INT32_MIN, "-21474836.00"}};
  for (const auto& p : prices)
    EXPECT_EQ(FormatClosePrice(p.hundredths), p.text) << p.hundredths;

  HoldingsStore store;
  CViewHoldings* r = store.NewRecord();
  kdl::Message m = Answer({{54001, "C9"}, {64435, "4"}});
  FillHoldingRecord(m.get(), *r, store, {});
  HoldingsCellSource source(store);
  const uint64_t item = HoldingsCellSource::ItemData(r);
  for (const auto& [column, item0, text] :
       std::vector<std::tuple<int, uint64_t, std::string>>{{0, item, "C9"},
                                                           {14, item, "4"},
                                                           {17, item, "0.00"},
                                                           {18, item, ""},
                                                           {-1, item, ""},
                                                           {0, 0, ""}}) {
    std::string owned = "stale";
    std::string_view view = "stale";
    CellStyle style;
    EXPECT_EQ(HoldingsCellSource::CellText(&source, item0, column, owned, style), 1);
    EXPECT_EQ(HoldingsCellSource::CellView(&source, item0, column, view), 1);
    EXPECT_EQ(owned, text) << column;
    EXPECT_EQ(view, text) << column;
  }
}

} // namespace
