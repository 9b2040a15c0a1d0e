#include <gtest/gtest.h>

#include <fstream>

#include "riskd/csv.h"
#include "riskd/sample_data.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

TEST(CsvLine, SplitsFieldsAndRefusesBrokenQuotes) {
  const struct {
    const char* name;
    const char* line;
    std::optional<std::vector<std::string>> fields;
  } cases[] = {
      {"plain", "a,b,c", {{"a", "b", "c"}}},
      {"emptyFields", ",,", {{"", "", ""}}},
      {"emptyLine", "", {{""}}},
      {"quotedComma", "\"a,b\",c", {{"a,b", "c"}}},
      {"doubledQuote", "\"say \"\"hi\"\"\",x", {{"say \"hi\"", "x"}}},
      {"crlf", "a,b\r", {{"a", "b"}}},
      {"blanksKept", " a , b", {{" a ", " b"}}},
      {"emptyQuoted", "\"\",z", {{"", "z"}}},
      {"openQuote", "\"open", {}},
      {"textAfterClosingQuote", "\"a\"b,c", {}},
      {"quoteInsideField", "a\"b", {}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(riskd::SplitCsvLine(c.line), c.fields) << c.name;
}

TEST(CsvNumbers, Hundredths) {
  const struct {
    const char* text;
    std::optional<int64_t> value;
  } cases[] = {
      {"12", 1200}, {"12.05", 1205}, {"-0.05", -5}, {"", {}},   {"12.", {}},
      {".5", {}},   {"1.234", {}},   {"-", {}},     {"+1", {}}, {"92233720368547758.07", {}},
      {"12a", {}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(riskd::ParseHundredths(c.text), c.value) << c.text;
}

TEST(CsvNumbers, FormatsHundredths) {
  const struct {
    int64_t value;
    const char* text;
  } cases[] = {{0, "0.00"},         {5, "0.05"},     {-5, "-0.05"},
               {123450, "1234.50"}, {-100, "-1.00"}, {INT64_MIN, "-92233720368547758.08"}};
  for (const auto& c : cases) {
    EXPECT_EQ(riskd::FormatHundredths(c.value), c.text);
    if (c.value != INT64_MIN) {
      EXPECT_EQ(riskd::ParseHundredths(c.text), c.value) << c.text;
    }
  }
}

TEST(CsvNumbers, Whole) {
  EXPECT_EQ(riskd::ParseWhole("42"), 42);
  EXPECT_EQ(riskd::ParseWhole("-7"), -7);
  for (const char* bad : {"", "4 2", "x", "+3", "99999999999999999999", "3.0"})
    EXPECT_FALSE(riskd::ParseWhole(bad)) << bad;
}

TEST(SampleData, HotScripsHaveManyHolders) {
  TempDir dir;
  riskd::Db db;
  std::string error;
  ASSERT_TRUE(riskd::OpenStore((dir.path() / "h.db").string(), &db, &error)) << error;
  riskd::SampleOptions options;
  options.holdings = 5000;
  ASSERT_TRUE(riskd::GenerateSample(db, options, &error)) << error;
  const int64_t clients = db.QueryInt("SELECT count(*) FROM client");
  const int64_t hottest =
      db.QueryInt("SELECT count(*) c FROM holding GROUP BY scrip_id ORDER BY c DESC LIMIT 1");
  EXPECT_GT(hottest * 5, clients); // held by more than a fifth of all clients
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM scrip WHERE length(isin)<>12 OR isin NOT LIKE "
                        "'INE%' OR (bse_code IS NOT NULL AND CAST(bse_code AS INT)<500000)"),
            0);
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM scrip WHERE nse_series NOT IN ('EQ','BE')"), 0);
}

TEST(Store, ReopensItsOwnVersionAndRefusesANewerOneOrAFileThatIsNoDatabase) {
  TempDir dir;
  const std::string file = (dir.path() / "v.db").string(), junk = (dir.path() / "j.db").string();
  std::string error;
  for (int open = 0; open < 2; ++open) {
    riskd::Db db;
    ASSERT_TRUE(riskd::OpenStore(file, &db, &error)) << error;
    EXPECT_EQ(db.QueryInt("PRAGMA user_version"), riskd::kSchemaVersion);
    if (open == 0)
      ASSERT_TRUE(db.Exec("INSERT INTO client VALUES('C1','x')", &error)) << error;
    else
      ASSERT_TRUE(
          db.Exec("PRAGMA user_version=" + std::to_string(riskd::kSchemaVersion + 1), &error));
    EXPECT_EQ(db.QueryInt("SELECT count(*) FROM client"), 1);
  }
  std::ofstream(junk) << "this is not a database, just text that is long enough\n";
  for (const std::string& refused : {file, junk}) {
    riskd::Db db;
    error.clear();
    EXPECT_FALSE(riskd::OpenStore(refused, &db, &error)) << refused;
    EXPECT_NE(error.find(refused == file ? "newer" : " "), std::string::npos) << error;
  }
}

} // namespace
} // namespace riskd_test
