// CSV fields and numbers, and the store's schema versions.
#include <gtest/gtest.h>

#include <fstream>

#include "riskd/csv.h"
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
      {"emptyFields", ",,", {{"", "", ""}}},
      {"emptyLine", "", {{""}}},
      {"quotedComma", "\"a,b\",c", {{"a,b", "c"}}},
      {"doubledQuote", "\"say \"\"hi\"\"\",x", {{"say \"hi\"", "x"}}},
      {"crlf", "a,b\r", {{"a", "b"}}},
      {"blanksKept", " a , b", {{" a ", " b"}}},
      {"openQuote", "\"open", {}},
      {"textAfterClosingQuote", "\"a\"b,c", {}},
      {"quoteInsideField", "a\"b", {}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(riskd::SplitCsvLine(c.line), c.fields) << c.name;
}

TEST(CsvNumbers, HundredthsBothWaysAndWholeNumbers) {
  const struct {
    int64_t value;
    const char* text;
  } both[] = {{0, "0.00"}, {5, "0.05"}, {-5, "-0.05"}, {123450, "1234.50"}, {-100, "-1.00"}};
  for (const auto& c : both) {
    EXPECT_EQ(riskd::FormatHundredths(c.value), c.text);
    EXPECT_EQ(riskd::ParseHundredths(c.text), c.value) << c.text;
  }
  EXPECT_EQ(riskd::FormatHundredths(INT64_MIN), "-92233720368547758.08");
  EXPECT_EQ(riskd::ParseHundredths("12"), 1200);
  for (const char* bad : {"", "12.", ".5", "1.234", "-", "+1", "92233720368547758.07", "12a"})
    EXPECT_FALSE(riskd::ParseHundredths(bad)) << bad;
  EXPECT_EQ(riskd::ParseWhole("-7"), -7);
  for (const char* bad : {"", "4 2", "x", "+3", "99999999999999999999"})
    EXPECT_FALSE(riskd::ParseWhole(bad)) << bad;
}

TEST(Store, UpgradesAnOlderVersionAndRefusesANewerOneOrAFileThatIsNoDatabase) {
  TempDir dir;
  const std::string file = dir.file("v.db"), junk = dir.file("j.db");
  std::string error;
  for (int open = 0; open < 2; ++open) {
    riskd::Db db;
    ASSERT_TRUE(riskd::OpenStore(file, &db, &error)) << error;
    if (open == 0) {
      // Left as a store was before passwords.
      ASSERT_TRUE(db.Exec("INSERT INTO client VALUES('C1','x'); DROP TABLE user_password;"
                          " PRAGMA user_version=1",
                          &error))
          << error;
      continue;
    }
    EXPECT_EQ(db.QueryInt("PRAGMA user_version"), riskd::kSchemaVersion);
    EXPECT_EQ(db.QueryInt("SELECT count(*) FROM user_password", -1), 0);
    EXPECT_EQ(db.QueryInt("SELECT count(*) FROM client"), 1);
    ASSERT_TRUE(
        db.Exec("PRAGMA user_version=" + std::to_string(riskd::kSchemaVersion + 1), &error));
  }
  std::ofstream(junk) << "this is not a database, just text that is long enough\n";
  for (const std::string& refused : {file, junk}) {
    riskd::Db db;
    error.clear();
    EXPECT_FALSE(riskd::OpenStore(refused, &db, &error)) << refused;
    EXPECT_NE(error.find(refused == file ? "newer" : "not a tarn-riskd"), std::string::npos)
        << error;
  }
}

} // namespace
} // namespace riskd_test
