// CSV import: bad lines are reported with file and line and the rest goes
// in; a bad header imports nothing; numbers out of range are refused.
#include <gtest/gtest.h>

#include <fstream>

#include "riskd/csv_import.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

const char* kScripHeader =
    "isin,name,close,lot_size,nse_symbol,nse_series,nse_token,bse_code,bse_symbol,bse_group\n";
const std::string kHoldingHeader =
    "client_id,isin,product,holdings_qty,holdings_update_qty,used_qty,collateral_qty,"
    "collateral_update_qty,withheld_holding_qty,withheld_collateral_qty,t1_qty,"
    "t1_collateral_qty,haircut,collateral_type\n";
const std::string kScrips =
    kScripHeader + std::string("INE000A01011,ALPHA LTD,1234.50,1,ALPHA,EQ,101,500001,ALPHA,A\n"
                               "INE000B01012,BETA LTD,99,1,BETA,BE,102,,,\n"
                               "INE000C01013,\"GAMMA, LTD\",10.05,5,,,,500003,GAMMA,B\n");

class ImportTest : public ::testing::Test {
protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(riskd::OpenStore((dir_.path() / "i.db").string(), &db_, &error)) << error;
    Clear();
  }
  void Clear() {
    std::filesystem::remove_all(dir_.path() / "csv");
    std::filesystem::create_directories(dir_.path() / "csv");
  }
  void Write(const std::string& name, const std::string& text) {
    std::ofstream(dir_.path() / "csv" / name, std::ios::binary) << text;
  }
  bool Import(std::string* error) {
    report_ = {};
    return riskd::ImportCsvDir(db_, (dir_.path() / "csv").string(), &report_, error);
  }
  int64_t Count(const char* table) {
    return db_.QueryInt(std::string("SELECT count(*) FROM ") + table, -1);
  }
  // The problems reported, each cut to its "file:line: " prefix.
  std::vector<std::string> Where() {
    std::vector<std::string> out;
    for (const auto& p : report_.problems)
      out.push_back(p.substr(0, p.find(' ') + 1));
    return out;
  }

  TempDir dir_;
  riskd::Db db_;
  riskd::ImportReport report_;
};

TEST_F(ImportTest, ReportsBadLinesWithFileAndLineAndKeepsTheRest) {
  Write("scrips.csv", kScrips + "INE0SHORT,BAD,1,1,X,EQ,1,,,\n" // line 5: ISIN length
                                "INE000D01014,DELTA,1.234,1,DELTA,EQ,104,,,\n" // line 6: 3 decimals
                                "INE000E01015,EPS,1,1,,,,,,\n");               // line 7: no leg
  Write("clients.csv", "client_id,name\nC1,One\nC2,Two\n\"C3,x\n");
  Write("holdings.csv", kHoldingHeader +
                            "C1,INE000A01011,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n"
                            "C1,INE999Z99999,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n" // unknown ISIN
                            "C9,INE000A01011,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n" // unknown client
                            "C2,INE000B01012,CNC,-1,0,0,0,0,0,0,0,0,0,\n"        // negative
                            "C2,INE000B01012,CNC,5,0,0,0,0,0,0,0,0,0,XX\n"       // type
                            "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0\n"          // 13 columns
                            "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0,\n");
  Write("users.csv", "user_id,type,peer,admin,rights\nU1,1,P9,0,Right A;Right B;Right A\n"
                     "U2,0,P8,2,\n");
  Write("user_clients.csv", "user_id,client_id\nU1,C2\nU1,C404\n");
  Write("lien.csv", "client_id,segment,lien_amount,payin_amount,payout_amount\n"
                    "C1,FO,100.5,0,0\nC1,FO,200,1,2\nC1,GOLD,1,1,1\n");
  std::string error;
  ASSERT_TRUE(Import(&error)) << error;
  EXPECT_EQ(Where(),
            (std::vector<std::string>{
                "scrips.csv:5: ", "scrips.csv:6: ", "scrips.csv:7: ", "clients.csv:4: ",
                "users.csv:3: ", "user_clients.csv:3: ", "holdings.csv:3: ", "holdings.csv:4: ",
                "holdings.csv:5: ", "holdings.csv:6: ", "holdings.csv:7: ", "lien.csv:4: "}));
  EXPECT_NE(report_.problems[6].find("INE999Z99999"), std::string::npos);
  EXPECT_EQ(Count("scrip"), 3);
  EXPECT_EQ(Count("client"), 2);
  EXPECT_EQ(Count("holding"), 2);
  EXPECT_EQ(db_.QueryInt("SELECT close_paise FROM scrip WHERE isin='INE000A01011'"), 123450);
  EXPECT_EQ(db_.QueryInt("SELECT haircut_bp FROM holding WHERE client_id='C1'"), 1250);
  EXPECT_EQ(db_.QueryInt("SELECT collateral_type IS NULL FROM holding WHERE client_id='C2'"), 1);
  // Repeated rights count once; a later lien row replaces an earlier one.
  EXPECT_EQ(db_.QueryInt("SELECT count(*) FROM user_right WHERE user_id='U1'"), 2);
  EXPECT_EQ(db_.QueryInt("SELECT count(*) FROM user_client"), 1);
  EXPECT_EQ(db_.QueryInt("SELECT lien_paise FROM lien WHERE client_id='C1' AND segment='FO'"),
            20000);
}

