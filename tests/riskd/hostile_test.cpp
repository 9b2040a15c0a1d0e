// Transfers with missing or absurd fields, and random bytes in frames: each
// is refused or ignored, the store stays as it was, and the connection keeps
// working. (Odd fields of the other requests are rows of the answers table.)
#include <gtest/gtest.h>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST_F(RiskdTest, OddTransfersAndRandomFramesChangeNothing) {
  StartServer();
  const auto move = [](Fields f) { return MakeRequest("om_stock_margin_transfer", f); };
  const kdl::Message transfers[] = {
      move({}),
      move({{54001, "C000001"}, {64030, "CNC"}, {64044, std::string(23, '9')}, {20008, "MF"}}),
      move({{54001, "C000001"}, {64030, "CNC"}, {64044, "-5"}, {20008, "UF"}}),
      move({{20008, "M"}}),
  };
  const std::string total = "SELECT total(holdings_qty)+total(holdings_update_qty)+"
                            "total(withheld_holding_qty) FROM holding";
  const int64_t quantities = Count(total);
  TestClient c(server_->port());
  for (const auto& t : transfers)
    SendAndWait(c, t);
  EXPECT_EQ(Count(total), quantities);
  EXPECT_EQ(Count("SELECT count(*) FROM ledger WHERE applied=0"), 4);
  EXPECT_EQ(Count("SELECT count(*) FROM ledger WHERE applied=1"), 0);

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
