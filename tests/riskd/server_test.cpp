// Request/answer over a real socket, one request name at a time.
#include <gtest/gtest.h>

#include <map>

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
    EXPECT_TRUE(client.connected());
    return client.Ask(request);
  }
};

std::string Join(const kdl::Message& r, std::initializer_list<uint32_t> tags) {
  std::string out;
  for (uint32_t tag : tags)
    out += Text(r, tag) + ",";
  return out;
}

// How many records each request gets, from the rows its user may see, and the
// first record's value of `tag` where one is named.
TEST_F(ServerTest, AnswersCarryTheRowsTheUserMaySee) {
  const std::string nse = Str("SELECT nse_symbol||'-'||nse_series" + kBothLegs);
  const std::string bse = Str("SELECT bse_symbol" + kBothLegs);
  const std::string code = Str("SELECT bse_code" + kBothLegs);
  const std::string ofScrip =
      "SELECT count(*) FROM holding WHERE scrip_id=(SELECT id" + kBothLegs + ")" + kSeenByRms2;
  const std::string nseOnly = Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE "
                                  "nse_token IS NOT NULL AND bse_code IS NULL LIMIT 1");
  ASSERT_FALSE(nseOnly.empty()) << "sample lacks an NSE-only scrip";
  const auto holdings = [](Fields f) { return MakeRequest("display_holding_detail", f); };
  const auto cj = [](const std::string& asked) {
    return MakeRequest("mrv_cj", {{63003, asked}, {63001, "bse_cm"}});
  };
  const struct {
    const char* name;
    kdl::Message request;
    std::string count; // "SELECT 0" where nothing may come back
    uint32_t tag = 0;
    std::string value = {};
  } cases[] = {
      {"admin, any client", holdings({{54001, "C000002"}, {31003, "RMS1"}}),
       "SELECT count(*) FROM holding WHERE client_id='C000002'"},
      {"listed client", holdings({{54001, "C000001"}, {31003, "RMS2"}}),
       "SELECT count(*) FROM holding WHERE client_id='C000001'"},
      {"unlisted client", holdings({{54001, "C000002"}, {31003, "RMS2"}}), "SELECT 0"},
      {"unknown user", holdings({{54001, "C000001"}, {31003, "NOBODY"}}), "SELECT 0"},
      {"unknown client", holdings({{54001, "C999999"}, {31003, "RMS1"}}), "SELECT 0"},
      {"NSE trading symbol", holdings({{63001, "nse_cm"}, {10100, nse}, {31003, "RMS2"}}), ofScrip},
      {"NSE token",
       holdings({{63001, "nse_cm"}, {10100, Str("SELECT nse_token" + kBothLegs)}, {31003, "RMS2"}}),
       ofScrip},
      {"BSE symbol", holdings({{63001, "bse_cm"}, {10100, bse}, {31003, "RMS2"}}), ofScrip},
      {"BSE code", holdings({{63001, "bse_cm"}, {10100, code}, {31003, "RMS2"}}), ofScrip},
      {"both legs",
       holdings(
           {{63001, "nse_cm"}, {10100, nse}, {63001, "bse_cm"}, {10100, bse}, {31003, "RMS2"}}),
       ofScrip},
      {"code only in 63003",
       holdings({{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {63003, code}, {31003, "RMS2"}}),
       ofScrip},
      {"unknown scrip", holdings({{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {31003, "RMS1"}}),
       "SELECT 0"},
      {"counterpart of a trading symbol", cj(nse), "SELECT 1", 10100, "SELECT '" + bse + "'"},
      {"counterpart of a bare symbol", cj(Str("SELECT nse_symbol" + kBothLegs)), "SELECT 1", 10100,
       "SELECT '" + bse + "'"},
      {"counterpart of an ISIN", cj(Str("SELECT isin" + kBothLegs)), "SELECT 1", 10100,
       "SELECT '" + bse + "'"},
      {"NSE-only scrip has no counterpart", cj(nseOnly), "SELECT 1", 10100, "SELECT '<absent>'"},
      {"unknown scrip has no counterpart", cj("NOSUCH-EQ"), "SELECT 1", 10100, "SELECT '<absent>'"},
      {"peer", MakeRequest("om_get_user_peer_data", {{31003, "RMS2"}}), "SELECT 1", 64056,
       "SELECT peer FROM user WHERE id='RMS2'"},
      {"peer of an unknown user", MakeRequest("om_get_user_peer_data", {{31003, "NOBODY"}}),
       "SELECT 0"},
      {"top ten, method 2",
       MakeRequest("rs_display_topten_holdings", {{10101, "NSE"}, {41232, "2"}}), "SELECT 0"},
      {"top ten, exchange CSE",
       MakeRequest("rs_display_topten_holdings", {{10101, "CSE"}, {41232, "1"}}), "SELECT 0"},
      {"top ten, unknown user",
       MakeRequest("rs_display_topten_holdings", {{10101, "NSE"}, {41232, "1"}, {31003, "NOBODY"}}),
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

// Every field of every record against the row it came from.
TEST_F(ServerTest, HoldingsByClientCarryTheRowsFields) {
  const std::string client =
      Str("SELECT client_id FROM holding GROUP BY 1 ORDER BY count(*) DESC, 1 LIMIT 1");
  const Stream s = Ask(MakeRequest("display_holding_detail", {{54001, client}, {31003, "RMS1"}}));
  ASSERT_TRUE(s.ended);
  EXPECT_EQ(s.status, "1");
  ASSERT_EQ(int64_t(s.records.size()),
            Count("SELECT count(*) FROM holding WHERE client_id='" + client + "'"));
  for (const auto& r : s.records) {
    const bool nseFirst = Text(r, 63001, 0) == "nse_cm";
    const std::string scrip = "(SELECT id FROM scrip WHERE " +
                              std::string(nseFirst ? "nse_token" : "bse_code") + "='" +
                              Text(r, 10100, 0) + "')";
    const std::string where = " FROM holding WHERE client_id='" + client +
                              "' AND scrip_id=" + scrip + " AND product='" + Text(r, 64030) + "'";
    ASSERT_EQ(Count("SELECT count(*)" + where), 1) << where;
    EXPECT_EQ(Join(r, {54001, 64044, 64300, 64205, 64297, 64301, 64461, 64462, 64204, 64435, 64172,
                       64171, 59351}),
              Str("SELECT client_id||','||holdings_qty||','||holdings_update_qty||','||used_qty||"
                  "','||collateral_qty||','||collateral_update_qty||','||withheld_holding_qty||"
                  "','||withheld_collateral_qty||','||t1_qty||','||t1_collateral_qty||','||"
                  "printf('%.2f',haircut_bp/100.0)||','||ifnull(collateral_type,'<absent>')||"
                  "','||(SELECT close_paise FROM scrip WHERE id=scrip_id)||','" +
                  where));
    const bool both = Count("SELECT nse_token IS NOT NULL AND bse_code IS NOT NULL FROM scrip "
                            "WHERE id=" +
                            scrip) == 1;
    EXPECT_EQ(*r.Count(63001), both ? 2u : 1u);
    EXPECT_EQ(*r.Count(63100), *r.Count(63001));
    if (both) {
      EXPECT_TRUE(nseFirst);
      EXPECT_EQ(Text(r, 63001, 1), "bse_cm");
      EXPECT_EQ(Text(r, 63100, 0),
                Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE id=" + scrip));
      EXPECT_EQ(Text(r, 10100, 1), Text(r, 63003));
    }
    EXPECT_FALSE(r.Count(32766));
  }
}

TEST_F(ServerTest, ClientReports) {
  const struct {
    const char* name;
    Fields fields;
    std::string where;
  } cases[] = {
      {"all segments", {{54247, "RMS1"}, {32760, "--ALL--"}}, "1"},
      {"derivatives", {{54247, "RMS1"}, {63002, "FO"}, {32760, "FO"}}, "segment='FO'"},
      {"limited user",
       {{54247, "RMS2"}, {63002, "CASH"}, {32760, "CASH"}},
       "segment='CASH'" + kSeenByRms2},
      {"unknown user", {{54247, "NOBODY"}, {32760, "--ALL--"}}, "0"},
  };
  for (const auto& c : cases) {
    const Stream s = Ask(MakeRequest("om_get_client_reports", c.fields));
    ASSERT_TRUE(s.ended) << c.name;
    EXPECT_FALSE(s.status) << c.name << ": the closing status carries no value";
    EXPECT_EQ(int64_t(s.records.size()), Count("SELECT count(*) FROM lien WHERE " + c.where))
        << c.name;
    if (s.records.empty())
      continue;
    const auto& r = s.records.front();
    EXPECT_EQ(Join(r, {41363, 64287, 64288}),
              Str("SELECT printf('%.2f,%.2f,%.2f,', lien_paise/100.0, payin_paise/100.0, "
                  "payout_paise/100.0) FROM lien WHERE client_id='" +
                  Text(r, 54001) + "' AND segment='" + Text(r, 32760) + "'"))
        << c.name;
  }
}

TEST_F(ServerTest, TopTenHoldings) {
  std::map<std::string, std::string> firstSymbol;
  for (const char* exchange : {"NSE", "BSE"}) {
    for (const char* method : {"1", "3", "4"}) {
      const std::string name = std::string(exchange) + "/" + method;
      const Stream s =
          Ask(MakeRequest("rs_display_topten_holdings", {{10101, exchange}, {41232, method}}));
      ASSERT_TRUE(s.ended) << name;
      ASSERT_EQ(s.records.size(), 1u) << name;
      const auto& r = s.records[0];
      for (uint32_t tag : {20008, 54001, 41231})
        ASSERT_EQ(r.Count(tag), 10u) << name << " " << tag;
      EXPECT_EQ(Text(r, 10101), std::string(exchange) == "NSE" ? "nse_cm" : "bse_cm");
      firstSymbol[name] = Text(r, 20008);
      if (std::string(method) != "1")
        continue;
      // Smallest first: the dialog shows the last row on top.
      for (uint32_t i = 1; i < 10; ++i)
        EXPECT_LE(std::stoll(Text(r, 41231, i - 1)), std::stoll(Text(r, 41231, i))) << name;
      // Prices open within 3% of the close, so no holding can be worth more
      // than the largest row by more than that.
      EXPECT_GE(std::stoll(Text(r, 41231, 9)),
                Count("SELECT max(holdings_qty*(close_paise-close_paise*3/100)) FROM holding JOIN "
                      "scrip ON scrip.id=scrip_id"))
          << name;
    }
  }
  EXPECT_NE(firstSymbol["NSE/3"], firstSymbol["NSE/4"]);
}

TEST_F(ServerTest, ScripMasterHasOneRecordPerLeg) {
  const Stream s = Ask(MakeRequest("tarn_scrip_master"));
  ASSERT_TRUE(s.ended);
  EXPECT_EQ(int64_t(s.records.size()),
            Count("SELECT count(nse_token) + count(bse_code) FROM scrip"));
  int nse = 0;
  for (const auto& r : s.records) {
    const bool isNse = Text(r, 65000) == "NSE";
    nse += isNse;
    EXPECT_EQ(Text(r, 65007).size(), 12u);
    EXPECT_EQ(Text(r, isNse ? 65003 : 65001) + "," + Text(r, 65006),
              Str(std::string("SELECT ") + (isNse ? "nse_symbol||'-'||nse_series" : "bse_code") +
                  "||','||printf('%.2f', close_paise/100.0) FROM scrip WHERE isin='" +
                  Text(r, 65007) + "'"));
  }
  EXPECT_EQ(nse, Count("SELECT count(nse_token) FROM scrip"));
}

TEST_F(ServerTest, UserInfo) {
  // No id is the desk's administrator, who has the right and every client.
  for (const std::string user : {"", "RMS2"}) {
    const Stream s = Ask(MakeRequest("tarn_user_info", {{31003, user}}));
    ASSERT_TRUE(s.ended) << user;
    EXPECT_EQ(s.status, "1");
    ASSERT_FALSE(s.records.empty()) << user;
    EXPECT_EQ(Join(s.records[0], {32760, 31003, 65101, 65102}),
              user.empty() ? "USER,RMS1,1,<absent>,"
                           : "USER,RMS2,0,RMS View Holdings: Mark/UnMark,");
    int64_t clients = 0;
    for (size_t i = 1; i < s.records.size(); ++i) {
      EXPECT_EQ(Text(s.records[i], 32760), "CLIENTS");
      clients += s.records[i].Count(54001).value_or(0);
    }
    EXPECT_EQ(clients,
              Count(user.empty() ? "SELECT count(*) FROM client"
                                 : "SELECT count(*) FROM user_client WHERE user_id='" + user + "'"))
        << user;
  }
  const Stream unknown = Ask(MakeRequest("tarn_user_info", {{31003, "NOBODY"}}));
  EXPECT_TRUE(unknown.records.empty());
  EXPECT_EQ(unknown.status, "2");
}

} // namespace
} // namespace riskd_test
