// The settings value grammars: tables of values (good and broken), round
// trips, and the routines that read and write them through the files. Parsed
// records are compared through a summary built field by field here, so the
// expectations do not lean on the formatters under test.
#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/column_profile.h"
#include "settings/custom_alert.h"
#include "settings/list_appearance.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WriteFile;

std::string Summary(const vh::sListAppearance& a) {
  std::ostringstream s;
  s << std::hex << std::uppercase << a.backgroundColour << " " << a.textColour << std::dec << " ["
    << a.fontFace << "] " << a.fontSize << " col " << a.keywordColumn
    << (a.keywordColouring ? " on" : "");
  if (!a.keywordTexts)
    return s.str() + " null";
  for (size_t i = 0; i < a.keywordTexts->size(); ++i)
    s << " " << (*a.keywordTexts)[i] << "=" << std::hex << std::uppercase << (*a.keywordColours)[i];
  return s.str();
}

std::string Summary(const std::vector<vh::sColumnProfileEntry>& entries) {
  std::ostringstream s;
  for (const auto& e : entries) {
    s << "(" << e.column << " " << e.position << " " << e.width;
    if (!e.name.empty() || !e.storedExpression.empty() || !e.displayExpression.empty())
      s << " [" << e.name << "][" << e.storedExpression << "][" << e.displayExpression << "]";
    s << ")";
  }
  return s.str();
}

// Both settings directories, empty, and the messages shown.
struct SettingsFiles : ::testing::Test {
  TempDir grid, cmd;
  vh::ScopedSettingsPaths paths{{grid.path().string(), cmd.path().string()}};
  vh::ScopedMessageRecorder recorder;
};

TEST(ListAppearance, ParsesValues) {
  const struct {
    const char* name;
    const char* value;
    const char* summary;
  } cases[] = {
      {"no keywords", "0,FF00,Arial,10,-1", "0 FF00 [Arial] 10 col -1 null"},
      {"keyword without colour drops all", "0,FF00,Arial,10,2,buy", "0 FF00 [Arial] 10 col 2"},
      {"full value", "0,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000,",
       "0 FF00 [MS Shell Dlg 2] 8 col 3 on buy=FF sell=FF0000"},
      {"keywords lower-cased", "1,2,F,9,0,BUY,ab,", "1 2 [F] 9 col 0 on buy=AB"},
      {"keyword column alone", "FFFFFF,0,F,9,4,", "FFFFFF 0 [F] 9 col 4 null"},
      {"short value keeps the defaults", "C0C0C0", "C0C0C0 FF00 [MS Shell Dlg 2] 8 col -1 null"},
      {"junk is 0, colours cut to 32 bits", "zz,1FFFFFFFF,F,9,-1", "0 FFFFFFFF [F] 9 col -1 null"},
      {"comma in a face name breaks it", "0,0,Arial, Bold,9,-1", "0 0 [Arial]  Bold col 9"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Summary(vh::ParseListAppearance(c.value)), c.summary) << c.name;
}

TEST(ListAppearance, FormatsAndRoundTrips) {
  vh::sListAppearance a;
  EXPECT_EQ(vh::FormatListAppearance(a), "0,FF00,MS Shell Dlg 2,8");
  a.keywordColumn = 3;
  EXPECT_EQ(vh::FormatListAppearance(a), "0,FF00,MS Shell Dlg 2,8,3,");
  a = vh::ParseListAppearance("ABCDEF,FF00,MS Shell Dlg 2,8,3,Buy,FF,sell,FF0000,");
  const std::string value = vh::FormatListAppearance(a);
  EXPECT_EQ(value, "ABCDEF,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000,");
  EXPECT_EQ(Summary(vh::ParseListAppearance(value)), Summary(a));
}

// Saving and loading back are the appearance dialog's and the grids' tests.
TEST_F(SettingsFiles, ListAppearanceLoadsPerGridWithDefaultsForTheRest) {
  const std::string defaults = Summary(vh::DefaultListAppearance());
  vh::sListAppearance a = vh::ParseListAppearance("1,2,X,3");
  EXPECT_FALSE(vh::LoadListAppearance("rmsholdview", 9001, a));
  EXPECT_EQ(Summary(a), defaults);
  EXPECT_FALSE(std::filesystem::exists(grid.file("UserSetting.ini")));
  // A value cut by the read buffer loses the keyword whose colour lies past
  // the 999th character, and with it every keyword.
  std::string cut = "0,0,F,8,1,";
  while (cut.size() < 990)
    cut += "kw,FF,";
  WriteFile(grid.file("UserSetting.ini"),
            "[CUSTOMIZE_LISTS]\ng-1=String not found\ng-2=\ng-3=" + cut + "last,FF00FF,\n");
  EXPECT_FALSE(vh::LoadListAppearance("g", 1, a));
  EXPECT_FALSE(vh::LoadListAppearance("g", 2, a));
  EXPECT_EQ(Summary(a), defaults);
  ASSERT_TRUE(vh::LoadListAppearance("g", 3, a));
  EXPECT_EQ(Summary(a), "0 0 [F] 8 col 1");
}

TEST(ListAppearance, FontHeightIsMinusPointsAtTheScreenResolution) {
  const struct {
    const char* size;
    int dpi;
    int height;
  } cases[] = {
      // clang-format off
      {"8", 96, -11}, {"10", 96, -13}, {"9", 120, -15}, {"8", 72, -8},
      {"-8", 96, 11}, {"x", 96, 0}, {"2147483647", 96, INT_MIN},
      // clang-format on
  };
  for (const auto& c : cases)
    EXPECT_EQ(vh::MakeListFont("Arial", c.size, c.dpi).height, c.height) << c.size << "@" << c.dpi;
}

TEST(ColumnProfile, ParsesValues) {
  const struct {
    const char* name;
    const char* value;
    const char* summary;
  } cases[] = {
      {"built-ins only", "0,0,80,1,-1,0,2,1,95", "(0 0 80)(1 -1 0)(2 1 95)"},
      {"custom column", "0,0,80,3,1,120,Net#\"1\"*2#Qty*2",
       "(0 0 80)(3 1 120 [Net][\"1\"*2][Qty*2])"},
      {"custom then built-in", "3,0,60,N#E#D,0,1,70", "(3 0 60 [N][E][D])(0 1 70)"},
      {"cut definition drops the column", "0,0,80,3,1,120,Net#\"1\"*", "(0 0 80)"},
      {"cut triple stops quietly", "0,0,80,1,-1", "(0 0 80)"},
      {"empty and junk fields read as 0", "0,,,x,y,z", "(0 0 0)(0 0 0)"},
      {"numbers clamped to int", "-2147483649,2147483647,99999999999",
       "(-2147483648 2147483647 2147483647)"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Summary(vh::ParseColumnProfile(c.value, 3)), c.summary) << c.name;
}

TEST_F(SettingsFiles, AColumnProfileThatCannotBeSavedSaysSo) {
  vh::ScopedSettingsPaths missing({grid.file("missing-dir"), ""});
  EXPECT_FALSE(vh::SaveColumnProfileEntries("g", vh::ParseColumnProfile("0,0,80", 1), 1));
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"File Open Failed", "Error while saving column profile"}));
}

