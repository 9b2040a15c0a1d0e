// Who may see what: every connection logs in before its first request; a
// desk user sees only their own clients whatever a request names; under
// --auth a wrong password gets nothing.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <condition_variable>
#include <mutex>
#include <set>

#include "kdl/tags.h"
#include "riskd/password_checker.h"
#include "riskd/passwords.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

constexpr const char* kPassword = "correct horse";

bool Accepts(const riskd::Db& db, const char* user, const char* password) {
  return riskd::VerifyPassword(riskd::PasswordHash(db, user), password);
}

class TrustTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    options_.refusedLoginDelay = std::chrono::milliseconds(200);
  }
  void StartWithAuth() {
    options_.auth = true;
    StartServer();
    std::string error;
    ASSERT_TRUE(riskd::SetPassword(db_, "RMS2", kPassword, &error)) << error;
  }
  // The clients RMS2 may see (every other client of the sample).
  std::set<std::string> Rms2Clients() {
    std::set<std::string> out;
    riskd::Stmt s = db_.Prepare("SELECT client_id FROM user_client WHERE user_id='RMS2'", nullptr);
    while (s.Step() == SQLITE_ROW)
      out.emplace(s.Text(0));
    return out;
  }
  std::string HiddenClient() {
    return Str("SELECT id FROM client WHERE id NOT IN (SELECT client_id FROM user_client WHERE"
               " user_id='RMS2') AND id IN (SELECT client_id FROM holding) LIMIT 1");
  }
  std::string HotScrip() {
    return Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE id=(SELECT scrip_id FROM "
               "holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1)");
  }
  // Logs in as RMS2 with the right password.
  std::unique_ptr<TestClient> LogInRms2() {
    auto c = std::make_unique<TestClient>(server_->port(), nullptr);
    const Stream s = c->Ask(
        MakeRequest("tarn_login", {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, kPassword}}));
    EXPECT_EQ(s.status, "1");
    return c;
  }

  // Every request a desk user can send, each naming the administrator or no
  // one, must come back as RMS2's view only.
  void ExpectOnlyOwnClients(TestClient& c) {
    const std::set<std::string> own = Rms2Clients();
    const std::string hidden = HiddenClient();
    ASSERT_FALSE(hidden.empty());
    const struct {
      const char* name;
      kdl::Message request;
      const char* answered;
      uint32_t clientTag;
      size_t minRecords; // the request must show something of RMS2's own
    } cases[] = {
        {"holdingsOfAHiddenClient",
         MakeRequest("display_holding_detail",
                     {{vh::kTagClientId, hidden}, {vh::kTagUserId, "RMS1"}}),
         "display_holding_detail", vh::kTagClientId, 0},
        {"holdingsOfAHotScripNamingTheAdministrator",
         MakeRequest("display_holding_detail", {{vh::kTagSegment, "nse_cm"},
                                                {vh::kTagScripCode, HotScrip()},
                                                {vh::kTagUserId, "RMS1"}}),
         "display_holding_detail", vh::kTagClientId, 1},
        {"holdingsOfAHotScripNamingNoOne",
         MakeRequest("display_holding_detail",
                     {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, HotScrip()}}),
         "display_holding_detail", vh::kTagClientId, 1},
        {"topTenNamingNoOne",
         MakeRequest("rs_display_topten_holdings",
                     {{vh::kTagExchange, "NSE"}, {vh::kTagTopMethod, "1"}}),
         "rs_display_topten_holdings", vh::kTagClientId, 1},
        {"topTenNamingTheAdministrator",
         MakeRequest(
             "rs_display_topten_holdings",
             {{vh::kTagExchange, "NSE"}, {vh::kTagTopMethod, "3"}, {vh::kTagUserId, "RMS1"}}),
         "rs_display_topten_holdings", vh::kTagClientId, 1},
        {"lienNamingTheAdministrator",
         MakeRequest("om_get_client_reports", {{vh::kTagSourceUserId, "RMS1"}}),
         "om_get_client_reports", vh::kTagClientId, 1},
        {"userInfoNamingTheAdministrator",
         MakeRequest("tarn_user_info", {{vh::kTagUserId, "RMS1"}}), "tarn_user_info",
         vh::kTagClientId, 2},
    };
    for (const auto& cs : cases) {
      const Stream s = c.Ask(cs.request);
      ASSERT_TRUE(s.ended) << cs.name;
      EXPECT_GE(s.records.size(), cs.minRecords) << cs.name;
      for (const auto& r : s.records) {
        const uint32_t n = r.Count(cs.clientTag).value_or(0);
        for (uint32_t i = 0; i < n; ++i) {
          EXPECT_TRUE(own.count(Text(r, cs.clientTag, i)))
              << cs.name << ": client " << Text(r, cs.clientTag, i);
        }
        if (r.Text(vh::kTagSubKind) == "USER") {
          EXPECT_EQ(Text(r, vh::kTagUserId), "RMS2") << cs.name;
        }
      }
      // A hot scrip's query leaves present values for the visible clients.
      if (std::string(cs.name).find("HotScrip") != std::string::npos) {
        const Stream present = c.Collect("om_get_prsnt_values");
        ASSERT_EQ(present.records.size(), 1u) << cs.name;
        EXPECT_EQ(Text(present.records[0], vh::kTagHoldingsQty),
                  std::to_string(Count(
                      "SELECT sum(holdings_qty) FROM holding h JOIN scrip s ON s.id=h.scrip_id"
                      " WHERE s.nse_symbol||'-'||s.nse_series='" +
                      HotScrip() +
                      "' AND client_id IN (SELECT client_id FROM user_client WHERE"
                      " user_id='RMS2')")))
            << cs.name;
      }
    }
    // Nor may RMS2 mark a hidden client's holding by naming the administrator.
    const std::string scrip = Str("SELECT scrip_id FROM holding WHERE client_id='" + hidden + "'");
    const std::string before = Str("SELECT group_concat(holdings_qty) FROM holding WHERE"
                                   " client_id='" +
                                   hidden + "'");
    ASSERT_TRUE(c.Send(MakeRequest(
        "om_stock_margin_transfer",
        {{vh::kTagClientId, hidden},
         {vh::kTagProduct, Str("SELECT product FROM holding WHERE client_id='" + hidden + "'")},
         {vh::kTagIsin, Str("SELECT isin FROM scrip WHERE id=" + scrip)},
         {vh::kTagHoldingsQty, "1"},
         {vh::kTagAction, "MF"},
         {vh::kTagSourceUserId, "RMS1"},
         {vh::kTagUserId, "RMS1"}})));
    ASSERT_TRUE(c.Ask(MakeRequest("om_get_user_peer_data")).ended);
    EXPECT_EQ(
        Str("SELECT group_concat(holdings_qty) FROM holding WHERE client_id='" + hidden + "'"),
        before);
    EXPECT_EQ(Str("SELECT user_id||' '||applied FROM ledger ORDER BY id DESC LIMIT 1"), "RMS2 0");
  }
};

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
    if (!c.starts) {
      EXPECT_NE(error.find("loopback only"), std::string::npos) << c.name << ": " << error;
    }
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
      {"unknownUser", false, {{vh::kTagUserId, "NOBODY"}}, "2"},
      {"authNoLoginAtAll", true, {}, nullptr},
      {"authNoPassword", true, {{vh::kTagUserId, "RMS2"}}, "3"},
      {"authWrongPassword", true, {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, "wrong"}}, "2"},
      {"authUserWithoutPassword", true, {{vh::kTagUserId, "RMS1"}, {vh::kTagPassword, ""}}, "2"},
      {"authUnknownUser", true, {{vh::kTagUserId, "NOBODY"}, {vh::kTagPassword, "x"}}, "2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.auth)
      StartWithAuth();
    else
      StartServer();
    TestClient client(server_->port(), nullptr);
    if (!c.login.empty()) {
      const Stream s = client.Ask(MakeRequest("tarn_login", c.login));
      EXPECT_EQ(s.status.value_or("<none>"), c.loginStatus);
    }
    // Whatever came before, a request gets nothing and the connection goes.
    EXPECT_TRUE(client.Send(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}})));
    EXPECT_FALSE(client.Collect("om_get_user_peer_data", 2000).ended);
    EXPECT_TRUE(client.WaitClosed());
    if (c.loginStatus && std::string(c.loginStatus) == "2") {
      EXPECT_TRUE(
          LogHas("login as '" + Text(MakeRequest("x", c.login), vh::kTagUserId) + "' refused"));
    }
  }
}

