// Requests with missing, empty, repeated or absurd fields: each is answered
// or ignored, the store stays consistent, and the connection keeps working.
#include <gtest/gtest.h>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

// A field present with no value, as kdl allows.
kdl::Message WithEmpty(std::string_view name, uint32_t emptyTag, const Fields& fields = {}) {
  kdl::Message m = MakeRequest(name, fields);
  m.AddEmpty(emptyTag);
  return m;
}

TEST_F(RiskdTest, OddRequestsNeverBreakTheConnection) {
  StartServer();
  const auto hold = [](Fields f) { return MakeRequest("display_holding_detail", f); };
  const auto move = [](Fields f) { return MakeRequest("om_stock_margin_transfer", f); };
  const struct {
    const char* name;
    kdl::Message request;
    bool answered; // a status record comes back
  } cases[] = {
      {"holdingsNoFields", hold({}), true},
      {"holdingsEmptyClient", WithEmpty("display_holding_detail", 54001), true},
      {"holdingsLegWithoutSymbol", hold({{63001, "nse_cm"}}), true},
      {"holdingsThreeLegs",
       hold({{63001, "nse_cm"},
             {63001, "bse_cm"},
             {63001, "cse_cm"},
             {10100, std::string(3000, 'Z')}}),
       true},
      {"holdingsQuoteInClient", hold({{54001, "C' OR '1'='1"}}), true},
      {"topTenEmptyMethod", WithEmpty("rs_display_topten_holdings", 41232, {{10101, "NSE"}}), true},
      {"reportsEmptySegment", WithEmpty("om_get_client_reports", 63002), true},
      {"cjEmpty", WithEmpty("mrv_cj", 63003), true},
      {"userInfoEmpty", WithEmpty("tarn_user_info", 31003), true},
      {"transferNoFields", move({}), false},
      {"transferHugeQuantity",
       move({{54001, "C000001"}, {64030, "CNC"}, {64044, std::string(23, '9')}, {20008, "MF"}}),
       false},
      {"transferNegative", move({{54001, "C000001"}, {64030, "CNC"}, {64044, "-5"}, {20008, "UF"}}),
       false},
      {"transferShortAction", move({{20008, "M"}}), false},
  };
  TestClient c(server_->port());
  const std::string total = "SELECT total(holdings_qty)+total(holdings_update_qty)+"
                            "total(withheld_holding_qty) FROM holding";
  const int64_t quantities = Count(total);
  for (const auto& k : cases) {
    ASSERT_TRUE(c.Send(k.request)) << k.name;
    if (k.answered) {
      EXPECT_TRUE(c.Collect(*k.request.Text(0), 5000).ended) << k.name;
    }
    ASSERT_EQ(c.Ask(MakeRequest("om_get_user_peer_data"), 5000).records.size(), 1u)
        << "after " << k.name;
  }
  EXPECT_EQ(Count(total), quantities);
  EXPECT_EQ(Count("SELECT count(*) FROM ledger WHERE applied=1"), 0);
  EXPECT_EQ(Count("SELECT count(*) FROM ledger"), 4);
}

TEST_F(RiskdTest, RandomBytesInFramesAreIgnored) {
  StartServer();
  TestClient c(server_->port());
  const std::string real(MakeRequest("display_holding_detail", {{54001, "C000001"}}).Serialise());
  uint64_t x = 12345;
  for (int i = 0; i < 300; ++i) {
    std::string payload(1 + (i * 37) % 500, '\0');
    for (char& ch : payload) {
      x = x * 6364136223846793005ull + 1442695040888963407ull;
      ch = static_cast<char>(x >> 56);
    }
    // Half the frames start like a real request, so they get deeper.
    if (i % 2 == 0)
      payload = real.substr(0, std::min(real.size(), payload.size())) + payload;
    std::string frame;
    kdl::AppendFrame(frame, payload);
    ASSERT_TRUE(c.SendRaw(frame));
  }
  EXPECT_EQ(c.Ask(MakeRequest("om_get_user_peer_data"), 5000).records.size(), 1u);
}

} // namespace
} // namespace riskd_test
