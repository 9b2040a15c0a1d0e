// Streams, bad input and many connections.
#include <gtest/gtest.h>

#include <thread>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

class StreamsTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    options_.priceInterval = std::chrono::milliseconds(50);
    options_.presentInterval = std::chrono::milliseconds(200);
    options_.maxFrame = 4096;
  }
  // Proves the connection still answers.
  void ExpectAnswers(TestClient& client, const char* why) {
    EXPECT_EQ(client.Ask(MakeRequest("om_get_user_peer_data"), 5000).records.size(), 1u) << why;
  }
};

// Present values for each scrip of the client's holdings, then prices for
// those scrips only, then present values again on the timer.
TEST_F(StreamsTest, HoldingsQueryStartsPricesAndPresentValues) {
  StartServer();
  const std::string of = " FROM holding WHERE client_id='C000001'";
  TestClient c(server_->port());
  ASSERT_TRUE(c.Ask(MakeRequest("display_holding_detail", {{54001, "C000001"}})).ended);
  int64_t qty = 0;
  const Stream present = c.Collect("om_get_prsnt_values");
  for (const auto& r : present.records) {
    qty += std::stoll(Text(r, 64044));
    EXPECT_EQ(std::stoll(Text(r, 41231)), std::stoll(Text(r, 64044)) * std::stoll(Text(r, 6)));
  }
  EXPECT_EQ(int64_t(present.records.size()), Count("SELECT count(DISTINCT scrip_id)" + of));
  EXPECT_EQ(qty, Count("SELECT sum(holdings_qty)" + of));
  const Stream prices = c.Collect("mrv_master");
  ASSERT_FALSE(prices.records.empty());
  for (const auto& r : prices.records) {
    const std::string where = Text(r, 32760) == "NSE_LTP"
                                  ? "nse_symbol||'-'||nse_series='" + Text(r, 63100) + "'"
                                  : "bse_symbol='" + Text(r, 63100) + "'";
    EXPECT_EQ(Text(r, 32), Str("SELECT close_paise FROM scrip WHERE " + where +
                               " AND id IN (SELECT scrip_id" + of + ")"));
    EXPECT_GT(std::stoll(Text(r, 63179)), 1600000000) << "seconds since 1970";
  }
  EXPECT_TRUE(c.Collect("om_get_prsnt_values").ended);
}

// Each bad input costs only the request, or its own connection; connections
// beyond the limit are closed, and a stop closes the rest.
TEST_F(StreamsTest, BadInputCostsOnlyTheRequestOrItsConnection) {
  options_.maxConnections = 2;
  StartServer();
  TestClient bystander(server_->port());
  TestClient c(server_->port());
  ExpectAnswers(c, "the second connection");
  TestClient refused(server_->port());
  EXPECT_TRUE(refused.WaitClosed());
  std::string garbage;
  kdl::AppendFrame(garbage, "\xff\xfe not a message");
  kdl::Message noName(4096);
  noName.Add(54001, "C000001");
  ASSERT_TRUE(c.SendRaw(garbage));
  ASSERT_TRUE(c.Send(MakeRequest("Display_Holding_Detail", {{54001, "C000001"}})));
  ASSERT_TRUE(c.Send(noName));
  ExpectAnswers(c, "after a malformed message, an unknown name and no name");
  ASSERT_TRUE(c.SendRaw(std::string("\x00\x00\x10\x00", 4) + std::string(64, 'x')));
  EXPECT_TRUE(c.WaitClosed());
  for (const char* logged : {"more than 2 connections", "exceeds 4096", "malformed",
                             "unknown request 'Display_Holding_Detail'"})
    EXPECT_TRUE(LogHas(logged)) << logged;
  ExpectAnswers(bystander, "the other connection");
  ASSERT_TRUE(bystander.Send(HotQuery()));
  const auto start = std::chrono::steady_clock::now();
  server_->Stop();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  EXPECT_TRUE(bystander.WaitClosed(1000));
  server_->Stop(); // again: nothing happens
}

TEST_F(StreamsTest, ConcurrentConnectionsEachGetTheirWholeAnswer) {
  StartServer();
  const std::string bytes(HotQuery().Serialise());
  std::vector<int64_t> got(8, -1);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < got.size(); ++i)
    threads.emplace_back([&, i] {
      TestClient c(server_->port());
      const Stream s = c.Ask(*kdl::Message::Parse(bytes), 20000);
      got[i] = s.ended ? int64_t(s.records.size()) : -1;
    });
  for (auto& t : threads)
    t.join();
  EXPECT_EQ(got, std::vector<int64_t>(got.size(), Count(kHotCount)));
}

TEST_F(StreamsTest, ASilentReaderStallsNobody) {
  options_.store.sample.holdings = 60000; // a hot scrip with thousands of holders
  StartServer();
  TestClient silent(server_->port());
  ASSERT_TRUE(silent.Send(HotQuery()));
  ASSERT_TRUE(silent.Send(HotQuery()));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  TestClient other(server_->port());
  const auto start = std::chrono::steady_clock::now();
  ExpectAnswers(other, "while another connection does not read");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  // The silent one still gets both answers whole once it reads.
  for (int answer = 0; answer < 2; ++answer)
    EXPECT_EQ(int64_t(silent.Collect("display_holding_detail", 20000).records.size()),
              Count(kHotCount));
}

TEST_F(StreamsTest, AReaderTooFarBehindIsClosed) {
  options_.maxQueuedBytes = 64 * 1024;
  options_.priceInterval = std::chrono::milliseconds(1);
  StartServer();
  TestClient slow(server_->port());
  TestClient other(server_->port());
  // Never read: once the socket buffers are full the price ticks pile up.
  ASSERT_TRUE(slow.Send(MakeRequest(
      "display_holding_detail",
      {{54001, Str("SELECT client_id FROM holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1")}})));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!LogHas("behind; closed") && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_TRUE(LogHas("behind; closed"));
  EXPECT_TRUE(slow.WaitClosed());
  ExpectAnswers(other, "the connection that reads");
}

// Answers produced 512 bytes ahead of the reader still arrive whole. The
// price and present-value streams tick once only, so that what goes out is
// the answers asked for and nothing that depends on timing; ticks inside
// answers are frames_test's.
TEST_F(StreamsTest, AnswersArriveWholeThroughASmallQueue) {
  options_.maxQueuedBytes = 2048;
  options_.priceInterval = options_.presentInterval = std::chrono::hours(1);
  StartServer();
  TestClient c(server_->port());
  const struct {
    const char* name;
    kdl::Message request;
    std::string count;
  } cases[] = {
      {"hotScrip", HotQuery(), kHotCount},
      {"scripMaster", MakeRequest("tarn_scrip_master"),
       "SELECT count(nse_token)+count(bse_code) FROM scrip"},
      {"lienReport", MakeRequest("om_get_client_reports", {{54247, "RMS1"}}),
       "SELECT count(*) FROM lien"},
      {"topTen", MakeRequest("rs_display_topten_holdings", {{10101, "NSE"}, {41232, "1"}}),
       "SELECT 1"},
  };
  for (const auto& k : cases) {
    const Stream s = c.Ask(k.request);
    EXPECT_TRUE(s.ended) << k.name;
    EXPECT_EQ(int64_t(s.records.size()), Count(k.count)) << k.name;
  }
  EXPECT_FALSE(LogHas("closed"));
}

} // namespace
} // namespace riskd_test