TEST_F(TrustTest, LoggedInUserIsAnsweredWhateverTheRequestNames) {
  StartWithAuth();
  auto c = LogInRms2();
  ExpectOnlyOwnClients(*c);
  const Stream peer = c->Ask(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}}));
  ASSERT_EQ(peer.records.size(), 1u);
  EXPECT_EQ(Text(peer.records[0], vh::kTagPeerValue), "P002");
}

TEST_F(TrustTest, WithoutAuthRequestsNamingNoOneAreTheGreetedUsers) {
  StartServer();
  TestClient c(server_->port(), "RMS2");
  ASSERT_EQ(c.loginStatus(), "1");
  const std::set<std::string> own = Rms2Clients();
  const Stream top = c.Ask(MakeRequest("rs_display_topten_holdings",
                                       {{vh::kTagExchange, "NSE"}, {vh::kTagTopMethod, "1"}}));
  ASSERT_EQ(top.records.size(), 1u);
  ASSERT_EQ(top.records[0].Count(vh::kTagClientId), 10u);
  for (uint32_t i = 0; i < 10; ++i)
    EXPECT_TRUE(own.count(Text(top.records[0], vh::kTagClientId, i)));
  const Stream info = c.Ask(MakeRequest("tarn_user_info"));
  ASSERT_FALSE(info.records.empty());
  EXPECT_EQ(Text(info.records[0], vh::kTagUserId), "RMS2");
}

