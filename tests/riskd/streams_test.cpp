// Answers, and bad input over many connections.
#include <gtest/gtest.h>

#include <thread>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

// True when the connection still answers.
bool Answers(TestClient& client) {
  return client.Ask(MakeRequest("om_get_user_peer_data"), 5000).records.size() == 1;
}

// How many records each request gets, from the rows its user may see, and
// the first record's value of `tag` where one is named. Answers are produced
// 512 bytes ahead of the reader and still arrive whole; the price and
// present-value streams tick once only, so what goes out is the answers
// asked for (ticks inside answers are frames_test's).
TEST_F(RiskdTest, AnswersCarryTheRowsTheUserMaySee) {
  options_.maxQueuedBytes = 2048;
  options_.priceInterval = options_.presentInterval = std::chrono::hours(1);
  StartServer();
  const std::string seenByRms2 =
      " AND client_id IN (SELECT client_id FROM user_client WHERE user_id='RMS2')";
  const std::string bothLegs =
      " FROM scrip WHERE nse_token IS NOT NULL AND bse_code IS NOT NULL ORDER BY id LIMIT 1";
  const std::string ofScrip =
      "SELECT count(*) FROM holding WHERE scrip_id=(SELECT id" + bothLegs + ")" + seenByRms2;
  const auto holdings = [](Fields f) { return MakeRequest("display_holding_detail", f); };
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
       holdings({{63001, "nse_cm"}, {10100, Str("SELECT nse_token" + bothLegs)}, {31003, "RMS2"}}),
       ofScrip},
      {"code only in 63003",
       holdings({{63001, "nse_cm"},
                 {10100, "NOSUCH-EQ"},
                 {63003, Str("SELECT bse_code" + bothLegs)},
                 {31003, "RMS2"}}),
       ofScrip},
      {"unknown scrip", holdings({{63001, "nse_cm"}, {10100, "NOSUCH-EQ"}, {31003, "RMS1"}}),
       "SELECT 0"},
      {"naming nothing", holdings({}), "SELECT 0"},
      {"odd leg, long symbol", holdings({{63001, "cse_cm"}, {10100, std::string(3000, 'Z')}}),
       "SELECT 0"},
      {"quote in client", holdings({{54001, "C' OR '1'='1"}}), "SELECT 0"},
      {"hot scrip", HotQuery(), kHotCount},
      {"counterpart of an ISIN",
       MakeRequest("mrv_cj", {{63003, Str("SELECT isin" + bothLegs)}, {63001, "bse_cm"}}),
       "SELECT 1", 10100, "SELECT bse_symbol" + bothLegs},
      {"counterpart of nothing", MakeRequest("mrv_cj"), "SELECT 1"},
      {"peer of an unknown user", MakeRequest("om_get_user_peer_data", {{31003, "NOBODY"}}),
       "SELECT 0"},
      {"scrip master", MakeRequest("tarn_scrip_master"),
       "SELECT count(nse_token)+count(bse_code) FROM scrip"},
      {"top ten", top("NSE", "1", "RMS1"), "SELECT 1"},
      {"top ten, method 2", top("NSE", "2", "RMS1"), "SELECT 0"},
      {"top ten, unknown user", top("NSE", "1", "NOBODY"), "SELECT 0"},
      {"lien of the administrator, every segment",
       MakeRequest("om_get_client_reports", {{54247, "RMS1"}}), "SELECT count(*) FROM lien"},
      {"lien of a desk user",
       MakeRequest("om_get_client_reports", {{54247, "RMS2"}, {63002, "CASH"}}),
       "SELECT count(*) FROM lien WHERE segment='CASH'" + seenByRms2},
      {"lien of an unknown user", MakeRequest("om_get_client_reports", {{54247, "NOBODY"}}),
       "SELECT 0"},
  };
  TestClient client(server_->port());
  for (const auto& c : cases) {
    const Stream s = client.Ask(c.request);
    EXPECT_TRUE(s.ended) << c.name;
    const int64_t want = Count(c.count);
    EXPECT_TRUE(want > 0 || c.count == "SELECT 0") << c.name << ": the sample lacks the rows";
    ASSERT_EQ(int64_t(s.records.size()), want) << c.name;
    if (c.tag != 0) {
      EXPECT_EQ(Text(s.records[0], c.tag), Str(c.value)) << c.name;
    }
  }
  EXPECT_FALSE(LogHas("closed"));
}

// Each bad input costs only the request, or its own connection: a malformed
// message, random bytes, an unknown name and no name are ignored; a frame
// over the limit, a connection beyond the limit and a reader that falls too
// far behind are closed (writes never block the server); a stop closes the
// rest.
TEST_F(RiskdTest, BadInputCostsOnlyTheRequestOrItsConnection) {
  options_.maxFrame = 4096;
  options_.maxConnections = 3;
  options_.maxQueuedBytes = 64 * 1024;
  options_.priceInterval = std::chrono::milliseconds(1);
  StartServer();
  TestClient bystander(server_->port());
  TestClient slow(server_->port());
  TestClient c(server_->port());
  EXPECT_TRUE(Answers(c)) << "the third connection";
  TestClient refused(server_->port());
  EXPECT_TRUE(refused.WaitClosed());
  std::string garbage;
  kdl::AppendFrame(garbage, "\xff\xfe not a message");
  // Half the random frames start like a real request, so they get deeper.
  const std::string real(MakeRequest("display_holding_detail", {{54001, "C000001"}}).Serialise());
  uint64_t x = 12345;
  for (int i = 0; i < 300; ++i) {
    std::string payload(1 + (i * 37) % 500, '\0');
    for (char& ch : payload) {
      x = x * 6364136223846793005ull + 1442695040888963407ull;
      ch = static_cast<char>(x >> 56);
    }
    if (i % 2 == 0)
      payload = real.substr(0, std::min(real.size(), payload.size())) + payload;
    kdl::AppendFrame(garbage, payload);
  }
  kdl::Message noName(4096);
  noName.Add(54001, "C000001");
  ASSERT_TRUE(c.SendRaw(garbage));
  ASSERT_TRUE(c.Send(MakeRequest("Display_Holding_Detail", {{54001, "C000001"}})));
  ASSERT_TRUE(c.Send(noName));
  // A transfer that names no scrip, a one-letter action and an unknown user.
  ASSERT_TRUE(c.Send(MakeRequest("om_stock_margin_transfer",
                                 {{vh::kTagUserId, "NOBODY"}, {vh::kTagAction, "M"}})));
  EXPECT_TRUE(Answers(c)) << "after malformed and random messages, an unknown name and no name";
  ASSERT_TRUE(c.SendRaw(std::string("\x00\x00\x10\x00", 4) + std::string(64, 'x')));
  EXPECT_TRUE(c.WaitClosed());
  // Never read: once the socket buffers are full the price ticks pile up.
  ASSERT_TRUE(slow.Send(MakeRequest(
      "display_holding_detail",
      {{54001, Str("SELECT client_id FROM holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1")}})));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!LogHas("behind; closed") && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_TRUE(slow.WaitClosed());
  for (const char* logged : {"more than 3 connections", "exceeds 4096", "malformed",
                             "unknown request 'Display_Holding_Detail'"})
    EXPECT_TRUE(LogHas(logged)) << logged;
  EXPECT_TRUE(Answers(bystander)) << "the other connection";
  ASSERT_TRUE(bystander.Send(HotQuery()));
  server_->Stop(); // and again when the fixture ends
  EXPECT_TRUE(bystander.WaitClosed(1000));
}

} // namespace
} // namespace riskd_test
