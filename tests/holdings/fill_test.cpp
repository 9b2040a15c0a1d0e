#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "holdings/holdings_columns.h"
#include "link/envelope.h"
#include "tests/link/answers.h"

using namespace vh;
using linktest::Answer;
using linktest::AnswerFields;

namespace {

const AnswerFields kNseLeg{{63001, "nse_cm"}, {63100, "ABCD-EQ"}, {10100, "22"}};
const AnswerFields kBseLeg{{63001, "bse_cm"}, {63100, "ABCD"}, {10100, "500001"}};

AnswerFields Join(std::initializer_list<AnswerFields> parts) {
  AnswerFields all{{54001, "C1"}};
  for (const AnswerFields& p : parts)
    all.insert(all.end(), p.begin(), p.end());
  return all;
}

TEST(FillHoldingRecord, FromAnswerFields) {
  const std::string longId(40, 'k');
  const struct {
    const char* name;
    AnswerFields fields;
    std::string texts;
    std::vector<std::string> lookups;
    AnswerFields before = {}; // a first fill of the same record
    bool cse = false;
  } cases[] = {
      // clang-format off
      {"twoDashesSplitAtTheLast", Join({{{63001, "nse_cm"}, {63100, "AB-CD-BE"}}}),
       "C1||BE|AB-CD||||||||||||---|---|0.00|||IN:AB-CD-BE", {"nse_cm AB-CD-BE"}},
      {"dashOnBseIsBseLegWhole", Join({{{63001, "bse_cm"}, {63100, "AB-CD"}, {10100, "7"}}}),
       "C1||||7|AB-CD||||||||||---|---|0.00|||IN:AB-CD", {"bse_cm AB-CD"}},
      {"noDashOnNseSegmentIsBseLeg", Join({{{63001, "nse_cm"}, {63100, "ABCD"}}}),
       "C1|||||ABCD||||||||||---|---|0.00|||IN:ABCD", {"bse_cm ABCD"}},
      {"laterLegWinsScripDetail", Join({kNseLeg, kBseLeg}),
       "C1||EQ|ABCD|500001|ABCD||||||||||---|---|0.00|22||IN:ABCD", {"nse_cm ABCD-EQ", "bse_cm ABCD"}},
      {"secondLegEmptySymbolStops", Join({kNseLeg, {{63001, "bse_cm"}, {63100, ""}, {10100, "9"}}}),
       "C1||EQ|ABCD||||||||||||---|---|0.00|22||IN:ABCD-EQ", {"nse_cm ABCD-EQ"}},
      // The close price wraps on overflow and shows in single precision.
      {"firstLegNeverStops", Join({{{59351, "-2147483648"}}}),
       "C1|||||||||||||||---|---|-21474836.00|||IN:", {"bse_cm "}},
      // Every visible column is compared with the database by the view's
      // end-to-end test; the hidden 63003 and the odd values are not.
      {"codesAndOddNumbers",
       Join({kBseLeg, {{63003, "X3"}, {64172, "abc"}, {64171, "3"}, {59351, "123456701"}}}),
       "C1||||500001|ABCD||||||||||0.00||1234567.00||X3|IN:ABCD", {"bse_cm ABCD"}},
      // A refill keeps what it cannot read, adds the close price and asks
      // the host once per scrip.
      {"refill", {{54001, longId}, {63100, "AB-EQ"}, {59351, "-105"}},
       longId + "||EQ|AB|||5|||||||||---|---|-0.05|||IN:AB-EQ", {"nse_cm AB-EQ"},
       {{54001, "C2"}, {63100, "AB-EQ"}, {64044, "5"}, {64171, "2"}, {59351, "100"}}},
      // Per value of 64276 the quantity sums and quantity-weighted averages of
      // (64276, 64277) and (64272, 64273); a failed whole-number read weighs
      // with the number read before it.
      {"cseMissingSecondQuantity",
       Join({{{63001, "cse_cm"}, {63100, "CSESCRIP"}, {10100, "777"}, {64276, "10"}, {64276, "20"},
              {64277, "1"}, {64277, "2"}, {64272, "3"}, {64273, "2"}, {64273, "3"}}}),
       "C1|||||||||||||||---|---|0.00|||IN:CSESCRIP cse 30 23 1.6667 2.8696 0.0000",
       {"cse_cm CSESCRIP"}, {}, true},
      {"cseNoLots", Join({{{63001, "cse_cm"}, {63100, "CSESCRIP"}, {64298, "7.25"}}}),
       "C1|||||||||||||||---|---|0.00|||IN:CSESCRIP cse 0 0 0.0000 0.0000 7.2500",
       {"cse_cm CSESCRIP"}, {}, true},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    // Every scrip is known; its ISIN names the symbol asked.
    std::vector<std::string> lookups;
    const ScripDetailsLookup lookup = [&](std::string_view segment, std::string_view symbol,
                                          ScripDetailFields& out) {
      lookups.push_back(std::string(segment) + " " + std::string(symbol));
      out[kScripIsin] = "IN:" + std::string(symbol);
      return true;
    };
    HoldingsStore store;
    CViewHoldings r;
    if (!c.before.empty()) {
      kdl::Message first = Answer(c.before);
      FillHoldingRecord(first.get(), r, store, lookup);
    }
    kdl::Message m = Answer(c.fields);
    EXPECT_EQ(FillHoldingRecord(m.get(), r, store, lookup, c.cse), 1);
    // The 18 column texts, then the hidden NSE token, 63003 and scrip
    // detail, joined by "|"; then the sums of the CSE layout, when filled.
    std::string texts, scratch;
    for (int column = 0; column < kHoldingsColumnCount; ++column)
      texts += std::string(HoldingCellView(r, store, column, scratch)) + "|";
    for (TextId id : {r.nseToken, r.value63003})
      texts += std::string(store.Text(id)) + "|";
    texts += store.Text(r.scripDetail);
    if (r.cse) {
      char sums[128];
      std::snprintf(sums, sizeof sums, " cse %u %u %.4f %.4f %.4f", r.cse->firstQuantity,
                    r.cse->secondQuantity, r.cse->firstAverage, r.cse->secondAverage,
                    r.cse->value64298);
      texts += sums;
    }
    EXPECT_EQ(texts, c.texts);
    for (int column : {-1, kHoldingsColumnCount})
      EXPECT_EQ(HoldingCellView(r, store, column, scratch), "") << column;
    EXPECT_EQ(lookups, c.lookups);
    if (c.cse) { // the CSE symbol has its price slot
      store.ApplyPrice(kExchangeCse, "CSESCRIP", 4321, 0, 0);
      EXPECT_EQ(store.Price(r, kExchangeCse), 4321);
    }
  }
}

} // namespace
