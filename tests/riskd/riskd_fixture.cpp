#include "tests/riskd/riskd_fixture.h"

#include <sqlite3.h>

namespace riskd_test {

void RiskdTest::SetUp() {
  options_.store.dbPath = (dir_.path() / "risk.db").string();
  options_.store.sample.holdings = 3000;
  options_.log = [this](const std::string& line) {
    std::lock_guard<std::mutex> lock(logMutex_);
    log_.push_back(line);
  };
}

void RiskdTest::StartServer() {
  if (server_)
    server_->Stop();
  std::string error;
  server_ = riskd::RiskServer::Start(options_, &error);
  ASSERT_TRUE(server_) << error;
  ASSERT_NE(server_->port(), 0);
  ASSERT_TRUE(db_.Open(options_.store.dbPath, &error)) << error;
}

void RiskdTest::TearDown() {
  if (server_)
    server_->Stop();
}

int64_t RiskdTest::Count(const std::string& sql) {
  return std::atoll(Str(sql).c_str());
}

std::string RiskdTest::Str(const std::string& sql) {
  riskd::Stmt s = db_.Prepare(sql, nullptr);
  EXPECT_TRUE(s.ok()) << sql << ": " << db_.LastError();
  return s.ok() && s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
}

bool RiskdTest::LogHas(const std::string& text) {
  std::lock_guard<std::mutex> lock(logMutex_);
  for (const auto& line : log_)
    if (line.find(text) != std::string::npos)
      return true;
  return false;
}

std::string RiskdTest::HotScrip() {
  return Str("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE id=(SELECT scrip_id FROM "
             "holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1)");
}

kdl::Message RiskdTest::HotQuery() {
  return MakeRequest(
      "display_holding_detail",
      {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, HotScrip()}, {vh::kTagUserId, "RMS1"}});
}

kdl::Message RiskdTest::TransferRequest(const std::string& client, const std::string& scrip,
                                        const std::string& product, const std::string& qty,
                                        const std::string& action, const std::string& user) {
  return MakeRequest("om_stock_margin_transfer",
                     {{vh::kTagClientId, client},
                      {vh::kTagProduct, product},
                      {vh::kTagIsin, Str("SELECT isin FROM scrip WHERE id=" + scrip)},
                      {vh::kTagHoldingsQty, qty},
                      {vh::kTagAction, action},
                      {vh::kTagSourceUserId, user}});
}

void RiskdTest::SendAndWait(TestClient& c, const kdl::Message& request) {
  ASSERT_TRUE(c.Send(request));
  ASSERT_TRUE(c.Ask(MakeRequest("om_get_user_peer_data")).ended);
}

} // namespace riskd_test
