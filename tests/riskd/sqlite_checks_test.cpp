// The SQLite wrapper when a statement failed to prepare or a bind failed:
// every later call reports the failure instead of crashing or running a
// statement with a parameter missing.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "riskd/sqlite.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

using riskd::Stmt;

TEST(SqliteChecks, AFailedStatementNeverRunsAndAResetClearsAFailedBind) {
  TempDir dir;
  riskd::Db db;
  std::string error;
  ASSERT_TRUE(db.Open(dir.file("t.db"), &error)) << error;
  ASSERT_TRUE(db.Exec("CREATE TABLE t(a INTEGER, b TEXT)", &error)) << error;
  const char* const kMissingTable = "INSERT INTO no_such_table VALUES(?,?)";
  const char* const kTwoParameters = "INSERT INTO t VALUES(?1,?2)";
  const struct {
    const char* name;
    const char* sql;
    bool (*use)(Stmt& s); // what the caller does; returns what it was told
  } cases[] = {
      {"run", kMissingTable, [](Stmt& s) { return s.Run(); }},
      {"bindThenRun", kMissingTable,
       [](Stmt& s) { return s.Bind(1, int64_t{5}).Bind(2, "x").Run(); }},
      {"reset", kMissingTable,
       [](Stmt& s) {
         s.Reset();
         return s.ok();
       }},
      {"indexPastTheLast", kTwoParameters,
       [](Stmt& s) { return s.Bind(1, int64_t{1}).Bind(3, "x").Run(); }},
      {"indexZero", kTwoParameters,
       [](Stmt& s) { return s.Bind(0, int64_t{1}).Bind(2, "x").Run(); }},
      {"unknownName", kTwoParameters,
       [](Stmt& s) { return s.Bind(1, int64_t{1}).Bind(":nope", "x").Run(); }},
  };
  for (const auto& c : cases) {
    Stmt s = db.Prepare(c.sql, &error);
    EXPECT_EQ(s.ok(), c.sql == kTwoParameters) << c.name;
    EXPECT_EQ(error.find("no_such_table") != std::string::npos, c.sql == kMissingTable)
        << c.name << ": " << error;
    EXPECT_FALSE(c.use(s)) << c.name;
    EXPECT_EQ(db.QueryInt("SELECT count(*) FROM t"), 0)
        << c.name << ": ran with a parameter missing";
    error.clear();
  }
  // A shared binder may offer parameters a statement lacks; index 0 is still
  // a fault, and a reset clears a failed bind.
  Stmt s = db.Prepare("INSERT INTO t VALUES(?1,'fixed')", nullptr);
  s.SkipParametersPastTheLast();
  EXPECT_TRUE(s.Bind(1, int64_t{3}).Bind(2, "ignored").Run());
  EXPECT_FALSE(s.Bind(0, int64_t{3}).Run());
  EXPECT_TRUE(s.Bind(1, int64_t{4}).Run());
  EXPECT_EQ(db.QueryInt("SELECT count(*) FROM t"), 2);
}

} // namespace
} // namespace riskd_test
