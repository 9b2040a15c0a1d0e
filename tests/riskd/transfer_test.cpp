// Mark and unmark: limits enforced by the server, effects, and the ledger.
#include <gtest/gtest.h>

#include <climits>

#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

// The quantities a transfer reads and moves, in the order of the cases' lists.
const std::string kQuantities = "holdings_qty,holdings_update_qty,used_qty,collateral_qty,"
                                "withheld_holding_qty,withheld_collateral_qty,t1_qty";
const std::string kStart = "[1000,100,300,0,40,0,50]"; // mark limit min(1000, 1000+50-300) = 750
// Those quantities and the client's FO and CUR liens, as a refused transfer leaves them.
const char* const kUnchanged = "[1000,100,300,0,40,0,50,1000000,1000000]";

class TransferTest : public RiskdTest {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    StartServer();
    // A holding of a visible client of RMS2 with both legs.
    const std::string pick =
        " FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE s.nse_token IS NOT NULL AND "
        "s.bse_code IS NOT NULL AND client_id IN (SELECT client_id FROM user_client WHERE "
        "user_id='RMS2') ORDER BY client_id, scrip_id, product LIMIT 1";
    client_ = Str("SELECT client_id" + pick);
    scrip_ = Str("SELECT scrip_id" + pick);
    product_ = Str("SELECT product" + pick);
    where_ = " WHERE client_id='" + client_ + "' AND scrip_id=" + scrip_ + " AND product='" +
             product_ + "'";
    // A share is worth a rupee after the haircut.
    ASSERT_TRUE(db_.Exec("UPDATE holding SET haircut_bp=0" + where_ +
                             "; UPDATE scrip SET close_paise=100 WHERE id=" + scrip_,
                         nullptr));
    Set(kStart);
  }
  // Sets the quantities, and both liens to 10000 rupees.
  void Set(const std::string& list) {
    ASSERT_TRUE(db_.Exec(
        "UPDATE holding SET (" + kQuantities + ")=(" + list.substr(1, list.size() - 2) + ")" +
            where_ + "; INSERT OR REPLACE INTO lien(client_id,segment,lien_paise) VALUES('" +
            client_ + "','FO',1000000),('" + client_ + "','CUR',1000000)",
        nullptr));
  }
  // The quantities, then the FO and CUR liens.
  std::string Get() {
    const std::string lien = "(SELECT lien_paise FROM lien l WHERE l.client_id=h.client_id AND ";
    return Str("SELECT json_array(" + kQuantities + "," + lien + "segment='FO')," + lien +
               "segment='CUR')) FROM holding h" + where_);
  }
  // A transfer as the plug-in builds it, naming both legs unless by ISIN only.
  void Transfer(const std::string& action, const std::string& qty, const std::string& user,
                bool byIsinOnly = false, const std::string& product = {}) {
    kdl::Message m =
        TransferRequest(client_, scrip_, product.empty() ? product_ : product, qty, action, user);
    if (!byIsinOnly) {
      m.Add(63001, "nse_cm");
      m.Add(10100, Str("SELECT nse_token FROM scrip WHERE id=" + scrip_));
      m.Add(63001, "bse_cm");
      m.Add(10100, Str("SELECT bse_code FROM scrip WHERE id=" + scrip_));
    }
    TestClient c(server_->port());
    SendAndWait(c, m);
  }
  std::string LastLedgerLine() {
    return Str("SELECT rtrim(action||' '||client_id||' '||applied||' '||qty||' '||reason) FROM "
               "ledger ORDER BY id DESC LIMIT 1");
  }

  std::string client_, scrip_, product_, where_;
};

