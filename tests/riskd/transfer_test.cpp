// Mark and unmark: limits enforced by the server, effects, and the ledger.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

const char* const kQuantities[] = {
    "holdings_qty",         "holdings_update_qty",     "used_qty", "collateral_qty",
    "withheld_holding_qty", "withheld_collateral_qty", "t1_qty"};
using Quantities = std::array<int64_t, std::size(kQuantities)>;

class TransferTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    StartServer();
    // A holding of a visible client of RMS2 with both legs, a collateral type
    // and quantities set for the cases below.
    key_ = Str("SELECT client_id||'|'||scrip_id||'|'||product FROM holding h JOIN scrip s ON "
               "s.id=h.scrip_id WHERE s.nse_token IS NOT NULL AND s.bse_code IS NOT NULL AND "
               "client_id IN (SELECT client_id FROM user_client WHERE user_id='RMS2') LIMIT 1");
    ASSERT_FALSE(key_.empty());
    const size_t a = key_.find('|'), b = key_.rfind('|');
    client_ = key_.substr(0, a);
    scrip_ = key_.substr(a + 1, b - a - 1);
    product_ = key_.substr(b + 1);
    Set({1000, 100, 300, 0, 40, 0, 50}); // mark limit min(1000, 1000+50-300) = 750
  }
  std::string Where() {
    return " WHERE client_id='" + client_ + "' AND scrip_id=" + scrip_ + " AND product='" +
           product_ + "'";
  }
  void Set(const Quantities& q) {
    std::string sql = "UPDATE holding SET ", error;
    for (size_t i = 0; i < q.size(); ++i)
      sql += std::string(i ? "," : "") + kQuantities[i] + "=" + std::to_string(q[i]);
    ASSERT_TRUE(db_.Exec(sql + Where(), &error)) << error;
  }
  Quantities Get() {
    Quantities q;
    for (size_t i = 0; i < q.size(); ++i)
      q[i] = Count(std::string("SELECT ") + kQuantities[i] + " FROM holding" + Where());
    return q;
  }
  int64_t Lien(const char* segment) {
    return Count("SELECT ifnull((SELECT lien_paise FROM lien WHERE client_id='" + client_ +
                 "' AND segment='" + segment + "'),0)");
  }
  // Sends a transfer as the plug-in builds it, then waits for a later answer
  // on the same connection, which the server gives only after the transfer.
  void Transfer(const std::string& action, const std::string& qty, const std::string& user,
                bool byIsinOnly = false) {
    Fields f = {{54001, client_}, {64030, product_}};
    f.push_back({61002, Str("SELECT isin FROM scrip WHERE id=" + scrip_)});
    if (!byIsinOnly) {
      f.push_back({63001, "nse_cm"});
      f.push_back({10100, Str("SELECT nse_token FROM scrip WHERE id=" + scrip_)});
      f.push_back({63001, "bse_cm"});
      f.push_back({10100, Str("SELECT bse_code FROM scrip WHERE id=" + scrip_)});
    }
    f.push_back({64044, qty});
    f.push_back({20008, action});
    f.push_back({54247, user});
    TestClient c(server_->port());
    ASSERT_TRUE(c.Send(MakeRequest("om_stock_margin_transfer", f)));
    ASSERT_TRUE(c.Ask(MakeRequest("om_get_user_peer_data", {{31003, "RMS1"}})).ended);
  }

  std::string key_, client_, scrip_, product_;
};

