// Who may see what: every connection logs in before its first request; a
// desk user sees only their own clients whatever a request names; under
// --auth a wrong password gets nothing.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <set>

#include "riskd/passwords.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

constexpr const char* kPassword = "correct horse";
const Fields kRms2Login = {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, kPassword}};

bool Accepts(const riskd::Db& db, const char* user, const char* password) {
  return riskd::VerifyPassword(riskd::PasswordHash(db, user), password);
}

class TrustTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    options_.refusedLoginDelay = std::chrono::milliseconds(200);
  }
  void Start(bool auth) {
    options_.auth = auth;
    StartServer();
    std::string error;
    ASSERT_TRUE(!auth || riskd::SetPassword(db_, "RMS2", kPassword, &error)) << error;
  }
  std::set<std::string> Rms2Clients() {
    std::set<std::string> out;
    riskd::Stmt s = db_.Prepare("SELECT client_id FROM user_client WHERE user_id='RMS2'", nullptr);
    while (s.Step() == SQLITE_ROW)
      out.emplace(s.Text(0));
    return out;
  }
};

// Every request a desk user can send, naming the administrator or no one,
// comes back as RMS2's view only.
TEST_F(TrustTest, LoggedInUserIsAnsweredWhateverTheRequestNames) {
  Start(true);
  TestClient c(server_->port(), nullptr);
  ASSERT_EQ(c.Ask(MakeRequest("tarn_login", kRms2Login)).status, "1");
  const std::set<std::string> own = Rms2Clients();
  const std::string hidden =
      Str("SELECT id FROM client WHERE id NOT IN (SELECT client_id FROM user_client WHERE"
          " user_id='RMS2') AND id IN (SELECT client_id FROM holding) LIMIT 1");
  ASSERT_FALSE(hidden.empty());
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
        EXPECT_TRUE(own.count(Text(r, vh::kTagClientId, i))) << cs.name;
      if (r.Text(vh::kTagSubKind) == "USER") {
        EXPECT_EQ(Text(r, vh::kTagUserId), "RMS2") << cs.name;
      }
    }
  }
  // The hot scrip's query, the last, leaves present values for the visible clients.
  const Stream present = c.Collect("om_get_prsnt_values");
  ASSERT_EQ(present.records.size(), 1u);
  EXPECT_EQ(Text(present.records[0], vh::kTagHoldingsQty),
            Str("SELECT sum(holdings_qty) FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE"
                " s.nse_symbol||'-'||s.nse_series='" +
                HotScrip() +
                "' AND client_id IN (SELECT client_id FROM user_client WHERE user_id='RMS2')"));
  // Nor may RMS2 mark a hidden client's holding by naming the administrator.
  const std::string where = " FROM holding WHERE client_id='" + hidden + "'";
  const std::string before = Str("SELECT group_concat(holdings_qty)" + where);
  SendAndWait(c, TransferRequest(hidden, Str("SELECT scrip_id" + where),
                                 Str("SELECT product" + where), "1", "MF"));
  EXPECT_EQ(Str("SELECT group_concat(holdings_qty)" + where), before);
  EXPECT_EQ(Str("SELECT user_id||' '||applied||' '||reason FROM ledger ORDER BY id DESC LIMIT 1"),
            "RMS2 0 user 'RMS2' may not see client '" + hidden + "'");
  const Stream peer = c.Ask(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}}));
  ASSERT_EQ(peer.records.size(), 1u);
  EXPECT_EQ(Text(peer.records[0], vh::kTagPeerValue), "P002");
}

TEST_F(TrustTest, WithoutAuthOnlyLoopbackIsServed) {
  const struct {
    const char* name;
    const char* host;
    bool auth;
    bool starts;
  } cases[] = {
      {"loopback", "127.0.0.1", false, true},
      {"otherLoopbackAddress", "127.0.0.2", false, true},
      {"anyAddress", "0.0.0.0", false, false},
      {"notAnAddress", "localhost", false, false},
      {"anyAddressWithAuth", "0.0.0.0", true, true},
  };
  for (const auto& c : cases) {
    options_.host = c.host;
    options_.auth = c.auth;
    std::string error;
    auto server = riskd::RiskServer::Start(options_, &error);
    EXPECT_EQ(server != nullptr, c.starts) << c.name << ": " << error;
    EXPECT_EQ(error.find("loopback only") != std::string::npos, !c.starts) << c.name;
  }
}

TEST_F(TrustTest, NothingIsAnsweredBeforeTheLogin) {
  const struct {
    const char* name;
    bool auth;
    Fields login; // sent first; none when empty
    const char* loginStatus;
  } cases[] = {
      {"noLoginAtAll", false, {}, nullptr},
      {"authNoPassword", true, {{vh::kTagUserId, "RMS2"}}, "3"},
      {"authWrongPassword", true, {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, "wrong"}}, "2"},
      {"authUserWithoutPassword", true, {{vh::kTagUserId, "RMS1"}, {vh::kTagPassword, ""}}, "2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Start(c.auth);
    TestClient client(server_->port(), nullptr);
    if (!c.login.empty()) {
      EXPECT_EQ(client.Ask(MakeRequest("tarn_login", c.login)).status.value_or("-"), c.loginStatus);
    }
    // Whatever came before, a request gets nothing and the connection goes.
    EXPECT_TRUE(client.Send(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}})));
    EXPECT_FALSE(client.Collect("om_get_user_peer_data", 2000).ended);
    EXPECT_TRUE(client.WaitClosed());
    if (c.loginStatus && *c.loginStatus == '2') {
      EXPECT_TRUE(LogHas("login as '" + c.login[0].second + "' refused"));
    }
  }
}