TEST_F(TransferTest, LimitsAndEffects) {
  const struct {
    const char* name;
    const char* action;
    const char* qty;
    const char* user;
    const char* after;  // quantities, then FO and CUR liens; nullptr: refused, nothing moves
    const char* ledger; // applied, quantity as read (cut to 32 bits) and why not: how it starts
    const char* product = nullptr; // the holding's when null
  } cases[] = {
      {"markFoAtLimit", "MF", "750", "RMS2", "[250,850,300,750,40,0,50,1075000,1000000]", "1 750"},
      {"markFoOverLimit", "MF", "751", "RMS2", nullptr, "0 751 quantity 751 exceeds 750"},
      {"markLeadingDigits", "MC", "10abc", "RMS2", "[990,100,300,0,50,10,50,1000000,1001000]",
       "1 10"},
      {"markBlanksThenPlus", "MC", " \t+7", "RMS2", "[993,100,300,0,47,7,50,1000000,1000700]",
       "1 7"},
      {"markNegative", "MF", "-5", "RMS2", nullptr, "0 -5 quantity '-5' is not positive"},
      {"markPast32Bits", "MF", "99999999999", "RMS2", nullptr,
       "0 2147483647 quantity 2147483647 exceeds 750"},
      {"unmarkFoAtLimit", "UF", "100", "RMS2", "[1100,0,300,0,40,0,50,990000,1000000]", "1 100"},
      {"unmarkFoOverLimit", "UF", "101", "RMS2", nullptr, "0 101 quantity 101 exceeds 100"},
      {"unmarkCurOverLimit", "UC", "41", "RMS2", nullptr, "0 41 quantity 41 exceeds 40"},
      {"unmarkCur", "UC", "40", "RMS2", "[1040,100,300,0,0,0,50,1000000,996000]", "1 40"},
      {"noRight", "MF", "1", "DEALER1", nullptr, "0 1 user 'DEALER1' lacks the right"},
      {"unknownUser", "MF", "1", "NOBODY", nullptr, "0 1 unknown user 'NOBODY'"},
      {"badAction", "XX", "1", "RMS1", nullptr, "0 1 unknown action 'XX'"},
      {"noSuchHolding", "MF", "1", "RMS1", nullptr, "0 1 no holding of this scrip", "XYZ"},
  };
  for (const auto& c : cases) {
    Set(kStart);
    Transfer(c.action, c.qty, c.user, false, c.product ? c.product : product_);
    EXPECT_EQ(Get(), c.after ? c.after : kUnchanged) << c.name;
    const std::string ledger = std::string(c.action) + " " + client_ + " " + c.ledger;
    EXPECT_EQ(LastLedgerLine().substr(0, ledger.size()), ledger) << c.name;
  }
}

// Margin arithmetic never wraps: a value a lien cannot hold is refused.
TEST_F(TransferTest, TransfersNeverWrap) {
  constexpr int64_t kMax = INT64_MAX;
  const struct {
    const char* name;
    int64_t holdings, closePaise, haircutBp, foLien;
    const char* qty;
    int64_t foLienAfter; // unchanged when refused
    const char* ledger;
  } cases[] = {
      // 10^9 shares at 10^7 rupees, 12.5% haircut: 8.75e17 paise, exact.
      {"largestValue", 1000000000, 1000000000, 1250, 0, "1000000000", 875000000000000000,
       "1 1000000000"},
      {"lienWouldOverflow", 1000, 10000, 0, kMax - 5, "1", kMax - 5, "0 1 the lien would overflow"},
      {"lienJustFits", 1000, 100, 0, kMax - 100, "1", kMax, "1 1"},
  };
  const std::string lien = " FROM lien WHERE client_id='" + client_ + "' AND segment='FO'";
  for (const auto& c : cases) {
    ASSERT_TRUE(db_.Exec(
        "UPDATE holding SET holdings_update_qty=0, used_qty=0, t1_qty=0, "
        "holdings_qty=" +
            std::to_string(c.holdings) + ", haircut_bp=" + std::to_string(c.haircutBp) + where_ +
            "; DELETE" + lien + "; INSERT INTO lien(client_id,segment,lien_paise) VALUES('" +
            client_ + "','FO'," + std::to_string(c.foLien) + "); UPDATE scrip SET close_paise=" +
            std::to_string(c.closePaise) + " WHERE id=" + scrip_,
        nullptr));
    Transfer("MF", c.qty, "RMS1", /*byIsinOnly=*/true);
    EXPECT_EQ(Str("SELECT typeof(lien_paise)||' '||lien_paise" + lien),
              "integer " + std::to_string(c.foLienAfter))
        << c.name;
    EXPECT_EQ(LastLedgerLine(), "MF " + client_ + " " + c.ledger) << c.name;
  }
}

} // namespace
} // namespace riskd_test