TEST_F(ImportTest, NothingHalfImported) {
  // Each case fails after scrips.csv and clients.csv went in; both must vanish.
  const struct {
    const char* name;
    const char* file;
    const char* text;
    const char* error;
  } cases[] = {
      {"noFileAtAll", nullptr, "", "no known CSV file"},
      {"badLienHeader", "lien.csv", "client,segment\nC1,FO\n", "lien.csv:1: header"},
      {"reorderedHoldingsHeader", "holdings.csv", "isin,client_id\n", "holdings.csv:1: header"},
      {"emptyUsersFile", "users.csv", "", "users.csv:1: header"},
  };
  for (const auto& c : cases) {
    Clear();
    if (c.file) {
      Write("scrips.csv", kScrips);
      Write("clients.csv", "client_id,name\nC1,One\n");
      Write(c.file, c.text);
    }
    std::string error;
    EXPECT_FALSE(Import(&error)) << c.name;
    EXPECT_NE(error.find(c.error), std::string::npos) << c.name << ": " << error;
    EXPECT_EQ(Count("scrip") + Count("client"), 0) << c.name;
  }
}

TEST_F(ImportTest, NumbersOutOfRangeAreRefusedWithFileAndLine) {
  const std::string h = "C1,INE000A01011,CNC,";
  const std::string scrip = "INE000A01011,ALPHA,100,1,ALPHA,EQ,1,,,";
  const struct {
    const char* name;
    const char* file;
    std::string line;
    const char* problem; // "" when the line goes in
  } cases[] = {
      {"haircutHundred", "holdings.csv", h + "1,0,0,0,0,0,0,0,0,100,", ""},
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
    Clear();
    const std::string file = c.file;
    Write("scrips.csv", kScripHeader + (file == "scrips.csv" ? c.line : scrip) + "\n");
    Write("clients.csv", "client_id,name\nC1,One\n");
    if (file == "holdings.csv")
      Write(file, kHoldingHeader + c.line + "\n");
    if (file == "lien.csv")
      Write(file, "client_id,segment,lien_amount,payin_amount,payout_amount\n" + c.line + "\n");
    std::string error;
    EXPECT_TRUE(Import(&error)) << error;
    const std::string problem = report_.problems.empty() ? "" : report_.problems.front();
    EXPECT_EQ(problem.substr(0, std::string(c.problem).size()), c.problem) << c.name;
    EXPECT_EQ(problem.empty(), *c.problem == 0) << c.name << ": " << problem;
  }
}

} // namespace
} // namespace riskd_test