TEST_F(TrustTest, ConnectionsThatNeverLogInDoNotKeepTheirPlace) {
  options_.loginTimeout = std::chrono::milliseconds(300);
  options_.maxConnections = 4;
  Start(true);
  for (const Fields& login : {Fields{}, Fields{{vh::kTagUserId, "RMS2"}}}) {
    std::vector<std::unique_ptr<TestClient>> idle;
    for (int i = 0; i < 4; ++i) {
      idle.push_back(std::make_unique<TestClient>(server_->port(), nullptr));
      if (!login.empty()) {
        EXPECT_EQ(idle.back()->Ask(MakeRequest("tarn_login", login)).status, "3");
      }
    }
    for (auto& client : idle)
      EXPECT_TRUE(client->WaitClosed(3000)) << login.size();
    // The places are free again for a desk user.
    TestClient user(server_->port(), nullptr);
    EXPECT_EQ(user.Ask(MakeRequest("tarn_login", kRms2Login)).status, "1");
  }
  EXPECT_TRUE(LogHas("no login within"));
}

TEST_F(TrustTest, RequestsSentWithTheLoginWaitForIt) {
  for (bool auth : {false, true}) {
    Start(auth);
    TestClient client(server_->port(), nullptr);
    std::string frames;
    for (const auto& m : {MakeRequest("tarn_login", kRms2Login),
                          MakeRequest("om_get_user_peer_data"), MakeRequest("tarn_user_info")})
      ASSERT_TRUE(kdl::AppendFrame(frames, m.Serialise()));
    ASSERT_TRUE(client.SendRaw(frames)); // one write: the server reads them together
    const Stream peer = client.Collect("om_get_user_peer_data");
    ASSERT_EQ(peer.records.size(), 1u) << auth;
    EXPECT_EQ(Text(peer.records[0], vh::kTagPeerValue), "P002") << auth;
    EXPECT_TRUE(client.Collect("tarn_user_info").ended) << auth;
    // A second login closes the connection.
    EXPECT_TRUE(client.Send(MakeRequest("tarn_login", {{vh::kTagUserId, "RMS1"}})));
    EXPECT_TRUE(client.WaitClosed()) << auth;
  }
}

class Passwords : public ::testing::Test {
protected:
  void SetUp() override {
    riskd::StoreSetup setup;
    setup.dbPath = (dir_.path() / "p.db").string();
    setup.sample.holdings = 100;
    std::string error;
    ASSERT_TRUE(riskd::SetUpStore(
        setup, [](const std::string&) {}, &db_, &error))
        << error;
  }
  TempDir dir_;
  riskd::Db db_;
};

TEST_F(Passwords, StoredOnlyAsSaltedHashes) {
  std::string error;
  ASSERT_TRUE(riskd::SetPassword(db_, "RMS1", "s3cret", &error)) << error;
  ASSERT_TRUE(riskd::SetPassword(db_, "RMS2", "s3cret", &error)) << error;
  EXPECT_TRUE(Accepts(db_, "RMS2", "s3cret"));
  EXPECT_FALSE(Accepts(db_, "DEALER1", "s3cret")) << "a user without a password";
  EXPECT_FALSE(riskd::VerifyPassword("$argon2id$nonsense", "s3cret"));
  riskd::Stmt s = db_.Prepare("SELECT group_concat(hash,'|') FROM user_password", nullptr);
  ASSERT_EQ(s.Step(), SQLITE_ROW);
  const std::string a(s.Text(0));
  EXPECT_EQ(a.find("s3cret"), std::string::npos);
  EXPECT_EQ(a.rfind("$argon2id$", 0), 0u) << a;
  EXPECT_NE(a.substr(0, a.find('|')), a.substr(a.find('|') + 1)) << "same salt twice";
  EXPECT_FALSE(riskd::SetPassword(db_, "NOBODY", "x", &error));
  EXPECT_FALSE(riskd::SetPassword(db_, "RMS1", "", &error));
}

TEST_F(Passwords, AStoreFromBeforePasswordsGainsTheirTable) {
  std::string error;
  ASSERT_TRUE(db_.Exec("DROP TABLE user_password; PRAGMA user_version=1", &error)) << error;
  riskd::Db db;
  ASSERT_TRUE(riskd::OpenStore((dir_.path() / "p.db").string(), &db, &error)) << error;
  EXPECT_EQ(db.QueryInt("PRAGMA user_version"), riskd::kSchemaVersion);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM user_password", -1), 0);
}

TEST_F(Passwords, SetFromStandardInput) {
  const std::string db = (dir_.path() / "p.db").string();
  const struct {
    const char* name;
    const char* input; // piped to standard input
    const char* user;
    bool succeeds;
  } cases[] = {
      {"knownUser", "pass word\n", "RMS2", true},
      {"lastLineWithoutEnd", "other", "RMS1", true},
      {"unknownUser", "pass word\n", "NOBODY", false},
      {"nothingOnStandardInput", "", "DEALER1", false},
  };
  for (const auto& c : cases) {
    const std::string command = "printf '%s' '" + std::string(c.input) +
                                "' | " TARN_RISKD_EXE " --db " + db + " --set-password " + c.user +
                                " 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()) == 0, c.succeeds) << c.name;
  }
  EXPECT_TRUE(Accepts(db_, "RMS2", "pass word"));
  EXPECT_TRUE(Accepts(db_, "RMS1", "other"));
  EXPECT_FALSE(Accepts(db_, "DEALER1", ""));
}

} // namespace
} // namespace riskd_test
