// The top-N ranking under frozen prices, compared with the store: every
// value is holdings_qty times the frozen price, so the database alone says
// what each method must answer.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <utility>
#include <vector>

#include "kdl/tags.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

using Ranked = std::vector<std::pair<std::string, std::string>>; // symbol, value

class TopTenTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    options_.frozenPrices = true;
    StartServer();
    // Moves that leave no ties among the scrips they touch: +9%, +7%, -8%,
    // -6% on four scrips with both legs, and a price twice the close on one.
    ASSERT_TRUE(db_.Exec("INSERT INTO frozen_price SELECT id, close_paise*(100+CASE rn"
                         " WHEN 1 THEN 9 WHEN 2 THEN 7 WHEN 3 THEN -8 WHEN 4 THEN -6 ELSE 100 END)"
                         "/100 FROM (SELECT id, close_paise, row_number() OVER (ORDER BY id) rn"
                         " FROM scrip WHERE nse_symbol IS NOT NULL AND bse_code IS NOT NULL"
                         " AND close_paise>1000) WHERE rn<=5",
                         nullptr));
    StartServer(); // the book reads the frozen prices when it loads
  }

  // The answer as (symbol, value) in the order sent.
  Ranked Answer(const char* user, const char* exchange, const char* method) {
    TestClient c(server_->port(), user);
    const Stream s = c.Ask(MakeRequest(
        vh::kTopTenRequest, {{vh::kTagExchange, exchange}, {vh::kTagTopMethod, method}}));
    EXPECT_TRUE(s.ended);
    Ranked out;
    if (s.records.size() != 1)
      return out;
    const kdl::Message& r = s.records[0];
    for (uint32_t i = 0; i < r.Count(vh::kTagTopSymbol).value_or(0); ++i)
      out.emplace_back(Text(r, vh::kTagTopSymbol, i), Text(r, vh::kTagValue, i));
    return out;
  }

  // The store's ranking, smallest first as the answer goes.
  Ranked Expected(const char* user, const char* exchange, const char* method) {
    const std::string symbol =
        std::string(exchange) == "NSE" ? "s.nse_symbol||'-'||s.nse_series" : "s.bse_symbol";
    const std::string leg =
        std::string(exchange) == "NSE" ? "s.nse_symbol IS NOT NULL" : "s.bse_code IS NOT NULL";
    const std::string ltp = "COALESCE((SELECT ltp_paise FROM frozen_price f WHERE"
                            " f.scrip_id=s.id), s.close_paise)";
    const std::string change =
        "CASE WHEN s.close_paise=0 THEN 0 ELSE (" + ltp + "-s.close_paise)*10000/s.close_paise END";
    const std::string m = method;
    const std::string order = m == "1"   ? "value DESC, h.client_id"
                              : m == "3" ? change + " DESC, s.id, h.holdings_qty DESC"
                                         : change + " ASC, s.id, h.holdings_qty DESC";
    const std::string visible =
        std::string(user) == "RMS1"
            ? "1"
            : "h.client_id IN (SELECT client_id FROM user_client WHERE user_id='" +
                  std::string(user) + "')";
    riskd::Stmt q = db_.Prepare("SELECT " + symbol + ", h.holdings_qty*" + ltp +
                                    " AS value FROM holding h JOIN scrip s ON s.id=h.scrip_id"
                                    " WHERE " +
                                    leg + " AND " + visible + " ORDER BY " + order + " LIMIT 10",
                                nullptr);
    Ranked out;
    while (q.Step() == SQLITE_ROW)
      out.emplace_back(std::string(q.Text(0)), std::to_string(q.Int(1)));
    return Ranked(out.rbegin(), out.rend());
  }
};

TEST_F(TopTenTest, EachMethodAndExchangeMatchesTheStore) {
  for (const char* user : {"RMS1", "RMS2"})
    for (const char* exchange : {"NSE", "BSE"})
      for (const char* method : {"1", "3", "4"}) {
        SCOPED_TRACE(std::string(user) + "/" + exchange + "/" + method);
        const Ranked got = Answer(user, exchange, method);
        EXPECT_EQ(got.size(), 10u);
        EXPECT_EQ(got, Expected(user, exchange, method));
      }
}

TEST_F(TopTenTest, PricesStayFrozenWhileStreamsTick) {
  const Ranked before = Answer("RMS1", "NSE", "1");
  // A holdings query subscribes its scrips to the price ticks.
  TestClient watcher(server_->port(), "RMS1");
  ASSERT_TRUE(watcher.Send(MakeRequest("display_holding_detail", {{vh::kTagClientId, "C000001"}})));
  for (int tick = 0; tick < 3; ++tick)
    (void)watcher.Next(1500);
  EXPECT_EQ(Answer("RMS1", "NSE", "1"), before);
}

TEST_F(TopTenTest, ClientWithoutEntityIdSendsItsRowsLast) {
  // The largest holding of all belongs to a client stored without an id.
  ASSERT_TRUE(db_.Exec("INSERT INTO client(id,name) VALUES('','no entity id');"
                       "INSERT INTO holding(client_id,scrip_id,product,holdings_qty)"
                       " SELECT '', id, 'CNC', 99999999 FROM scrip WHERE nse_symbol IS NOT NULL"
                       " ORDER BY id LIMIT 1",
                       nullptr));
  TestClient c(server_->port(), "RMS1");
  const Stream s =
      c.Ask(MakeRequest(vh::kTopTenRequest, {{vh::kTagExchange, "NSE"}, {vh::kTagTopMethod, "1"}}));
  ASSERT_EQ(s.records.size(), 1u);
  const kdl::Message& r = s.records[0];
  EXPECT_EQ(r.Count(vh::kTagTopSymbol), 10u);
  EXPECT_EQ(r.Count(vh::kTagClientId), 9u);
  const std::string big = Str("SELECT 99999999*COALESCE((SELECT ltp_paise FROM frozen_price f WHERE"
                              " f.scrip_id=s.id), close_paise) FROM scrip s WHERE nse_symbol"
                              " IS NOT NULL ORDER BY id LIMIT 1");
  EXPECT_EQ(Text(r, vh::kTagValue, 9), big);
  for (uint32_t i = 0; i < 9; ++i)
    EXPECT_NE(Text(r, vh::kTagClientId, i), "");
}

} // namespace
} // namespace riskd_test
