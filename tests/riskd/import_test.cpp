#include <gtest/gtest.h>

#include <fstream>

#include "riskd/csv_import.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

class ImportTest : public ::testing::Test {
protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(riskd::OpenStore((dir_.path() / "i.db").string(), &db_, &error)) << error;
    std::filesystem::create_directories(dir_.path() / "csv");
  }
  void Write(const std::string& name, const std::string& text) {
    std::ofstream(dir_.path() / "csv" / name, std::ios::binary) << text;
  }
  bool Import(std::string* error) {
    return riskd::ImportCsvDir(db_, (dir_.path() / "csv").string(), &report_, error);
  }
  int64_t Count(const char* table) {
    return db_.QueryInt(std::string("SELECT count(*) FROM ") + table, -1);
  }

  TempDir dir_;
  riskd::Db db_;
  riskd::ImportReport report_;
};

const char* kScrips =
    "isin,name,close,lot_size,nse_symbol,nse_series,nse_token,bse_code,bse_symbol,bse_group\n"
    "INE000A01011,ALPHA LTD,1234.50,1,ALPHA,EQ,101,500001,ALPHA,A\n"
    "INE000B01012,BETA LTD,99,1,BETA,BE,102,,,\n"
    "INE000C01013,\"GAMMA, LTD\",10.05,5,,,,500003,GAMMA,B\n";

TEST_F(ImportTest, ReportsBadLinesWithFileAndLineAndKeepsTheRest) {
  Write("scrips.csv", std::string(kScrips) +
                          "INE0SHORT,BAD,1,1,X,EQ,1,,,\n"                // line 5: ISIN length
                          "INE000D01014,DELTA,1.234,1,DELTA,EQ,104,,,\n" // line 6: 3 decimals
                          "INE000E01015,EPS,1,1,,,,,,\n");               // line 7: no leg
  Write("clients.csv", "client_id,name\nC1,One\nC2,Two\n\"C3,x\n");
  Write("holdings.csv",
        "client_id,isin,product,holdings_qty,holdings_update_qty,used_qty,collateral_qty,"
        "collateral_update_qty,withheld_holding_qty,withheld_collateral_qty,t1_qty,"
        "t1_collateral_qty,haircut,collateral_type\n"
        "C1,INE000A01011,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n"
        "C1,INE999Z99999,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n" // line 3: unknown ISIN
        "C9,INE000A01011,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n" // line 4: unknown client
        "C2,INE000B01012,CNC,-1,0,0,0,0,0,0,0,0,0,\n"        // line 5: negative
        "C2,INE000B01012,CNC,5,0,0,0,0,0,0,0,0,0,XX\n"       // line 6: type
        "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0\n"          // line 7: 13 columns
        "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0,\n");
  std::string error;
  ASSERT_TRUE(Import(&error)) << error;
  const std::vector<std::string> want = {
      "scrips.csv:5: ",   "scrips.csv:6: ",   "scrips.csv:7: ",
      "clients.csv:4: ",  "holdings.csv:3: ", "holdings.csv:4: ",
      "holdings.csv:5: ", "holdings.csv:6: ", "holdings.csv:7: ",
  };
  ASSERT_EQ(report_.problems.size(), want.size());
  for (size_t i = 0; i < want.size(); ++i)
    EXPECT_EQ(report_.problems[i].rfind(want[i], 0), 0u) << report_.problems[i];
  EXPECT_NE(report_.problems[4].find("INE999Z99999"), std::string::npos);
  EXPECT_EQ(Count("scrip"), 3);
  EXPECT_EQ(Count("client"), 2);
  EXPECT_EQ(Count("holding"), 2);
  EXPECT_EQ(report_.rows, 3 + 2 + 2);
  EXPECT_EQ(db_.QueryInt("SELECT close_paise FROM scrip WHERE isin='INE000A01011'"), 123450);
  EXPECT_EQ(db_.QueryInt("SELECT haircut_bp FROM holding WHERE client_id='C1'"), 1250);
  EXPECT_EQ(db_.QueryInt("SELECT collateral_type IS NULL FROM holding WHERE client_id='C2'"), 1);
}

TEST_F(ImportTest, NothingHalfImported) {
  // Each case fails after scrips.csv and clients.csv went in; both must vanish.
  const struct {
    const char* name;
    const char* file;
    const char* text;
    const char* error;
  } cases[] = {
      {"badLienHeader", "lien.csv", "client,segment\nC1,FO\n", "lien.csv:1: header"},
      {"reorderedHoldingsHeader", "holdings.csv", "isin,client_id\n", "holdings.csv:1: header"},
      {"emptyUsersFile", "users.csv", "", "users.csv:1: header"},
  };
  for (const auto& c : cases) {
    std::filesystem::remove_all(dir_.path() / "csv");
    std::filesystem::create_directories(dir_.path() / "csv");
    Write("scrips.csv", kScrips);
    Write("clients.csv", "client_id,name\nC1,One\n");
    Write(c.file, c.text);
    std::string error;
    EXPECT_FALSE(Import(&error)) << c.name;
    EXPECT_NE(error.find(c.error), std::string::npos) << c.name << ": " << error;
    EXPECT_EQ(Count("scrip"), 0) << c.name;
    EXPECT_EQ(Count("client"), 0) << c.name;
  }
}

TEST_F(ImportTest, EmptyDirectoryIsAnError) {
  std::string error;
  EXPECT_FALSE(Import(&error));
  EXPECT_NE(error.find("no known CSV file"), std::string::npos) << error;
}

TEST_F(ImportTest, UsersRightsAndLienReplaceEarlierRows) {
  Write("clients.csv", "client_id,name\nC1,One\nC2,Two\n");
  Write("users.csv", "user_id,type,peer,admin,rights\nU1,1,P9,0,Right A;Right B;Right A\n"
                     "U2,0,P8,2,\n");
  Write("user_clients.csv", "user_id,client_id\nU1,C2\nU1,C404\n");
  Write("lien.csv", "client_id,segment,lien_amount,payin_amount,payout_amount\n"
                    "C1,FO,100.5,0,0\nC1,FO,200,1,2\nC1,GOLD,1,1,1\n");
  std::string error;
  ASSERT_TRUE(Import(&error)) << error;
  ASSERT_EQ(report_.problems.size(), 3u);
  EXPECT_EQ(report_.problems[0].rfind("users.csv:3: ", 0), 0u) << report_.problems[0];
  EXPECT_EQ(report_.problems[1].rfind("user_clients.csv:3: ", 0), 0u) << report_.problems[1];
  EXPECT_EQ(report_.problems[2].rfind("lien.csv:4: ", 0), 0u) << report_.problems[2];
  EXPECT_EQ(db_.QueryInt("SELECT count(*) FROM user_right WHERE user_id='U1'"), 2);
  EXPECT_EQ(db_.QueryInt("SELECT count(*) FROM user_client"), 1);
  EXPECT_EQ(db_.QueryInt("SELECT lien_paise FROM lien WHERE client_id='C1' AND segment='FO'"),
            20000);
}

} // namespace
} // namespace riskd_test
