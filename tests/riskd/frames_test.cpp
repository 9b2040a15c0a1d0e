// Frames on one connection stay whole whatever the budgets: price ticks
// pushed while a large answer is part-way out never land inside one of its
// frames.
#include <gtest/gtest.h>

#include <chrono>
#include <map>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST_F(RiskdTest, TicksNeverLandInsideAnAnswer) {
  options_.store.sample.holdings = 20000; // 200 scrips
  const struct {
    const char* name;
    size_t maxQueuedBytes; // a quarter of it is the refill budget
    int priceMs, presentMs;
  } cases[] = {
      {"budgetOfAFewRecords", 64 * 1024, 5, 10},
      {"budgetOfHalfAnAnswer", 128 * 1024, 3, 10},
      {"defaultBudget", 8u << 20, 2, 5},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    options_.maxQueuedBytes = c.maxQueuedBytes;
    options_.priceInterval = std::chrono::milliseconds(c.priceMs);
    options_.presentInterval = std::chrono::milliseconds(c.presentMs);
    StartServer();
    // One client holding every scrip: its present values are one record per
    // scrip, larger than the small budgets (a tick of its prices must still
    // fit the queue limit, or the connection is rightly closed).
    ASSERT_TRUE(db_.Exec("INSERT OR IGNORE INTO holding(client_id,scrip_id,product,holdings_qty)"
                         " SELECT 'C000001',id,'ZZZ',7 FROM scrip",
                         nullptr));
    const int64_t scrips = Count("SELECT count(*) FROM scrip");
    const int64_t legs = Count("SELECT count(nse_token)+count(bse_code) FROM scrip");
    TestClient client(server_->port());
    ASSERT_TRUE(
        client.Send(MakeRequest("display_holding_detail", {{vh::kTagClientId, "C000001"}})));
    std::map<std::string, int> inStream; // records since the last status, per name
    int presentStreams = 0, priceStreams = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
    while (std::chrono::steady_clock::now() < deadline || presentStreams < 3) {
      auto msg = client.Next(3000);
      ASSERT_TRUE(msg) << "a frame did not parse, or the server closed the connection"
                       << (LogHas("behind; closed") ? " (the reader fell behind)" : "");
      const std::string name = Text(*msg, vh::kTagAnsweredName);
      if (!msg->Count(vh::kTagStatus)) {
        ++inStream[name];
        if (name == "om_get_prsnt_values") {
          EXPECT_EQ(std::stoll(Text(*msg, vh::kTagValue)),
                    std::stoll(Text(*msg, vh::kTagHoldingsQty)) *
                        std::stoll(Text(*msg, vh::kTagLastPrice)));
        }
        continue;
      }
      if (name == "om_get_prsnt_values") {
        EXPECT_EQ(inStream[name], scrips);
        ++presentStreams;
      } else if (name == "mrv_master") {
        EXPECT_EQ(inStream[name], legs);
        ++priceStreams;
      } else {
        ASSERT_EQ(name, "display_holding_detail");
      }
      inStream[name] = 0;
    }
    EXPECT_GT(priceStreams, 3);
  }
}

} // namespace
} // namespace riskd_test
