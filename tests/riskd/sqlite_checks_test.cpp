// The SQLite wrapper when a statement failed to prepare or a bind failed:
// every later call reports the failure instead of crashing or running a
// statement with a parameter missing.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "riskd/sqlite.h"
#include "tests/riskd/riskd_fixture.h"

namespace {

using riskd::Db;
using riskd::Stmt;

class SqliteChecks : public ::testing::Test {
protected:
  void SetUp() override {
    std::string error;
    ASSERT_TRUE(db_.Open((dir_.path() / "t.db").string(), &error)) << error;
    ASSERT_TRUE(db_.Exec("CREATE TABLE t(a INTEGER, b TEXT)", &error)) << error;
  }
  int64_t Rows() { return db_.QueryInt("SELECT count(*) FROM t", -1); }

  riskd_test::TempDir dir_;
  Db db_;
};

// Every row leaves the statement unable to run: it failed to prepare, or a
// bind failed and a later call must not run it with a parameter missing.
TEST_F(SqliteChecks, AFailedStatementNeverRuns) {
  const char* const kMissingTable = "INSERT INTO no_such_table VALUES(?,?)";
  const char* const kTwoParameters = "INSERT INTO t VALUES(?1,?2)";
  const struct {
    const char* name;
    const char* sql;
    bool (*use)(Stmt& s); // what the caller does; returns what it was told
  } cases[] = {
      {"run", kMissingTable, [](Stmt& s) { return s.Run(); }},
      {"step", kMissingTable,
       [](Stmt& s) { return s.Step() == SQLITE_ROW || s.Step() == SQLITE_DONE; }},
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
    std::string error;
    Stmt s = db_.Prepare(c.sql, &error);
    EXPECT_EQ(s.ok(), c.sql == kTwoParameters) << c.name;
    EXPECT_EQ(error.find("no_such_table") != std::string::npos, c.sql == kMissingTable)
        << c.name << ": " << error;
    EXPECT_FALSE(c.use(s)) << c.name;
    EXPECT_EQ(Rows(), 0) << c.name << ": the insert ran with a parameter missing";
  }
}

// A shared binder may offer parameters a statement lacks; index 0 is still
// a fault, and a reset clears a failed bind.
TEST_F(SqliteChecks, SharedBinderAndReset) {
  Stmt s = db_.Prepare("INSERT INTO t VALUES(?1,'fixed')", nullptr);
  ASSERT_TRUE(s.ok());
  s.SkipParametersPastTheLast();
  EXPECT_TRUE(s.Bind(1, int64_t{3}).Bind(2, "ignored").Run());
  EXPECT_FALSE(s.Bind(0, int64_t{3}).Run());
  EXPECT_TRUE(s.Bind(1, int64_t{4}).Run());
  EXPECT_EQ(Rows(), 2);
}

} // namespace
