// A streamed answer reads one snapshot of the store: a margin transfer
// applied while it is part-way out shows in the next answer, never half in
// this one.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <vector>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST_F(RiskdTest, TransferDuringAnAnswerShowsWholeOrNotAtAll) {
  options_.store.sample.holdings = 20000;
  // Produced 16 KiB at a time: the answer takes many turns of the loop.
  options_.maxQueuedBytes = 64 * 1024;
  StartServer();
  const std::string scrip =
      Str("SELECT scrip_id FROM holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1");
  // Client, product and holdings quantity of each row of the scrip, sorted.
  const auto rows = [&] {
    std::vector<std::string> out;
    riskd::Stmt s = db_.Prepare(
        "SELECT client_id||' '||product||' '||holdings_qty FROM holding WHERE scrip_id=" + scrip,
        nullptr);
    while (s.Step() == SQLITE_ROW)
      out.emplace_back(s.Text(0));
    std::sort(out.begin(), out.end());
    return out;
  };
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
    const std::string key =
        Str("SELECT client_id||'|'||product FROM holding WHERE scrip_id=" + scrip + " ORDER BY " +
            c.order + " LIMIT 1");
    const std::string client = key.substr(0, key.find('|'));
    const std::string product = key.substr(key.find('|') + 1);
    const std::string where = " WHERE client_id='" + client + "' AND scrip_id=" + scrip +
                              " AND product='" + product + "'";
    const bool unmark = c.action[0] == 'U';
    ASSERT_TRUE(db_.Exec("UPDATE holding SET used_qty=0, t1_qty=0, holdings_update_qty=" +
                             std::string(unmark ? "1000000" : "0") + where,
                         nullptr));
    const std::string qty = unmark ? "1000000" : Str("SELECT holdings_qty FROM holding" + where);
    const std::vector<std::string> before = rows();

    TestClient reader(server_->port());
    TestClient writer(server_->port());
    ASSERT_TRUE(reader.Send(HotQuery()));
    ASSERT_TRUE(writer.Send(TransferRequest(client, scrip, product, qty, c.action)));
    const Stream answer = reader.Collect("display_holding_detail");
    ASSERT_TRUE(answer.ended);
    SendAndWait(writer, MakeRequest("om_get_user_peer_data"));
    const std::vector<std::string> after = rows();
    ASSERT_NE(before, after) << "the transfer was not applied";

    std::vector<std::string> got;
    for (const auto& r : answer.records)
      got.push_back(Text(r, vh::kTagClientId) + " " + Text(r, vh::kTagProduct) + " " +
                    Text(r, vh::kTagHoldingsQty));
    std::sort(got.begin(), got.end());
    EXPECT_TRUE(got == before || got == after)
        << got.size() << " rows answered; " << before.size() << " before, " << after.size()
        << " after the transfer";
  }
}

} // namespace
} // namespace riskd_test