TEST_F(TrustTest, ConnectionsThatNeverLogInDoNotKeepTheirPlace) {
  options_.loginTimeout = std::chrono::milliseconds(300);
  options_.maxConnections = 4;
  StartWithAuth();
  const struct {
    const char* name;
    Fields login; // sent at once; none when empty
  } cases[] = {
      {"silent", {}},
      {"askedForAPasswordAndGaveNone", {{vh::kTagUserId, "RMS2"}}},
  };
  for (const auto& c : cases) {
    std::vector<std::unique_ptr<TestClient>> idle;
    for (int i = 0; i < 4; ++i) {
      idle.push_back(std::make_unique<TestClient>(server_->port(), nullptr));
      if (!c.login.empty()) {
        EXPECT_EQ(idle.back()->Ask(MakeRequest("tarn_login", c.login)).status, "3") << c.name;
      }
    }
    for (auto& client : idle)
      EXPECT_TRUE(client->WaitClosed(3000)) << c.name;
    // The places are free again for a desk user.
    auto user = LogInRms2();
    EXPECT_EQ(user->Ask(MakeRequest("om_get_user_peer_data")).records.size(), 1u) << c.name;
  }
  EXPECT_TRUE(LogHas("no login within"));
}

TEST_F(TrustTest, RequestsSentWithTheLoginWaitForIt) {
  const struct {
    const char* name;
    bool auth;
    Fields login;
  } cases[] = {
      {"greeting", false, {{vh::kTagUserId, "RMS2"}}},
      {"passwordChecked", true, {{vh::kTagUserId, "RMS2"}, {vh::kTagPassword, kPassword}}},
  };
  for (const auto& c : cases) {
    if (c.auth)
      StartWithAuth();
    else
      StartServer();
    TestClient client(server_->port(), nullptr);
    std::string frames;
    for (const auto& m : {MakeRequest("tarn_login", c.login), MakeRequest("om_get_user_peer_data"),
                          MakeRequest("tarn_user_info")})
      ASSERT_TRUE(kdl::AppendFrame(frames, m.Serialise()));
    ASSERT_TRUE(client.SendRaw(frames)); // one write: the server reads them together
    const Stream peer = client.Collect("om_get_user_peer_data");
    ASSERT_EQ(peer.records.size(), 1u) << c.name;
    EXPECT_EQ(Text(peer.records[0], vh::kTagPeerValue), "P002") << c.name;
    EXPECT_TRUE(client.Collect("tarn_user_info").ended) << c.name;
  }
}

TEST_F(TrustTest, ASecondLoginClosesTheConnection) {
  StartServer();
  TestClient c(server_->port(), "RMS2");
  ASSERT_EQ(c.loginStatus(), "1");
  EXPECT_TRUE(c.Send(MakeRequest("tarn_login", {{vh::kTagUserId, "RMS1"}})));
  EXPECT_TRUE(c.WaitClosed());
}