TEST_F(TransferTest, LimitsAndEffects) {
  const Quantities start = Get();
  const struct {
    const char* name;
    const char* action;
    const char* qty;
    const char* user;
    Quantities after; // equal to start when refused
    const char* reason;
  } cases[] = {
      {"markFoAtLimit", "MF", "750", "RMS2", {250, 850, 300, 750, 40, 0, 50}, ""},
      {"markFoOverLimit", "MF", "751", "RMS2", start, "exceeds 750"},
      {"markLeadingDigits", "MC", "10abc", "RMS2", {990, 100, 300, 0, 50, 10, 50}, ""},
      {"markLettersOnly", "MC", "abc", "RMS2", start, "not positive"},
      {"markPlusSign", "MF", "+20", "RMS2", {980, 120, 300, 20, 40, 0, 50}, ""},
      {"markBlanksThenPlus", "MC", " \t+7", "RMS2", {993, 100, 300, 0, 47, 7, 50}, ""},
      {"markNegative", "MF", "-5", "RMS2", start, "not positive"},
      {"markPast32Bits", "MF", "99999999999", "RMS2", start, "exceeds 750"},
      {"markZero", "MF", "0", "RMS2", start, "not positive"},
      {"unmarkFoAtLimit", "UF", "100", "RMS2", {1100, 0, 300, 0, 40, 0, 50}, ""},
      {"unmarkFoOverLimit", "UF", "101", "RMS2", start, "exceeds 100"},
      {"unmarkCurOverLimit", "UC", "41", "RMS2", start, "exceeds 40"},
      {"unmarkCur", "UC", "40", "RMS2", {1040, 100, 300, 0, 0, 0, 50}, ""},
      {"noRight", "MF", "1", "DEALER1", start, "lacks the right"},
      {"unknownUser", "MF", "1", "NOBODY", start, "unknown user"},
      {"badAction", "XX", "1", "RMS1", start, "unknown action"},
  };
  for (const auto& c : cases) {
    Set(start);
    const int64_t ledger = Count("SELECT count(*) FROM ledger");
    Transfer(c.action, c.qty, c.user);
    EXPECT_EQ(Get(), c.after) << c.name;
    ASSERT_EQ(Count("SELECT count(*) FROM ledger"), ledger + 1) << c.name;
    const std::string last = " FROM ledger ORDER BY id DESC LIMIT 1";
    EXPECT_EQ(Count("SELECT applied" + last), *c.reason == 0) << c.name;
    EXPECT_NE(Str("SELECT reason" + last).find(c.reason), std::string::npos)
        << c.name << ": " << Str("SELECT reason" + last);
    EXPECT_EQ(Str("SELECT action||' '||qty||' '||client_id" + last),
              std::string(c.action) + " " +
                  std::to_string(
                      std::clamp<long long>(strtoll(c.qty, nullptr, 10), INT32_MIN, INT32_MAX)) +
                  " " + client_)
        << c.name;
  }
}

// A mark raises the segment's lien and shows in the next holdings answer; an
// unmark by ISIN alone takes both back.
TEST_F(TransferTest, MarkAndUnmarkMoveTheLienAndTheNextAnswer) {
  const int64_t close = Count("SELECT close_paise FROM scrip WHERE id=" + scrip_);
  const int64_t haircut = Count("SELECT haircut_bp FROM holding" + Where());
  const int64_t fo = Lien("FO"), cur = Lien("CUR");
  const std::string token = Str("SELECT nse_token FROM scrip WHERE id=" + scrip_);
  const auto shown = [&] {
    TestClient c(server_->port());
    std::string texts;
    for (const auto& r :
         c.Ask(MakeRequest("display_holding_detail", {{54001, client_}, {31003, "RMS2"}})).records)
      if (Text(r, 10100) == token && Text(r, 64030) == product_)
        texts += Text(r, 64044) + "/" + Text(r, 64300) + " ";
    return texts;
  };
  Transfer("MF", "100", "RMS2");
  EXPECT_EQ(Lien("FO"), fo + 100 * close * (10000 - haircut) / 10000);
  EXPECT_EQ(Lien("CUR"), cur);
  EXPECT_EQ(shown(), "900/200 ");
  Transfer("UF", "100", "RMS2", /*byIsinOnly=*/true);
  EXPECT_EQ(Lien("FO"), fo);
  EXPECT_EQ(shown(), "1000/100 ");
}

TEST_F(TransferTest, PresentValuesFollowATransfer) {
  options_.presentInterval = std::chrono::milliseconds(100);
  StartServer();
  const std::string token = Str("SELECT nse_token FROM scrip WHERE id=" + scrip_);
  const int64_t held = Count("SELECT sum(holdings_qty) FROM holding WHERE client_id='" + client_ +
                             "' AND scrip_id=" + scrip_);
  TestClient c(server_->port());
  ASSERT_TRUE(c.Send(MakeRequest("display_holding_detail", {{54001, client_}, {31003, "RMS2"}})));
  auto heldNow = [&]() -> int64_t {
    const Stream s = c.Collect("om_get_prsnt_values");
    for (const auto& r : s.records)
      if (Text(r, 10100) == token)
        return int64_t{std::stoll(Text(r, 64044))};
    return int64_t{-1};
  };
  EXPECT_EQ(heldNow(), held);
  Transfer("MF", "5", "RMS2");
  c.Collect("om_get_prsnt_values"); // may have been built before the transfer
  EXPECT_EQ(heldNow(), held - 5);
}

TEST_F(TransferTest, ClientOutsideTheUsersListIsRefused) {
  const std::string hidden =
      Str("SELECT client_id FROM holding WHERE client_id NOT IN (SELECT client_id FROM "
          "user_client WHERE user_id='RMS2') AND scrip_id=" +
          scrip_ + " LIMIT 1");
  if (hidden.empty())
    GTEST_SKIP() << "no such holding in the sample";
  client_ = hidden;
  Transfer("MF", "1", "RMS2");
  EXPECT_NE(Str("SELECT reason FROM ledger ORDER BY id DESC LIMIT 1").find("may not see"),
            std::string::npos);
}

} // namespace
} // namespace riskd_test
