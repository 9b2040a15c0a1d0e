// The values of the settings files: their grammars, good and broken values
// alike, each parsed and written back so that every row checks a parser and
// its formatter against the text the other must produce; then the file,
// section and key each value lives in, and what a missing or odd value
// reads as.
#include <climits>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/access_setting.h"
#include "settings/column_profile.h"
#include "settings/custom_alert.h"
#include "settings/dialog_position.h"
#include "settings/list_appearance.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::ReadFile;
using vh::test::WriteFile;
using Texts = std::vector<std::string>;

enum class Grammar { Appearance, Columns, Placement };

// `value` parsed and formatted again. An appearance adds its keywords as
// parsed (the formatter lower-cases them once more) and " on" when they
// colour.
std::string Reformat(Grammar grammar, const std::string& value) {
  switch (grammar) {
  case Grammar::Appearance: {
    const vh::sListAppearance a = vh::ParseListAppearance(value);
    std::string out = vh::FormatListAppearance(a);
    for (size_t i = 0; a.keywordTexts && i < a.keywordTexts->size(); ++i)
      out += " " + (*a.keywordTexts)[i];
    return out + (a.keywordColouring ? " on" : "");
  }
  case Grammar::Columns:
    return vh::FormatColumnProfile(vh::ParseColumnProfile(value, 3), 3);
  case Grammar::Placement: {
    vh::sWindowPlacement p;
    const vh::PlacementParse result = vh::ParseWindowPlacement(value, p);
    if (result == vh::PlacementParse::Ok)
      return vh::FormatWindowPlacement(p);
    return result == vh::PlacementParse::TooFew ? "too few" : "malformed";
  }
  }
  return "";
}

