// Who may see what: every connection logs in before its first request; a
// desk user sees only their own clients whatever a request names; under
// --auth a wrong password gets nothing.
#include <gtest/gtest.h>

#include "riskd/passwords.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

constexpr const char* kPassword = "correct horse";
const Fields kRms2Login = {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, kPassword}};
const std::string kSeenByRms2 =
    "client_id IN (SELECT client_id FROM user_client WHERE user_id='RMS2')";

class TrustTest : public RiskdTest {
protected:
  void Start(bool auth) {
    options_.auth = auth;
    options_.refusedLoginDelay = std::chrono::milliseconds(200);
    StartServer();
    std::string error;
    ASSERT_TRUE(!auth || riskd::SetPassword(db_, "RMS2", kPassword, &error)) << error;
  }
};

// Every request a desk user can send, naming the administrator or no one,
// comes back as RMS2's view only.
TEST_F(TrustTest, LoggedInUserIsAnsweredWhateverTheRequestNames) {
  Start(true);
  TestClient c(server_->port(), nullptr);
  ASSERT_EQ(c.Ask(MakeRequest(vh::kLoginRequest, kRms2Login)).status, vh::kLoginAccepted);
  const std::string hidden = Str("SELECT client_id FROM holding WHERE NOT " + kSeenByRms2);
  const struct {
    const char* name;
    kdl::Message request;
    size_t minRecords; // the request must show something of RMS2's own
  } cases[] = {
      {"holdingsOfAHiddenClient",
       MakeRequest("display_holding_detail",
                   {{vh::kTagClientId, hidden}, {vh::kTagUserId, "RMS1"}}),
       0},
      {"topTenNamingNoOne",
       MakeRequest("rs_display_topten_holdings",
                   {{vh::kTagExchange, "NSE"}, {vh::kTagTopMethod, "1"}}),
       1},
      {"lienNamingTheAdministrator",
       MakeRequest("om_get_client_reports", {{vh::kTagSourceUserId, "RMS1"}}), 1},
      {"userInfoNamingTheAdministrator", MakeRequest("tarn_user_info", {{vh::kTagUserId, "RMS1"}}),
       2},
      {"holdingsOfAHotScripNamingTheAdministrator", HotQuery(), 1},
  };
  for (const auto& cs : cases) {
    const Stream s = c.Ask(cs.request);
    ASSERT_TRUE(s.ended) << cs.name;
    EXPECT_GE(s.records.size(), cs.minRecords) << cs.name;
    for (const auto& r : s.records) {
      for (uint32_t i = 0; i < r.Count(vh::kTagClientId).value_or(0); ++i)
        EXPECT_EQ(Count("SELECT count(*) FROM user_client WHERE user_id='RMS2' AND client_id='" +
                        Text(r, vh::kTagClientId, i) + "'"),
                  1)
            << cs.name;
      EXPECT_TRUE(!r.Count(vh::kTagUserId) || Text(r, vh::kTagUserId) == "RMS2") << cs.name;
    }
  }
  // The hot scrip's query, the last, leaves present values for the visible clients.
  const Stream present = c.Collect("om_get_prsnt_values");
  ASSERT_EQ(present.records.size(), 1u);
  EXPECT_EQ(Text(present.records[0], vh::kTagHoldingsQty),
            Str(std::string("SELECT sum(holdings_qty) FROM holding WHERE scrip_id=(") +
                kHotScripId + ") AND " + kSeenByRms2));
  // Nor may RMS2 mark a hidden client's holding by naming the administrator.
  const std::string where = " FROM holding WHERE client_id='" + hidden + "'";
  SendAndWait(c, TransferRequest(hidden, Str("SELECT scrip_id" + where),
                                 Str("SELECT product" + where), "1", "MF"));
  EXPECT_EQ(Str("SELECT user_id||' '||applied||' '||reason FROM ledger ORDER BY id DESC LIMIT 1"),
            "RMS2 0 user 'RMS2' may not see client '" + hidden + "'");
}

// Requests sent in the same write as the login wait for it: they are answered
// as the user it admits, and not at all (the connection closes) when it
// admits no one. A connection that never logs in does not keep its place.
TEST_F(TrustTest, RequestsWaitForTheLogin) {
  options_.loginTimeout = std::chrono::milliseconds(500);
  options_.maxConnections = 1;
  const Fields rms2 = {{vh::kTagUserId, "RMS2"}};
  const Fields rms1WithoutPassword = {{vh::kTagUserId, "RMS1"}, {vh::kTagPassword, ""}};
  const struct {
    const char* name;
    bool auth;
    Fields login; // none when empty: nothing is sent
    std::string_view status;
  } cases[] = {
      {"silent", true, {}, ""},
      {"rightPassword", true, kRms2Login, vh::kLoginAccepted},
      {"noPassword", true, rms2, vh::kPasswordNeeded},
      {"wrongPassword", true, {rms2[0], {vh::kTagPassword, "wrong"}}, vh::kLoginRefused},
      {"userWithoutPassword", true, rms1WithoutPassword, vh::kLoginRefused},
      {"greeting", false, rms2, vh::kLoginAccepted},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    // One server while the mode stays: each case takes the only place, which
    // the one before must have left.
    if (!server_ || options_.auth != c.auth)
      Start(c.auth);
    TestClient client(server_->port(), nullptr);
    std::string frames;
    for (const auto& m : {MakeRequest(vh::kLoginRequest, c.login),
                          MakeRequest("om_get_user_peer_data"), MakeRequest("tarn_user_info")})
      ASSERT_TRUE(c.login.empty() || kdl::AppendFrame(frames, m.Serialise()));
    ASSERT_TRUE(client.SendRaw(frames)); // one write: the server reads them together
    if (!c.login.empty()) {
      EXPECT_EQ(client.Collect(vh::kLoginRequest).status, c.status);
    }
    const Stream peer = client.Collect("om_get_user_peer_data", 2000);
    if (c.status != vh::kLoginAccepted) {
      EXPECT_FALSE(peer.ended);
      EXPECT_TRUE(client.WaitClosed());
      continue;
    }
    ASSERT_EQ(peer.records.size(), 1u);
    EXPECT_EQ(Text(peer.records[0], vh::kTagPeerValue), "P002");
    EXPECT_TRUE(client.Collect("tarn_user_info").ended);
    // A second login closes the connection.
    EXPECT_TRUE(client.Send(MakeRequest(vh::kLoginRequest, {{vh::kTagUserId, "RMS1"}})));
    EXPECT_TRUE(client.WaitClosed());
  }
  EXPECT_TRUE(LogHas("no login within"));
  EXPECT_TRUE(LogHas("login as 'RMS2' refused"));
}

} // namespace
} // namespace riskd_test
