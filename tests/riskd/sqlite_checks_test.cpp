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

TEST_F(SqliteChecks, StatementThatFailedToPrepare) {
  const struct {
    const char* name;
    bool (*use)(Stmt& s); // what the caller does; returns what it was told
  } cases[] = {
      {"run", [](Stmt& s) { return s.Run(); }},
      {"step", [](Stmt& s) { return s.Step() == SQLITE_ROW || s.Step() == SQLITE_DONE; }},
      {"bindThenRun", [](Stmt& s) { return s.Bind(1, int64_t{5}).Bind(2, "x").Run(); }},
      {"reset",
       [](Stmt& s) {
         s.Reset();
         return s.ok();
       }},
  };
  for (const auto& c : cases) {
    std::string error;
    Stmt s = db_.Prepare("INSERT INTO no_such_table VALUES(?,?)", &error);
    EXPECT_FALSE(s.ok()) << c.name;
    EXPECT_NE(error.find("no_such_table"), std::string::npos) << c.name << ": " << error;
    EXPECT_FALSE(c.use(s)) << c.name;
  }
}

TEST_F(SqliteChecks, FailedBindStopsTheStatement) {
  const struct {
    const char* name;
    void (*bind)(Stmt& s);
  } cases[] = {
      {"indexPastTheLast", [](Stmt& s) { s.Bind(1, int64_t{1}).Bind(3, "x"); }},
      {"indexZero", [](Stmt& s) { s.Bind(0, int64_t{1}).Bind(2, "x"); }},
      {"unknownName", [](Stmt& s) { s.Bind(1, int64_t{1}).Bind(":nope", "x"); }},
  };
  for (const auto& c : cases) {
    Stmt s = db_.Prepare("INSERT INTO t VALUES(?1,?2)", nullptr);
    ASSERT_TRUE(s.ok()) << c.name;
    c.bind(s);
    EXPECT_FALSE(s.Run()) << c.name;
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
