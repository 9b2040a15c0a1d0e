// A streamed answer reads one snapshot of the store: a margin transfer
// applied while it is part-way out shows in the next answer, never half in
// this one.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <vector>

#include "kdl/tags.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

class SnapshotTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    options_.store.sample.holdings = 20000;
    // Produced 16 KiB at a time: the answer takes many turns of the loop.
    options_.maxQueuedBytes = 64 * 1024;
    StartServer();
  }
  // Client, product and holdings quantity of each row of the scrip, sorted.
  std::vector<std::string> Rows(const std::string& scripId) {
    std::vector<std::string> rows;
    riskd::Stmt s = db_.Prepare("SELECT client_id||' '||product||' '||holdings_qty FROM holding"
                                " WHERE scrip_id=?",
                                nullptr);
    s.Bind(1, std::stoll(scripId));
    while (s.Step() == SQLITE_ROW)
      rows.emplace_back(s.Text(0));
    std::sort(rows.begin(), rows.end());
    return rows;
  }
};

TEST_F(SnapshotTest, TransferDuringAnAnswerShowsWholeOrNotAtAll) {
  const std::string scrip =
      Str("SELECT scrip_id FROM holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1");
  const std::string symbol = Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE id=" + scrip);
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
    ASSERT_TRUE(db_.Exec("UPDATE holding SET used_qty=0, t1_qty=0, holdings_update_qty=" +
                             std::string(c.action[0] == 'U' ? "1000000" : "0") + where,
                         nullptr));
    const std::string qty =
        c.action[0] == 'U' ? "1000000" : Str("SELECT holdings_qty FROM holding" + where);
    const std::vector<std::string> before = Rows(scrip);

    TestClient reader(server_->port());
    TestClient writer(server_->port());
    ASSERT_TRUE(reader.Send(MakeRequest(
        "display_holding_detail",
        {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, symbol}, {vh::kTagUserId, "RMS1"}})));
    ASSERT_TRUE(
        writer.Send(MakeRequest("om_stock_margin_transfer",
                                {{vh::kTagClientId, client},
                                 {vh::kTagProduct, product},
                                 {vh::kTagIsin, Str("SELECT isin FROM scrip WHERE id=" + scrip)},
                                 {vh::kTagHoldingsQty, qty},
                                 {vh::kTagAction, c.action},
                                 {vh::kTagSourceUserId, "RMS1"}})));
    const Stream answer = reader.Collect("display_holding_detail");
    ASSERT_TRUE(answer.ended);
    ASSERT_TRUE(writer.Ask(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}})).ended);
    const std::vector<std::string> after = Rows(scrip);
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
