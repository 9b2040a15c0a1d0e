// Request/answer over a real socket, one request name at a time.
#include <gtest/gtest.h>

#include <map>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

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
  std::string Visible(const std::string& user) {
    return user == "RMS1"
               ? "1"
               : "client_id IN (SELECT client_id FROM user_client WHERE user_id='" + user + "')";
  }
};

// Every field of every record against the row it came from.
TEST_F(ServerTest, HoldingsByClientCarryTheRowsFields) {
  const std::string client =
      Str("SELECT client_id FROM holding GROUP BY 1 ORDER BY count(*) DESC, 1 LIMIT 1");
  const Stream s = Ask(MakeRequest("display_holding_detail", {{54001, client}, {31003, "RMS1"}}));
  ASSERT_TRUE(s.ended);
  EXPECT_EQ(s.status, "1");
  ASSERT_EQ(int64_t(s.records.size()),
            Count("SELECT count(*) FROM holding WHERE client_id='" + client + "'"));
  const std::pair<uint32_t, const char*> quantities[] = {{64044, "holdings_qty"},
                                                         {64300, "holdings_update_qty"},
                                                         {64205, "used_qty"},
                                                         {64297, "collateral_qty"},
                                                         {64301, "collateral_update_qty"},
                                                         {64461, "withheld_holding_qty"},
                                                         {64462, "withheld_collateral_qty"},
                                                         {64204, "t1_qty"},
                                                         {64435, "t1_collateral_qty"}};
  for (const auto& r : s.records) {
    EXPECT_EQ(Text(r, 54001), client);
    const bool nseFirst = Text(r, 63001, 0) == "nse_cm";
    const std::string scrip = "(SELECT id FROM scrip WHERE " +
                              std::string(nseFirst ? "nse_token" : "bse_code") + "='" +
                              Text(r, 10100, 0) + "')";
    const std::string where = " FROM holding WHERE client_id='" + client +
                              "' AND scrip_id=" + scrip + " AND product='" + Text(r, 64030) + "'";
    ASSERT_EQ(Count("SELECT count(*)" + where), 1) << where;
    for (const auto& [tag, column] : quantities)
      EXPECT_EQ(Text(r, tag), std::to_string(Count(std::string("SELECT ") + column + where)))
          << column;
    EXPECT_EQ(Text(r, 64172), Str("SELECT printf('%.2f', haircut_bp/100.0)" + where));
    const std::string type = Str("SELECT ifnull(collateral_type,'<absent>')" + where);
    EXPECT_EQ(Text(r, 64171), type);
    EXPECT_EQ(Text(r, 59351), Str("SELECT close_paise FROM scrip WHERE id=" + scrip));
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

TEST_F(ServerTest, HoldingsOnlyForClientsTheUserMaySee) {
  const struct {
    const char* name;
    const char* user;
    const char* client;
    bool rows;
  } cases[] = {
      {"adminAnyClient", "RMS1", "C000002", true},  {"listedClient", "RMS2", "C000001", true},
      {"unlistedClient", "RMS2", "C000002", false}, {"unknownUser", "NOBODY", "C000001", false},
      {"unknownClient", "RMS1", "C999999", false},
  };
  for (const auto& c : cases) {
    const std::string have =
        "SELECT count(*) FROM holding WHERE client_id='" + std::string(c.client) + "'";
    ASSERT_TRUE(!c.rows || Count(have) > 0) << c.name << ": sample lacks the client";
    const Stream s =
        Ask(MakeRequest("display_holding_detail", {{54001, c.client}, {31003, c.user}}));
    EXPECT_TRUE(s.ended) << c.name;
    EXPECT_EQ(int64_t(s.records.size()), c.rows ? Count(have) : 0) << c.name;
  }
}

TEST_F(ServerTest, HoldingsByScripLegs) {
  const std::string both = "FROM scrip WHERE nse_token IS NOT NULL AND bse_code IS NOT NULL "
                           "ORDER BY id LIMIT 1";
  const std::string id = Str("SELECT id " + both);
  const std::string nse = Str("SELECT nse_symbol||'-'||nse_series " + both);
  const std::string token = Str("SELECT nse_token " + both);
  const std::string bseSymbol = Str("SELECT bse_symbol " + both);
  const std::string code = Str("SELECT bse_code " + both);
  const struct {
    const char* name;
    Fields legs;
  } cases[] = {
      {"nseTradingSymbol", {{63001, "nse_cm"}, {10100, nse}}},
      {"nseToken", {{63001, "nse_cm"}, {10100, token}}},
      {"bseSymbol", {{63001, "bse_cm"}, {10100, bseSymbol}}},
      {"bseCode", {{63001, "bse_cm"}, {10100, code}}},
      {"bothLegs", {{63001, "nse_cm"}, {10100, nse}, {63001, "bse_cm"}, {10100, bseSymbol}}},
      {"codeOnlyIn63003", {{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {63003, code}}},
  };
  for (const char* user : {"RMS2"}) { // a limited user: the admin sees a superset
    const int64_t want =
        Count("SELECT count(*) FROM holding WHERE scrip_id=" + id + " AND " + Visible(user));
    ASSERT_GT(want, 0);
    for (const auto& c : cases) {
      Fields fields = c.legs;
      fields.push_back({31003, user});
      const Stream s = Ask(MakeRequest("display_holding_detail", fields));
      EXPECT_TRUE(s.ended) << c.name;
      EXPECT_EQ(int64_t(s.records.size()), want) << c.name << " as " << user;
    }
  }
  const Stream none = Ask(MakeRequest("display_holding_detail",
                                      {{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {31003, "RMS1"}}));
  EXPECT_TRUE(none.ended);
  EXPECT_TRUE(none.records.empty());
}

TEST_F(ServerTest, BseCounterpart) {
  const std::string both = "FROM scrip WHERE nse_token IS NOT NULL AND bse_code IS NOT NULL "
                           "ORDER BY id LIMIT 1";
  const std::string nseOnly = "FROM scrip WHERE nse_token IS NOT NULL AND bse_code IS NULL "
                              "ORDER BY id LIMIT 1";
  ASSERT_FALSE(Str("SELECT id " + nseOnly).empty()) << "sample lacks an NSE-only scrip";
  const struct {
    const char* name;
    std::string asked;
    std::string bse; // "<absent>" when there is none
  } cases[] = {
      {"tradingSymbol", Str("SELECT nse_symbol||'-'||nse_series " + both),
       Str("SELECT bse_symbol " + both)},
      {"bareSymbol", Str("SELECT nse_symbol " + both), Str("SELECT bse_symbol " + both)},
      {"isin", Str("SELECT isin " + both), Str("SELECT bse_symbol " + both)},
      {"nseOnly", Str("SELECT nse_symbol||'-'||nse_series " + nseOnly), "<absent>"},
      {"unknown", "NOSUCH-EQ", "<absent>"},
  };
  for (const auto& c : cases) {
    const Stream s = Ask(MakeRequest("mrv_cj", {{63003, c.asked}, {63001, "bse_cm"}}));
    ASSERT_TRUE(s.ended) << c.name;
    ASSERT_EQ(s.records.size(), 1u) << c.name;
    EXPECT_EQ(Text(s.records[0], 10100), c.bse) << c.name;
  }
}

TEST_F(ServerTest, PeerData) {
  for (const char* user : {"RMS2"}) {
    const Stream s = Ask(MakeRequest("om_get_user_peer_data", {{31003, user}}));
    ASSERT_EQ(s.records.size(), 1u) << user;
    EXPECT_EQ(Text(s.records[0], 64056),
              Str("SELECT peer FROM user WHERE id='" + std::string(user) + "'"));
  }
  const Stream unknown = Ask(MakeRequest("om_get_user_peer_data", {{31003, "NOBODY"}}));
  EXPECT_TRUE(unknown.ended);
  EXPECT_TRUE(unknown.records.empty());
}

TEST_F(ServerTest, ClientReports) {
  const struct {
    const char* name;
    const char* user;
    Fields fields;
    std::string where;
  } cases[] = {
      {"allSegments", "RMS1", {{32760, "--ALL--"}}, "1"},
      {"derivatives", "RMS1", {{63002, "FO"}, {32760, "FO"}}, "segment='FO'"},
      {"limitedUser", "RMS2", {{63002, "CASH"}, {32760, "CASH"}}, "segment='CASH'"},
      {"unknownUser", "NOBODY", {{32760, "--ALL--"}}, "0"},
  };
  for (const auto& c : cases) {
    Fields fields = {{54247, c.user}};
    fields.insert(fields.end(), c.fields.begin(), c.fields.end());
    const Stream s = Ask(MakeRequest("om_get_client_reports", fields));
    ASSERT_TRUE(s.ended) << c.name;
    EXPECT_FALSE(s.status) << c.name << ": the closing status carries no value";
    const std::string where = c.where + " AND " + Visible(c.user);
    EXPECT_EQ(int64_t(s.records.size()), Count("SELECT count(*) FROM lien WHERE " + where))
        << c.name;
    if (s.records.empty())
      continue;
    const auto& r = s.records.front();
    const std::string row =
        " FROM lien WHERE client_id='" + Text(r, 54001) + "' AND segment='" + Text(r, 32760) + "'";
    EXPECT_EQ(Text(r, 41363), Str("SELECT printf('%.2f', lien_paise/100.0)" + row)) << c.name;
    EXPECT_EQ(Text(r, 64287), Str("SELECT printf('%.2f', payin_paise/100.0)" + row)) << c.name;
    EXPECT_EQ(Text(r, 64288), Str("SELECT printf('%.2f', payout_paise/100.0)" + row)) << c.name;
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
      ASSERT_EQ(r.Count(20008), 10u) << name;
      ASSERT_EQ(r.Count(54001), 10u) << name;
      ASSERT_EQ(r.Count(41231), 10u) << name;
      EXPECT_EQ(Text(r, 10101), std::string(exchange) == "NSE" ? "nse_cm" : "bse_cm");
      firstSymbol[name] = Text(r, 20008);
      if (std::string(method) != "1")
        continue;
      for (uint32_t i = 1; i < 10; ++i)
        EXPECT_GE(std::stoll(Text(r, 41231, i - 1)), std::stoll(Text(r, 41231, i))) << name;
      // Prices open within 3% of the close, so no holding can be worth more
      // than the first row by more than that.
      EXPECT_GE(std::stoll(Text(r, 41231, 0)),
                Count("SELECT max(holdings_qty*(close_paise-close_paise*3/100)) FROM holding JOIN "
                      "scrip ON scrip.id=scrip_id"))
          << name;
    }
  }
  EXPECT_NE(firstSymbol["NSE/3"], firstSymbol["NSE/4"]);
  for (const Fields& bad :
       {Fields{{10101, "NSE"}, {41232, "2"}}, Fields{{10101, "CSE"}, {41232, "1"}},
        Fields{{10101, "NSE"}, {41232, "1"}, {31003, "NOBODY"}}}) {
    const Stream s = Ask(MakeRequest("rs_display_topten_holdings", bad));
    EXPECT_TRUE(s.ended);
    EXPECT_TRUE(s.records.empty());
  }
}

TEST_F(ServerTest, ScripMasterHasOneRecordPerLeg) {
  const Stream s = Ask(MakeRequest("tarn_scrip_master"));
  ASSERT_TRUE(s.ended);
  EXPECT_EQ(int64_t(s.records.size()),
            Count("SELECT count(nse_token) + count(bse_code) FROM scrip"));
  std::map<std::string, int> segments;
  for (const auto& r : s.records) {
    ++segments[Text(r, 65000)];
    EXPECT_EQ(Text(r, 65007).size(), 12u);
    const std::string isin = Text(r, 65007);
    if (Text(r, 65000) == "NSE")
      EXPECT_EQ(Text(r, 65003),
                Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE isin='" + isin + "'"));
    else
      EXPECT_EQ(Text(r, 65001), Str("SELECT bse_code FROM scrip WHERE isin='" + isin + "'"));
    EXPECT_EQ(Text(r, 65006), Str("SELECT printf('%.2f', close_paise/100.0) FROM scrip WHERE "
                                  "isin='" +
                                  isin + "'"));
  }
  EXPECT_EQ(segments["NSE"], Count("SELECT count(nse_token) FROM scrip"));
}

TEST_F(ServerTest, UserInfo) {
  // No id is the desk's administrator, who has the right and every client.
  for (const std::string user : {"", "RMS2"}) {
    const Stream s = Ask(MakeRequest("tarn_user_info", {{31003, user}}));
    ASSERT_TRUE(s.ended) << user;
    EXPECT_EQ(s.status, "1");
    ASSERT_FALSE(s.records.empty()) << user;
    EXPECT_EQ(Text(s.records[0], 32760), "USER");
    EXPECT_EQ(Text(s.records[0], 31003), user.empty() ? "RMS1" : user);
    EXPECT_EQ(Text(s.records[0], 65101), user.empty() ? "1" : "0");
    EXPECT_EQ(Text(s.records[0], 65102),
              user.empty() ? "<absent>" : "RMS View Holdings: Mark/UnMark");
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
