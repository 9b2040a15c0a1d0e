// A streamed answer reads one snapshot of the store: a margin transfer
// applied while it is part-way out shows in the next answer and the next
// present values, never half in this one.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST_F(RiskdTest, TransferDuringAnAnswerShowsWholeOrNotAtAll) {
  options_.store.sample.holdings = 20000;
  // Produced 16 KiB at a time: the answer takes many turns of the loop.
  options_.maxQueuedBytes = 64 * 1024;
  options_.presentInterval = std::chrono::milliseconds(100);
  StartServer();
  const std::string scrip = Str(kHotScripId);
  // Client, product and holdings quantity of each row of the scrip, sorted.
  const std::string rows = "SELECT group_concat(r,'|') FROM (SELECT client_id||' '||product||' '||"
                           "holdings_qty r FROM holding WHERE scrip_id=" +
                           scrip + " ORDER BY 1)";
  // The holdings come in the order of the quantity index. Marking the whole
  // of the largest one moves it to the front, behind a reader part-way
  // through; unmarking the smallest moves it to the back, ahead of it.
  const struct {
    const char* name;
    const char* order;  // which row of the scrip
    const char* action; // and what moves it
  } cases[] = {
      {"largestMarkedAway", "holdings_qty DESC", "MF"},
      {"smallestUnmarkedBack", "holdings_qty ASC", "UF"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string pick =
        " FROM holding WHERE scrip_id=" + scrip + " ORDER BY " + c.order + " LIMIT 1";
    const std::string client = Str("SELECT client_id" + pick),
                      product = Str("SELECT product" + pick);
    const std::string where = " WHERE client_id='" + client + "' AND scrip_id=" + scrip +
                              " AND product='" + product + "'";
    const bool unmark = c.action[0] == 'U';
    ASSERT_TRUE(db_.Exec("UPDATE holding SET used_qty=0, t1_qty=0, holdings_update_qty=" +
                             std::string(unmark ? "1000000" : "0") + where,
                         nullptr));
    const std::string qty = unmark ? "1000000" : Str("SELECT holdings_qty FROM holding" + where);
    const std::string before = Str(rows);

    TestClient reader(server_->port());
    TestClient writer(server_->port());
    ASSERT_TRUE(reader.Send(HotQuery()));
    ASSERT_TRUE(writer.Send(TransferRequest(client, scrip, product, qty, c.action)));
    const Stream answer = reader.Collect("display_holding_detail");
    ASSERT_TRUE(answer.ended);
    SendAndWait(writer, MakeRequest("om_get_user_peer_data"));
    const std::string after = Str(rows);
    ASSERT_NE(before, after) << "the transfer was not applied";
    // The reader's present values show it from the next (one may be on its way).
    reader.Collect("om_get_prsnt_values");
    const Stream present = reader.Collect("om_get_prsnt_values");
    EXPECT_EQ(present.records.empty() ? "" : Text(present.records[0], vh::kTagHoldingsQty),
              Str("SELECT sum(holdings_qty) FROM holding WHERE scrip_id=" + scrip));

    std::vector<std::string> got;
    for (const auto& r : answer.records)
      got.push_back(Text(r, vh::kTagClientId) + " " + Text(r, vh::kTagProduct) + " " +
                    Text(r, vh::kTagHoldingsQty));
    std::sort(got.begin(), got.end());
    std::string answered;
    for (const auto& row : got)
      answered += (answered.empty() ? "" : "|") + row;
    EXPECT_TRUE(answered == before || answered == after) << got.size() << " rows answered";
  }
}

} // namespace
} // namespace riskd_test
