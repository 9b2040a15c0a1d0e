// CSV import: bad lines, numbers out of range among them, are reported with
// file and line and the rest goes in. (An import that fails is main_test's.)
#include <gtest/gtest.h>

#include "riskd/csv_import.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST(Import, ReportsBadLinesWithFileAndLineAndKeepsTheRest) {
  TempDir dir;
  const std::pair<const char*, std::string> files[] = {
      {"scrips.csv", "isin,name,close,lot_size,nse_symbol,nse_series,nse_token,bse_code,"
                     "bse_symbol,bse_group\n"
                     "INE000A01011,ALPHA LTD,1234.50,1,ALPHA,EQ,101,500001,ALPHA,A\n"
                     "INE000B01012,\"BETA \"\"B\"\" LTD\",99,1,BETA,BE,102,,,\n"
                     "INE000C01013,\"GAMMA, LTD\",10.05,5,,,,500003,GAMMA,B\n"
                     "INE0SHORT,BAD,1,1,X,EQ,1,,,\n"
                     "INE000D01014,DELTA,1.234,1,DELTA,EQ,104,,,\n"
                     "INE000E01015,EPS,1,1,,,,,,\n"
                     "INE000F01016,FOX,10000000,1,FOX,EQ,106,,,\n"
                     "INE000G01017,GEE,10000000.01,1,GEE,EQ,107,,,\n"
                     "INE000H01018,HAY,-1,1,HAY,EQ,108,,,\n"},
      // Lines may end in CR LF; a quote opens and closes a whole field only.
      {"clients.csv", "client_id,name\r\nC1,One\r\nC2,Two\r\n\"C3,x\r\n\"C4\"x,y\r\nC5\"x,y\r\n"},
      {"users.csv", "user_id,type,peer,admin,rights\nU1,1,P9,0,Right A;Right B;Right A\n"
                    "U2,0,P8,2,\n"},
      {"user_clients.csv", "user_id,client_id\nU1,C2\nU1,C404\n"},
      {"holdings.csv",
       "client_id,isin,product,holdings_qty,holdings_update_qty,used_qty,collateral_qty,"
       "collateral_update_qty,withheld_holding_qty,withheld_collateral_qty,t1_qty,"
       "t1_collateral_qty,haircut,collateral_type\n"
       "C1,INE000A01011,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n"
       "C1,INE999Z99999,CNC,100,0,0,0,0,0,0,0,0,12.50,CL\n"
       "C2,INE000B01012,CNC,-1,0,0,0,0,0,0,0,0,0,\n"
       "C2,INE000B01012,CNC,5,0,0,0,0,0,0,0,0,0,XX\n"
       "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0\n"
       "C2,INE000C01013,MTF,5,0,0,0,0,0,0,0,0,0,\n"
       "C2,INE000A01011,CNC,1,0,0,0,0,0,0,0,0,100,\n"
       "C2,INE000B01012,CNC,1,0,0,0,0,0,0,0,0,100.01,\n"
       "C2,INE000B01012,CNC,1,0,0,0,0,0,0,0,0,-0.5,\n"
       "C1,INE000B01012,CNC,1000000000,0,0,0,0,0,0,0,0,0,\n"
       "C1,INE000C01013,CNC,1000000001,0,0,0,0,0,0,0,0,0,\n"},
      {"lien.csv", "client_id,segment,lien_amount,payin_amount,payout_amount\n"
                   "C1,FO,100.5,0,0\nC1,FO,200,1,2\nC1,GOLD,1,1,1\n"
                   "C1,CUR,10000000000000000.01,0,0\n"}};
  for (const auto& [name, text] : files)
    vh::test::WriteFile(dir.file(name), text);
  riskd::Db db;
  riskd::ImportReport report;
  std::string error;
  ASSERT_TRUE(riskd::OpenStore(dir.file("i.db"), &db, &error)) << error;
  ASSERT_TRUE(riskd::ImportCsvDir(db, dir.path().string(), &report, &error)) << error;
  const std::vector<std::string> expected = {
      "scrips.csv:5: ISIN 'INE0SHORT' is not 12 characters",
      "scrips.csv:6: bad close '1.234'",
      "scrips.csv:7: neither an NSE nor a BSE leg",
      "scrips.csv:9: close '10000000.01' exceeds 10000000.00",
      "scrips.csv:10: close '-1' is negative",
      "clients.csv:4: unbalanced quotes",
      "clients.csv:5: unbalanced quotes",
      "clients.csv:6: unbalanced quotes",
      "users.csv:3: bad admin '2'",
      "user_clients.csv:3: unknown client or user id",
      "holdings.csv:3: unknown ISIN INE999Z99999",
      "holdings.csv:4: bad holdings_qty '-1'",
      "holdings.csv:5: bad collateral_type 'XX'",
      "holdings.csv:6: 13 columns, expected 14",
      "holdings.csv:9: haircut '100.01' is not between 0 and 100",
      "holdings.csv:10: haircut '-0.5' is not between 0 and 100",
      "holdings.csv:12: holdings_qty '1000000001' exceeds 1000000000",
      "lien.csv:4: bad segment 'GOLD'",
      "lien.csv:5: amount '10000000000000000.01' exceeds 10000000000000000.00",
  };
  std::vector<std::string> got; // each problem cut to the length of the one expected
  for (size_t i = 0; i < report.problems.size(); ++i)
    got.push_back(
        report.problems[i].substr(0, i < expected.size() ? expected[i].size() : std::string::npos));
  EXPECT_EQ(got, expected);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM scrip"), 4);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM client WHERE name IN ('One','Two')"), 2);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM holding"), 4);
  EXPECT_EQ(db.QueryInt("SELECT close_paise FROM scrip WHERE isin='INE000A01011'"), 123450);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM scrip WHERE name='BETA \"B\" LTD'"), 1);
  EXPECT_EQ(db.QueryInt("SELECT haircut_bp FROM holding WHERE holdings_qty=100"), 1250);
  EXPECT_EQ(db.QueryInt("SELECT collateral_type IS NULL FROM holding WHERE product='MTF'"), 1);
  // Repeated rights count once; a later lien row replaces an earlier one.
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM user_right WHERE user_id='U1'"), 2);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM user_client"), 1);
  EXPECT_EQ(db.QueryInt("SELECT lien_paise FROM lien WHERE client_id='C1' AND segment='FO'"),
            20000);
}

} // namespace
} // namespace riskd_test