TEST(AlertRule, ParsesValues) {
  const struct {
    const char* name;
    const char* value;
    const char* fields; // 1|2|3|4|5, or "none"
  } cases[] = {
      {"full", "Net|less than or equal to|100|5|Other", "less than or equal to|Net|100|Key|5"},
      {"short value leaves fields empty", "Net|x", "x|Net||Key|"},
      {"deleted rule", " ", "none"},
      {"empty value", "", "none"},
  };
  for (const auto& c : cases) {
    const auto r = vh::ParseAlertRule("Key", c.value);
    const std::string got =
        r ? r->field1 + "|" + r->field2 + "|" + r->field3 + "|" + r->field4 + "|" + r->field5
          : "none";
    EXPECT_EQ(got, c.fields) << c.name;
  }
}

TEST_F(SettingsFiles, AlertRuleWrittenDeletedAndReadBack) {
  const vh::CustomAlert rule{"greater than or equal to", "Net Value", "2.5", "Net Value", "7"};
  ASSERT_TRUE(vh::WriteAlertRule("Net Value", rule));
  EXPECT_EQ(
      ReadFile(cmd.file("UserSetting.ini")),
      "[CUSTOMIZE_WINDOW]\r\nNet Value=Net Value|greater than or equal to|2.5|7|Net Value\r\n");
  const auto back = vh::ReadAlertRule("net value");
  ASSERT_TRUE(back);
  EXPECT_EQ(vh::FormatAlertRule(*back), "Net Value|greater than or equal to|2.5|7|net value");

  ASSERT_TRUE(vh::DeleteAlertRule("Net Value"));
  EXPECT_EQ(ReadFile(cmd.file("UserSetting.ini")), "[CUSTOMIZE_WINDOW]\r\nNet Value= \r\n");
  EXPECT_FALSE(vh::ReadAlertRule("Net Value"));
  EXPECT_FALSE(std::filesystem::exists(grid.file("UserSetting.ini")));
}

TEST_F(SettingsFiles, ViewTitleWrittenAndReadFromDifferentSections) {
  EXPECT_FALSE(vh::ReadViewTitle());
  EXPECT_TRUE(recorder.statuses().empty()) << "a missing file is not probed further";
  ASSERT_TRUE(vh::WriteViewTitle("My Holdings"));
  EXPECT_FALSE(vh::ReadViewTitle()) << "the written title is not read back";
  WriteFile(cmd.file("UserSetting.ini"), "[CUSTOMIZE_WINDOW]\nTitle1=By Hand\n");
  EXPECT_EQ(vh::ReadViewTitle(), "By Hand");
}

} // namespace