TEST(Passwords, StoredOnlyAsSaltedHashes) {
  TempDir dir;
  riskd::Db db;
  std::string error;
  riskd::StoreSetup setup;
  setup.dbPath = (dir.path() / "p.db").string();
  setup.sample.holdings = 100;
  ASSERT_TRUE(riskd::SetUpStore(
      setup, [](const std::string&) {}, &db, &error))
      << error;
  ASSERT_TRUE(riskd::SetPassword(db, "RMS1", "s3cret", &error)) << error;
  ASSERT_TRUE(riskd::SetPassword(db, "RMS2", "s3cret", &error)) << error;
  EXPECT_TRUE(Accepts(db, "RMS2", "s3cret"));
  EXPECT_FALSE(Accepts(db, "DEALER1", "s3cret")) << "a user without a password";
  const std::string a = [&] {
    riskd::Stmt s = db.Prepare("SELECT group_concat(hash,'|') FROM user_password", nullptr);
    return s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
  }();
  EXPECT_EQ(a.find("s3cret"), std::string::npos);
  EXPECT_EQ(a.rfind("$argon2id$", 0), 0u) << a;
  EXPECT_NE(a.substr(0, a.find('|')), a.substr(a.find('|') + 1)) << "same salt twice";
  EXPECT_FALSE(riskd::SetPassword(db, "NOBODY", "x", &error));
  EXPECT_FALSE(riskd::SetPassword(db, "RMS1", "", &error));
}

TEST(Passwords, CheckedOnTheirOwnThreadInOrder) {
  TempDir dir;
  riskd::Db db;
  std::string error;
  riskd::StoreSetup setup;
  setup.dbPath = (dir.path() / "p.db").string();
  setup.sample.holdings = 100;
  ASSERT_TRUE(riskd::SetUpStore(
      setup, [](const std::string&) {}, &db, &error))
      << error;
  ASSERT_TRUE(riskd::SetPassword(db, "RMS2", "pw", &error)) << error;
  const std::string hash = riskd::PasswordHash(db, "RMS2");
  const struct {
    const char* name;
    std::string hash;
    const char* password;
    bool accepted;
  } cases[] = {
      {"right", hash, "pw", true},
      {"wrong", hash, "pW", false},
      {"garbledHash", "$argon2id$nonsense", "pw", false},
  };
  std::mutex m;
  std::condition_variable cv;
  size_t ready = 0;
  riskd::PasswordChecker checker(
      [&] {
        std::lock_guard<std::mutex> lock(m);
        ++ready;
        cv.notify_one();
      },
      std::size(cases));
  for (size_t i = 0; i < std::size(cases); ++i)
    ASSERT_TRUE(checker.Submit(i, cases[i].hash, cases[i].password)) << cases[i].name;
  std::vector<riskd::PasswordChecker::Result> results;
  {
    std::unique_lock<std::mutex> lock(m);
    ASSERT_TRUE(
        cv.wait_for(lock, std::chrono::seconds(20), [&] { return ready == std::size(cases); }));
  }
  results = checker.Take();
  ASSERT_EQ(results.size(), std::size(cases));
  for (size_t i = 0; i < results.size(); ++i) {
    EXPECT_EQ(results[i].connection, i);
    EXPECT_EQ(results[i].accepted, cases[i].accepted) << cases[i].name;
  }
  EXPECT_TRUE(checker.Take().empty());
}

TEST(Passwords, AStoreFromBeforePasswordsGainsTheirTable) {
  TempDir dir;
  const std::string path = (dir.path() / "v1.db").string();
  std::string error;
  {
    riskd::Db db;
    ASSERT_TRUE(riskd::OpenStore(path, &db, &error)) << error;
    ASSERT_TRUE(db.Exec("DROP TABLE user_password; PRAGMA user_version=1", &error)) << error;
  }
  riskd::Db db;
  ASSERT_TRUE(riskd::OpenStore(path, &db, &error)) << error;
  EXPECT_EQ(db.QueryInt("PRAGMA user_version"), riskd::kSchemaVersion);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM user_password", -1), 0);
}

TEST(Passwords, SetFromStandardInputNeverTheCommandLine) {
  TempDir dir;
  const std::string db = (dir.path() / "p.db").string();
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
                                "' | " TARN_RISKD_EXE " --db " + db +
                                " --rows 200 --set-password " + c.user + " 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()) == 0, c.succeeds) << c.name;
  }
  riskd::Db store;
  std::string error;
  ASSERT_TRUE(store.Open(db, &error)) << error;
  EXPECT_TRUE(Accepts(store, "RMS2", "pass word"));
  EXPECT_TRUE(Accepts(store, "RMS1", "other"));
  EXPECT_FALSE(Accepts(store, "DEALER1", ""));
  // A password on the command line is not an option.
  EXPECT_NE(std::system(TARN_RISKD_EXE " --db /dev/null --set-password RMS1 secret 2>/dev/null"),
            0);
}

} // namespace
} // namespace riskd_test