TEST(SettingsValues, ReadAndWrittenBack) {
  using enum Grammar;
  const struct {
    const char* name;
    Grammar grammar;
    const char* value;
    const char* reformatted;
  } cases[] = {
      {"keyword without colour drops all", Appearance, "0,FF00,Arial,10,2,buy,FF,sell",
       "0,FF00,Arial,10,2,"},
      {"keywords lower-cased", Appearance, "0,FF00,MS Shell Dlg 2,8,3,BUY,ff,sell,FF0000,",
       "0,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000, buy sell on"},
      {"keyword column alone", Appearance, "FFFFFF,0,F,9,4,", "FFFFFF,0,F,9,4,"},
      {"short value keeps the defaults", Appearance, "C0C0C0", "C0C0C0,FF00,MS Shell Dlg 2,8"},
      {"comma in a face name breaks it", Appearance, "0,0,Arial, Bold,9", "0,0,Arial, Bold,9,"},
      {"built-in columns", Columns, "0,0,80,1,-1,0,2,1,95", "0,0,80,1,-1,0,2,1,95"},
      {"custom then built-in", Columns, "3,0,60,Net#\"1\"*2#Qty*2,0,1,70",
       "3,0,60,Net#\"1\"*2#Qty*2,0,1,70"},
      {"cut definition drops the column", Columns, "0,0,80,3,1,120,Net#\"1\"*", "0,0,80"},
      {"cut triple stops quietly", Columns, "0,0,80,1,-1", "0,0,80"},
      {"eight fields restore", Placement, "10,20,300,400,1,2,3,4", "10,20,300,400,1,2,3,4,1"},
      {"seven do not", Placement, "10,20,300,400,1,2,3", "too few"},
      {"extra fields ignored", Placement, "1,2,3,4,5,6,7,8,9,10,11", "1,2,3,4,5,6,7,8,9"},
      {"empty pieces skipped", Placement, "1,,2,3,4,5,6,7,8,", "1,2,3,4,5,6,7,8,1"},
      {"blank after a comma", Placement, "10, 20,300,400,-1,-1,-1,-1,1", "malformed"},
      {"minus inside a field", Placement, "10,2-0,300,400,-1,-1,-1,-1,1", "malformed"},
      {"bad field before too few", Placement, "x", "malformed"},
      {"numbers clamped to int", Placement, "99999999999,-99999999999,0,0,0,0,0,0,0",
       "2147483647,-2147483648,0,0,0,0,0,0,0"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Reformat(c.grammar, c.value), c.reformatted) << c.name;
  // Font height: minus the points at the screen's resolution, rounded.
  EXPECT_EQ(vh::MakeListFont("Arial", "8", 96).height, -11);
  EXPECT_EQ(vh::MakeListFont("Arial", "-8", 96).height, 11);
  EXPECT_EQ(vh::MakeListFont("Arial", "2147483647", 96).height, INT_MIN);
}

// Both settings directories, empty, and the texts composed.
struct SettingsFiles : ::testing::Test {
  vh::test::TempDir grid, cmd;
  vh::ScopedSettingsPaths paths{{grid.path().string(), cmd.path().string()}};
  vh::ScopedMessageRecorder recorder;
};

// Column profiles are read from the grid settings directory, every other
// setting value from the command-line one.
TEST_F(SettingsFiles, AccessOutcomes) {
  WriteFile(cmd.file("U.ini"), "[S]\nempty=\nlong=" + std::string(5000, 'x') + "\n");
  WriteFile(grid.file("UserSetting.ini"),
            "[p]\nCOLUMNPROFILE=0,0,80\n[long]\nCOLUMNPROFILE=" + std::string(5000, 'x') + "\n");
  // A read-only file cannot be opened as the routines need it, even by root.
  WriteFile(cmd.file("Locked.ini"), "[S]\nk=1\n");
  ASSERT_EQ(::chmod(cmd.file("Locked.ini").c_str(), 0444), 0);
  const struct {
    const char* name;
    const char* file; // nullptr: the column profile, else a setting value of this file
    int mode;
    const char* key;
    int result;
    std::string value; // value after the call, which starts as "before"
  } cases[] = {
      {"missing key empties the value", "U.ini", vh::kSettingRead, "none", 0, ""},
      {"empty value leaves it untouched", "U.ini", vh::kSettingRead, "empty", 0, "before"},
      {"long value cut to 4,094 characters", "U.ini", vh::kSettingRead, "long", 1,
       std::string(4094, 'x')},
      {"load mode is not for setting values", "U.ini", vh::kSettingLoad, "long", 0, "before"},
      {"missing file", "Missing.ini", vh::kSettingRead, "k", 0, "before"},
      {"read-only file", "Locked.ini", vh::kSettingWrite, "k", 0, "before"},
      {"missing profile reads its default text", nullptr, vh::kSettingLoad, "q", 0,
       "Settings not found"},
      {"read mode is not for profiles", nullptr, vh::kSettingRead, "p", 0, "before"},
      {"long profile cut to 4,095 characters", nullptr, vh::kSettingLoad, "long", 1,
       std::string(4095, 'x')},
  };
  for (const auto& c : cases) {
    std::string value = "before";
    EXPECT_EQ(c.file ? vh::AccessSettingValue(c.mode, "S", c.key, value, c.file)
                     : vh::AccessColumnProfile(c.mode, c.key, value),
              c.result)
        << c.name;
    EXPECT_EQ(value, c.value) << c.name;
  }
  EXPECT_FALSE(std::filesystem::exists(cmd.file("Missing.ini")));
  EXPECT_EQ(recorder.statuses(),
            (Texts{"Did not detect Missing.ini", "Did not detect Locked.ini"}));
  ASSERT_TRUE(std::filesystem::create_directories(cmd.file("dir/UserSetting.ini")));
  vh::ScopedSettingsPaths unusable({cmd.file("dir"), ""});
  std::string value;
  EXPECT_EQ(vh::AccessColumnProfile(vh::kSettingLoad, "p", value), 0);
  EXPECT_FALSE(vh::SaveColumnProfileEntries("p", {}, 3));
  EXPECT_EQ(recorder.messages(),
            (Texts{"File Open Failed", "File Open Failed", "Error while saving column profile"}));
  // A host started without a directory in its path looks at the root.
  EXPECT_EQ(vh::DirectoryOfPath("/opt/tarn/tarntrader"), "/opt/tarn");
  EXPECT_EQ(vh::DirectoryOfPath("tarntrader"), "");
  vh::ScopedSettingsPaths none({"", ""});
  EXPECT_EQ(vh::GridSettingsFile(), "/UserSetting.ini");
}

// An empty value counts as none, and a read never makes the file.
TEST_F(SettingsFiles, ListAppearanceLoadsOnlyAValueThatIsThere) {
  vh::sListAppearance a;
  EXPECT_FALSE(vh::LoadListAppearance("g", 1, a));
  EXPECT_FALSE(std::filesystem::exists(grid.file("UserSetting.ini")));
  WriteFile(grid.file("UserSetting.ini"), "[CUSTOMIZE_LISTS]\ng-1=\n");
  EXPECT_FALSE(vh::LoadListAppearance("g", 1, a));
}

TEST_F(SettingsFiles, AlertRulesAndTitle) {
  EXPECT_FALSE(vh::ReadViewTitle());
  EXPECT_TRUE(recorder.statuses().empty()) << "a missing file is not probed further";
  const vh::CustomAlert rule{"greater than or equal to", "Net Value", "2.5", "Net Value", "7"};
  ASSERT_TRUE(vh::WriteAlertRule("Net Value", rule));
  EXPECT_EQ(
      ReadFile(cmd.file("UserSetting.ini")),
      "[CUSTOMIZE_WINDOW]\r\nNet Value=Net Value|greater than or equal to|2.5|7|Net Value\r\n");
  // A short value leaves the other fields empty, a blank one is no rule.
  EXPECT_EQ(vh::FormatAlertRule(vh::ParseAlertRule("K", "Net|x").value()), "Net|x|||K");
  EXPECT_FALSE(vh::ParseAlertRule("K", " "));
  ASSERT_TRUE(vh::DeleteAlertRule("Net Value"));
  EXPECT_EQ(ReadFile(cmd.file("UserSetting.ini")), "[CUSTOMIZE_WINDOW]\r\nNet Value= \r\n");
  EXPECT_FALSE(vh::ReadAlertRule("Net Value"));
  // The title is written to one section and read from another.
  ASSERT_TRUE(vh::WriteViewTitle("My Holdings"));
  EXPECT_FALSE(vh::ReadViewTitle()) << "the written title is read back";
  WriteFile(cmd.file("UserSetting.ini"), "[CUSTOMIZE_WINDOW]\nTitle1=By Hand\n");
  EXPECT_EQ(vh::ReadViewTitle(), "By Hand");
}

TEST_F(SettingsFiles, PlacementReadsComposeTheDefualtTexts) {
  WriteFile(cmd.file("DialogPos.ini"), "[DIALOG_POSITION]\nGood=1,2,3,4,5,6,7,8,1\nEmpty=\n"
                                       "Bad=1, 2,3,4,5,6,7,8,1\nShort=1,2,3\n");
  for (const char* name : {"Good", "Empty", "Bad", "Short", "Missing", ""})
    EXPECT_EQ(vh::ReadWindowPlacement(name).has_value(), name == std::string("Good")) << name;
  EXPECT_EQ(recorder.statuses(),
            (Texts{"Could Not Find Saved Positions for EmptyDialog; Loading Defualt",
                   "Error Occured While Reading saved Positions for BadDialog; Loading Defualt"}));
  EXPECT_TRUE(recorder.messages().empty());
}

} // namespace
