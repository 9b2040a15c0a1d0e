// Numbers a desk's files may carry, and margin arithmetic that never
// overflows: out-of-range values are refused at import with file and line,
// and a transfer whose value cannot be held is refused, not wrapped.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <fstream>

#include "kdl/tags.h"
#include "riskd/csv_import.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

const char* kScripHeader =
    "isin,name,close,lot_size,nse_symbol,nse_series,nse_token,bse_code,bse_symbol,bse_group\n";
const char* kHoldingHeader =
    "client_id,isin,product,holdings_qty,holdings_update_qty,used_qty,collateral_qty,"
    "collateral_update_qty,withheld_holding_qty,withheld_collateral_qty,t1_qty,"
    "t1_collateral_qty,haircut,collateral_type\n";

class NumberLimitsImport : public ::testing::Test {
protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(riskd::OpenStore((dir_.path() / "i.db").string(), &db_, &error)) << error;
    std::filesystem::create_directories(dir_.path() / "csv");
  }
  void Write(const std::string& name, const std::string& text) {
    std::ofstream(dir_.path() / "csv" / name, std::ios::binary) << text;
  }
  // The problem reported for the file's line 2, or "" when it went in.
  std::string ImportOne(const std::string& file, const std::string& line) {
    std::filesystem::remove_all(dir_.path() / "csv");
    std::filesystem::create_directories(dir_.path() / "csv");
    Write("scrips.csv",
          std::string(kScripHeader) +
              (file == "scrips.csv" ? line : "INE000A01011,ALPHA,100,1,ALPHA,EQ,1,,,") + "\n");
    Write("clients.csv", "client_id,name\nC1,One\n");
    if (file == "holdings.csv")
      Write(file, kHoldingHeader + line + "\n");
    if (file == "lien.csv")
      Write(file, "client_id,segment,lien_amount,payin_amount,payout_amount\n" + line + "\n");
    riskd::ImportReport report;
    std::string error;
    EXPECT_TRUE(riskd::ImportCsvDir(db_, (dir_.path() / "csv").string(), &report, &error)) << error;
    return report.problems.empty() ? "" : report.problems.front();
  }

  TempDir dir_;
  riskd::Db db_;
};

TEST_F(NumberLimitsImport, RefusedWithFileAndLine) {
  const std::string h = "C1,INE000A01011,CNC,";
  const struct {
    const char* name;
    const char* file;
    std::string line;
    const char* problem; // "" when the line goes in
  } cases[] = {
      {"haircutHundred", "holdings.csv", h + "1,0,0,0,0,0,0,0,0,100,", ""},
      {"haircutZero", "holdings.csv", h + "1,0,0,0,0,0,0,0,0,0,", ""},
      {"haircutOverHundred", "holdings.csv", h + "1,0,0,0,0,0,0,0,0,100.01,",
       "holdings.csv:2: haircut '100.01' is not between 0 and 100"},
      {"haircutNegative", "holdings.csv", h + "1,0,0,0,0,0,0,0,0,-0.5,",
       "holdings.csv:2: haircut '-0.5' is not between 0 and 100"},
      {"quantityAtTheLimit", "holdings.csv", h + "1000000000,0,0,0,0,0,0,0,0,0,", ""},
      {"quantityOverTheLimit", "holdings.csv", h + "1000000001,0,0,0,0,0,0,0,0,0,",
       "holdings.csv:2: holdings_qty '1000000001' exceeds 1000000000"},
      {"quantityNear64Bits", "holdings.csv", h + "0,0,0,0,0,0,0,0,9223372036854775807,0,",
       "holdings.csv:2: t1_collateral_qty '9223372036854775807' exceeds 1000000000"},
      {"closeAtTheLimit", "scrips.csv", "INE000A01011,ALPHA,10000000,1,ALPHA,EQ,1,,,", ""},
      {"closeOverTheLimit", "scrips.csv", "INE000A01011,ALPHA,10000000.01,1,ALPHA,EQ,1,,,",
       "scrips.csv:2: close '10000000.01' exceeds 10000000.00"},
      {"closeNegative", "scrips.csv", "INE000A01011,ALPHA,-1,1,ALPHA,EQ,1,,,",
       "scrips.csv:2: close '-1' is negative"},
      {"lienOverTheLimit", "lien.csv", "C1,FO,10000000000000000.01,0,0",
       "lien.csv:2: amount '10000000000000000.01' exceeds 10000000000000000.00"},
  };
  for (const auto& c : cases) {
    const std::string problem = ImportOne(c.file, c.line);
    if (*c.problem == 0)
      EXPECT_EQ(problem, "") << c.name;
    else
      EXPECT_EQ(problem.rfind(c.problem, 0), 0u) << c.name << ": " << problem;
  }
}

