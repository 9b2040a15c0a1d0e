// The rule table through UserSetting.ini in a temp command-line directory:
// Update's checks, change in place, Delete, save on exit and a restart.
#include <gtest/gtest.h>

#include "common/message.h"
#include "holdings/alert_rules.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace vh {
namespace {

class AlertRulesTest : public testing::Test {
protected:
  test::TempDir dir;
  ScopedSettingsPaths paths{{dir.path().string(), dir.path().string()}};
  ScopedMessageRecorder recorder;
  CAlertRuleTable table;

  std::string File() { return test::ReadFile(dir.file("UserSetting.ini")); }
};

TEST_F(AlertRulesTest, UpdateChecksInOrder) {
  using Opt = std::optional<std::string>;
  const struct {
    const char* name;
    AlertRuleInput input;
    const char* message; // "" when the rule is made
  } cases[] = {
      {"nothing selected", {{}, {}, {}, ""}, kSelectColumnMessage},
      {"no column but the rest", {{}, Opt("3"), Opt(kLessOrEqual), "5"}, kSelectColumnMessage},
      {"no column number", {Opt("Net"), {}, Opt(kLessOrEqual), "5"}, kSelectExpressionMessage},
      {"no comparison", {Opt("Net"), Opt("3"), {}, "5"}, kSelectExpressionMessage},
      {"no value", {Opt("Net"), Opt("3"), Opt(kGreaterOrEqual), ""}, kEnterValueMessage},
      {"a blank is a value", {Opt("Net"), Opt("3"), Opt(kGreaterOrEqual), " "}, ""},
      {"text is a value", {Opt("Net"), Opt("3"), Opt(kGreaterOrEqual), "abc"}, ""},
  };
  for (const auto& c : cases) {
    recorder.clear();
    const auto rule = RuleFromInput(c.input);
    if (*c.message) {
      EXPECT_FALSE(rule) << c.name;
      EXPECT_EQ(recorder.messages(), std::vector<std::string>{c.message}) << c.name;
      continue;
    }
    ASSERT_TRUE(rule) << c.name;
    EXPECT_TRUE(recorder.messages().empty()) << c.name;
    EXPECT_EQ(rule->field1, *c.input.comparison) << c.name;
    EXPECT_EQ(rule->field2, "Net") << c.name;
    EXPECT_EQ(rule->field3, c.input.threshold) << c.name;
    EXPECT_EQ(rule->field4, "Net") << c.name;
    EXPECT_EQ(rule->field5, "3") << c.name;
  }
}

TEST_F(AlertRulesTest, RulesSurviveARestartAndADeleteStaysDeleted) {
  table.LoadAll({"Net", "Gross"});
  EXPECT_TRUE(table.Empty());
  EXPECT_TRUE(table.Filled());
  table.Put(*RuleFromInput({"Net", "18", kLessOrEqual, "100"}));
  table.Put(*RuleFromInput({"Gross", "19", kGreaterOrEqual, "2.5"}));
  // A second Update of a column changes its rule; it does not add one.
  table.Put(*RuleFromInput({"Net", "18", kGreaterOrEqual, "-7"}));
  EXPECT_EQ(table.Size(), 2u);
  ASSERT_TRUE(table.SaveAll());
  EXPECT_TRUE(table.Empty());
  EXPECT_NE(File().find("Net=Net|greater than or equal to|-7|18|Net"), std::string::npos) << File();

  CAlertRuleTable restarted;
  restarted.LoadAll({"Net", "Gross", "Other"});
  ASSERT_EQ(restarted.Size(), 2u);
  EXPECT_EQ(restarted.Find("Net")->field1, kGreaterOrEqual);
  EXPECT_EQ(restarted.Find("Net")->field3, "-7");
  EXPECT_EQ(restarted.Find("Gross")->field5, "19");
  EXPECT_EQ(restarted.Find("Other"), nullptr);

  ASSERT_TRUE(restarted.Delete("Net"));
  EXPECT_EQ(restarted.Find("Net"), nullptr);
  ASSERT_TRUE(restarted.SaveAll());
  CAlertRuleTable third;
  EXPECT_EQ(third.Load("Net"), nullptr);
  EXPECT_NE(third.Load("Gross"), nullptr);
}

TEST_F(AlertRulesTest, LaterLoadsPreferTheTableOverTheFile) {
  table.Put(*RuleFromInput({"Net", "18", kLessOrEqual, "1"}));
  ASSERT_TRUE(table.SaveAll());
  ASSERT_NE(table.Load("Net"), nullptr); // first load: read from the file
  table.Put(*RuleFromInput({"Net", "18", kLessOrEqual, "2"}));
  EXPECT_EQ(table.Load("Net")->field3, "2");
}

TEST_F(AlertRulesTest, AnUnwritableFileIsReportedAndTheTableStillEmpties) {
  ScopedSettingsPaths missing{{"/nonexistent/dir", "/nonexistent/dir"}};
  table.Put(*RuleFromInput({"Net", "18", kLessOrEqual, "1"}));
  EXPECT_FALSE(table.SaveAll());
  EXPECT_TRUE(table.Empty());
  EXPECT_EQ(table.Load("Net"), nullptr);
}

} // namespace
} // namespace vh
