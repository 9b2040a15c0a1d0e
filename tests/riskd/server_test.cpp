// Request/answer over a real socket, one request name at a time.
#include <gtest/gtest.h>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

const std::string kSeenByRms2 =
    " AND client_id IN (SELECT client_id FROM user_client WHERE user_id='RMS2')";
const std::string kBothLegs =
    " FROM scrip WHERE nse_token IS NOT NULL AND bse_code IS NOT NULL ORDER BY id LIMIT 1";

class ServerTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    StartServer();
  }
  Stream Ask(const kdl::Message& request) {
    TestClient client(server_->port());
    return client.Ask(request);
  }
};

// How many records each request gets, from the rows its user may see, and the
// first record's value of `tag` where one is named.
TEST_F(ServerTest, AnswersCarryTheRowsTheUserMaySee) {
  const std::string code = Str("SELECT bse_code" + kBothLegs);
  const std::string ofScrip =
      "SELECT count(*) FROM holding WHERE scrip_id=(SELECT id" + kBothLegs + ")" + kSeenByRms2;
  const auto holdings = [](Fields f) { return MakeRequest("display_holding_detail", f); };
  const auto cj = [](const std::string& asked) {
    return MakeRequest("mrv_cj", {{63003, asked}, {63001, "bse_cm"}});
  };
  const auto top = [](const char* exchange, const char* method, const char* user) {
    return MakeRequest("rs_display_topten_holdings",
                       {{10101, exchange}, {41232, method}, {31003, user}});
  };
  const struct {
    const char* name;
    kdl::Message request;
    std::string count; // "SELECT 0" where nothing may come back
    uint32_t tag = 0;
    std::string value = {};
  } cases[] = {
      {"listed client", holdings({{54001, "C000001"}, {31003, "RMS2"}}),
       "SELECT count(*) FROM holding WHERE client_id='C000001'"},
      {"unknown user", holdings({{54001, "C000001"}, {31003, "NOBODY"}}), "SELECT 0"},
      {"NSE token",
       holdings({{63001, "nse_cm"}, {10100, Str("SELECT nse_token" + kBothLegs)}, {31003, "RMS2"}}),
       ofScrip},
      {"code only in 63003",
       holdings({{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {63003, code}, {31003, "RMS2"}}),
       ofScrip},
      {"unknown scrip", holdings({{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {31003, "RMS1"}}),
       "SELECT 0"},
      {"counterpart of an ISIN", cj(Str("SELECT isin" + kBothLegs)), "SELECT 1", 10100,
       "SELECT bse_symbol" + kBothLegs},
      {"peer of an unknown user", MakeRequest("om_get_user_peer_data", {{31003, "NOBODY"}}),
       "SELECT 0"},
      {"top ten, method 2", top("NSE", "2", "RMS1"), "SELECT 0"},
      {"top ten, exchange CSE", top("CSE", "1", "RMS1"), "SELECT 0"},
      {"top ten, unknown user", top("NSE", "1", "NOBODY"), "SELECT 0"},
      {"lien of a desk user",
       MakeRequest("om_get_client_reports", {{54247, "RMS2"}, {63002, "CASH"}}),
       "SELECT count(*) FROM lien WHERE segment='CASH'" + kSeenByRms2},
      {"lien of an unknown user", MakeRequest("om_get_client_reports", {{54247, "NOBODY"}}),
       "SELECT 0"},
  };
  for (const auto& c : cases) {
    const Stream s = Ask(c.request);
    EXPECT_TRUE(s.ended) << c.name;
    const int64_t want = Count(c.count);
    EXPECT_TRUE(want > 0 || c.count == "SELECT 0") << c.name << ": the sample lacks the rows";
    ASSERT_EQ(int64_t(s.records.size()), want) << c.name;
    if (c.tag != 0) {
      EXPECT_EQ(Text(s.records[0], c.tag), Str(c.value)) << c.name;
    }
  }
}

} // namespace
} // namespace riskd_test