class MarginArithmetic : public RiskdTest {};

TEST_F(MarginArithmetic, TransfersNeverWrap) {
  StartServer();
  const std::string scrip = Str("SELECT id FROM scrip LIMIT 1");
  const std::string isin = Str("SELECT isin FROM scrip WHERE id=" + scrip);
  constexpr int64_t kMax = 9223372036854775807;
  const struct {
    const char* name;
    int64_t holdings, closePaise, haircutBp, foLien;
    const char* qty;
    int64_t foLienAfter; // unchanged when refused
    const char* reason;
  } cases[] = {
      // 10^9 shares at 10^7 rupees, 12.5% haircut: 8.75e17 paise, exact.
      {"largestValue", 1000000000, 1000000000, 1250, 0, "1000000000", 875000000000000000, ""},
      {"lienWouldOverflow", 1000, 10000, 0, kMax - 5, "1", kMax - 5, "overflow"},
      {"lienJustFits", 1000, 100, 0, kMax - 100, "1", kMax, ""},
  };
  for (const auto& c : cases) {
    const std::string where = " WHERE client_id='C000001' AND scrip_id=" + scrip;
    ASSERT_TRUE(db_.Exec(
        "DELETE FROM holding" + where +
            ";DELETE FROM lien WHERE"
            " client_id='C000001';"
            "INSERT INTO holding(client_id,scrip_id,product,holdings_qty,"
            "haircut_bp) VALUES('C000001'," +
            scrip + ",'CNC'," + std::to_string(c.holdings) + "," + std::to_string(c.haircutBp) +
            ");INSERT INTO lien(client_id,segment,lien_paise) VALUES"
            "('C000001','FO'," +
            std::to_string(c.foLien) +
            ");UPDATE scrip SET close_paise=" + std::to_string(c.closePaise) + " WHERE id=" + scrip,
        nullptr));
    TestClient client(server_->port());
    ASSERT_TRUE(
        client.Send(MakeRequest("om_stock_margin_transfer", {{vh::kTagClientId, "C000001"},
                                                             {vh::kTagProduct, "CNC"},
                                                             {vh::kTagIsin, isin},
                                                             {vh::kTagHoldingsQty, c.qty},
                                                             {vh::kTagAction, "MF"},
                                                             {vh::kTagSourceUserId, "RMS1"}})));
    ASSERT_TRUE(client.Ask(MakeRequest("om_get_user_peer_data", {{vh::kTagUserId, "RMS1"}})).ended);
    EXPECT_EQ(Str("SELECT typeof(lien_paise) FROM lien WHERE client_id='C000001' AND"
                  " segment='FO'"),
              "integer")
        << c.name;
    EXPECT_EQ(Count("SELECT lien_paise FROM lien WHERE client_id='C000001' AND segment='FO'"),
              c.foLienAfter)
        << c.name;
    const std::string reason = Str("SELECT reason FROM ledger ORDER BY id DESC LIMIT 1");
    if (*c.reason == 0)
      EXPECT_EQ(reason, "") << c.name;
    else
      EXPECT_NE(reason.find(c.reason), std::string::npos) << c.name << ": " << reason;
  }
}

} // namespace
} // namespace riskd_test
