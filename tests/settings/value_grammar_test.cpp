// The settings value grammars: tables of values and of broken values, round
// trips, and the routines that read and write them through the files.
#include <climits>
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

std::vector<std::string> Keywords(const vh::sListAppearance& a) {
  return a.keywordTexts ? *a.keywordTexts : std::vector<std::string>{"<null>"};
}

TEST(ListAppearance, ParsesValues) {
  const struct {
    const char* name;
    const char* value;
    uint32_t background, text;
    const char* face;
    const char* size;
    int column;
    std::vector<std::string> keywords;
    std::vector<uint32_t> colours;
  } cases[] = {
      {"no keywords", "0,FF00,Arial,10,-1", 0, 0xFF00, "Arial", "10", -1, {"<null>"}, {}},
      {"keyword without colour drops all",
       "0,FF00,Arial,10,2,buy",
       0,
       0xFF00,
       "Arial",
       "10",
       2,
       {},
       {}},
      {"later keyword without colour drops earlier ones",
       "0,0,A,8,1,buy,FF,sell,",
       0,
       0,
       "A",
       "8",
       1,
       {},
       {}},
      {"full value",
       "0,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000,",
       0,
       0xFF00,
       "MS Shell Dlg 2",
       "8",
       3,
       {"buy", "sell"},
       {0xFF, 0xFF0000}},
      {"keywords lower-cased", "1,2,F,9,0,BUY,ab,", 1, 2, "F", "9", 0, {"buy"}, {0xAB}},
      {"keyword column alone", "FFFFFF,0,F,9,4,", 0xFFFFFF, 0, "F", "9", 4, {"<null>"}, {}},
      {"no keyword part", "10,20,F,9", 0x10, 0x20, "F", "9", -1, {"<null>"}, {}},
      {"short value keeps the defaults",
       "C0C0C0",
       0xC0C0C0,
       0xFF00,
       "MS Shell Dlg 2",
       "8",
       -1,
       {"<null>"},
       {}},
      {"junk colours are 0, colours cut to 32 bits",
       "zz,1FFFFFFFF,F,9,-1",
       0,
       0xFFFFFFFF,
       "F",
       "9",
       -1,
       {"<null>"},
       {}},
  };
  for (const auto& c : cases) {
    const vh::sListAppearance a = vh::ParseListAppearance(c.value);
    EXPECT_EQ(a.backgroundColour, c.background) << c.name;
    EXPECT_EQ(a.textColour, c.text) << c.name;
    EXPECT_EQ(a.fontFace, c.face) << c.name;
    EXPECT_EQ(a.fontSize, c.size) << c.name;
    EXPECT_EQ(a.keywordColumn, c.column) << c.name;
    EXPECT_EQ(Keywords(a), c.keywords) << c.name;
    EXPECT_EQ(a.keywordColours ? *a.keywordColours : std::vector<uint32_t>{}, c.colours) << c.name;
    EXPECT_EQ(a.keywordColouring, !c.colours.empty()) << c.name;
  }
}

TEST(ListAppearance, FormatsAndRoundTrips) {
  vh::sListAppearance a;
  EXPECT_EQ(vh::FormatListAppearance(a), "0,FF00,MS Shell Dlg 2,8");
  a.keywordColumn = 3;
  EXPECT_EQ(vh::FormatListAppearance(a), "0,FF00,MS Shell Dlg 2,8,3,");
  a.backgroundColour = 0xABCDEF;
  a.keywordTexts =
      std::make_shared<std::vector<std::string>>(std::vector<std::string>{"Buy", "sell"});
  a.keywordColours = std::make_shared<std::vector<uint32_t>>(std::vector<uint32_t>{0xFF, 0xFF0000});
  const std::string value = vh::FormatListAppearance(a);
  EXPECT_EQ(value, "ABCDEF,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000,");
  EXPECT_EQ(vh::FormatListAppearance(vh::ParseListAppearance(value)), value);
}

TEST(ListAppearance, CopiesShareTheKeywordArrays) {
  vh::sListAppearance a = vh::ParseListAppearance("0,0,F,8,1,k,1,");
  const vh::sListAppearance copy = a;
  a.keywordTexts->push_back("more");
  EXPECT_EQ(copy.keywordTexts->size(), 2u);
}

TEST(ListAppearance, LoadsPerGridWithDefaultsForTheRest) {
  TempDir dir;
  vh::ScopedSettingsPaths paths({dir.path().string(), ""});
  vh::sListAppearance a;
  EXPECT_FALSE(vh::LoadListAppearance("rmsholdview", 9001, a));
  EXPECT_EQ(a.fontFace, "MS Shell Dlg 2");
  EXPECT_FALSE(std::filesystem::exists(dir.file("UserSetting.ini")));

  vh::sListAppearance mine = vh::ParseListAppearance("FF,0,Arial,10,2,Sell,FF,");
  ASSERT_TRUE(vh::SaveListAppearance("rmsholdview", 9001, mine));
  EXPECT_EQ(ReadFile(dir.file("UserSetting.ini")),
            "[CUSTOMIZE_LISTS]\nrmsholdview-9001=FF,0,Arial,10,2,sell,FF,\n");
  ASSERT_TRUE(vh::LoadListAppearance("rmsholdview", 9001, a));
  EXPECT_EQ(a.fontFace, "Arial");
  EXPECT_EQ(Keywords(a), std::vector<std::string>{"sell"});
  EXPECT_FALSE(vh::LoadListAppearance("rmsholdview", 9002, a));

  WriteFile(dir.file("UserSetting.ini"), "[CUSTOMIZE_LISTS]\ng-1=String not found\ng-2=\n");
  EXPECT_FALSE(vh::LoadListAppearance("g", 1, a));
  EXPECT_FALSE(vh::LoadListAppearance("g", 2, a));
}

TEST(ListAppearance, FontHeightIsMinusPointsAtTheScreenResolution) {
  const struct {
    const char* size;
    int dpi;
    int height;
  } cases[] = {
      {"8", 96, -11},
      {"10", 96, -13},
      {"9", 120, -15},
      {"8", 72, -8},
      {"-8", 96, 11},
      {"x", 96, 0},
      {"2147483647", 96, INT_MIN},
  };
  for (const auto& c : cases)
    EXPECT_EQ(vh::MakeListFont("Arial", c.size, c.dpi).height, c.height) << c.size << "@" << c.dpi;
}

vh::sColumnProfileEntry B(int column, int position, int width) {
  vh::sColumnProfileEntry e;
  e.column = column;
  e.position = position;
  e.width = width;
  return e;
}

vh::sColumnProfileEntry C(int column, int position, int width, const char* name, const char* stored,
                          const char* displayed) {
  vh::sColumnProfileEntry e = B(column, position, width);
  e.name = name;
  e.storedExpression = stored;
  e.displayExpression = displayed;
  return e;
}

TEST(ColumnProfile, ParsesValues) {
  using E = vh::sColumnProfileEntry;
  const struct {
    const char* name;
    const char* value;
    int builtin;
    std::vector<E> entries;
  } cases[] = {
      {"built-ins only", "0,0,80,1,-1,0,2,1,95", 3, {B(0, 0, 80), B(1, -1, 0), B(2, 1, 95)}},
      {"custom column",
       "0,0,80,3,1,120,Net#\"1\"*2#Qty*2",
       3,
       {B(0, 0, 80), C(3, 1, 120, "Net", "\"1\"*2", "Qty*2")}},
      {"custom then built-in", "3,0,60,N#E#D,0,1,70", 3, {C(3, 0, 60, "N", "E", "D"), B(0, 1, 70)}},
      {"cut definition drops the column", "0,0,80,3,1,120,Net#\"1\"*", 3, {B(0, 0, 80)}},
      {"cut triple stops quietly", "0,0,80,1,-1", 3, {B(0, 0, 80)}},
      {"empty fields read as 0", "0,,", 3, {B(0, 0, 0)}},
      {"junk numbers read as 0", "x,y,z", 3, {B(0, 0, 0)}},
      {"numbers at the int limits",
       "-2147483649,2147483647,99999999999",
       3,
       {B(INT_MIN, INT_MAX, INT_MAX)}},
      {"empty value", "", 3, {}},
  };
  for (const auto& c : cases) {
    const std::vector<E> got = vh::ParseColumnProfile(c.value, c.builtin);
    ASSERT_EQ(got.size(), c.entries.size()) << c.name;
    for (size_t i = 0; i < got.size(); ++i) {
      const E& g = got[i];
      const E& w = c.entries[i];
      EXPECT_EQ(
          std::tie(g.column, g.position, g.width, g.name, g.storedExpression, g.displayExpression),
          std::tie(w.column, w.position, w.width, w.name, w.storedExpression, w.displayExpression))
          << c.name << " entry " << i;
    }
  }
}

TEST(ColumnProfile, RoundTripsThroughTheSettingsFile) {
  TempDir dir;
  vh::ScopedSettingsPaths paths({dir.path().string(), ""});
  vh::ScopedMessageRecorder recorder;
  const std::vector<vh::sColumnProfileEntry> entries = {
      B(0, 0, 80), B(1, -1, 0), B(2, 2, 95), C(3, 1, 110, "Value", " \"4\"*\"5\"", "Qty*Price")};
  ASSERT_TRUE(vh::SaveColumnProfileEntries("rmsholdview", entries, 3));
  EXPECT_EQ(
      ReadFile(dir.file("UserSetting.ini")),
      "[rmsholdview]\nCOLUMNPROFILE=0,0,80,1,-1,0,2,2,95,3,1,110,Value# \"4\"*\"5\"#Qty*Price\n");
  std::vector<vh::sColumnProfileEntry> back;
  ASSERT_TRUE(vh::LoadColumnProfileEntries("rmsholdview", 3, back));
  EXPECT_EQ(vh::FormatColumnProfile(back, 3), vh::FormatColumnProfile(entries, 3));
  EXPECT_TRUE(recorder.messages().empty());
}

TEST(ColumnProfile, ACutReadLosesTheDefinitionItCut) {
  TempDir dir;
  vh::ScopedSettingsPaths paths({dir.path().string(), ""});
  std::string value = "0,0,80";
  while (value.size() < 4080)
    value += ",0,0,80";
  value += ",1,1,90,Custom#\"0\"+\"0\"#A+A"; // crosses the 4,095th character
  WriteFile(dir.file("UserSetting.ini"), "[g]\nCOLUMNPROFILE=" + value + "\n");
  std::vector<vh::sColumnProfileEntry> back;
  ASSERT_TRUE(vh::LoadColumnProfileEntries("g", 1, back));
  ASSERT_FALSE(back.empty());
  EXPECT_EQ(back.back().column, 0);
  EXPECT_EQ(back.size(), 4080 / 7 + 1);
}

TEST(ColumnProfile, FailedSavesAreReported) {
  TempDir dir;
  vh::ScopedSettingsPaths paths({dir.file("missing-dir"), ""});
  vh::ScopedMessageRecorder recorder;
  EXPECT_FALSE(vh::SaveColumnProfileEntries("g", {B(0, 0, 80)}, 1));
  const std::vector<std::string> expected = {"File Open Failed",
                                             "Error while saving column profile"};
  EXPECT_EQ(recorder.messages(), expected);
}

TEST(AlertRule, ParsesValues) {
  const struct {
    const char* name;
    const char* value;
    bool rule;
    const char* f1;
    const char* f2;
    const char* f3;
    const char* f5;
  } cases[] = {
      {"full", "Net|less than or equal to|100|5|Net", true, "less than or equal to", "Net", "100",
       "5"},
      {"fifth piece not read", "Net|greater than or equal to|1|6|Other", true,
       "greater than or equal to", "Net", "1", "6"},
      {"short value leaves fields empty", "Net|less than or equal to", true,
       "less than or equal to", "Net", "", ""},
      {"deleted rule", " ", false, "", "", "", ""},
      {"empty value", "", false, "", "", "", ""},
  };
  for (const auto& c : cases) {
    const auto rule = vh::ParseAlertRule("Key", c.value);
    ASSERT_EQ(rule.has_value(), c.rule) << c.name;
    if (!rule)
      continue;
    EXPECT_EQ(rule->field1, c.f1) << c.name;
    EXPECT_EQ(rule->field2, c.f2) << c.name;
    EXPECT_EQ(rule->field3, c.f3) << c.name;
    EXPECT_EQ(rule->field4, "Key") << c.name;
    EXPECT_EQ(rule->field5, c.f5) << c.name;
  }
}

TEST(AlertRule, WrittenDeletedAndReadBack) {
  TempDir grid, cmd;
  vh::ScopedSettingsPaths paths({grid.path().string(), cmd.path().string()});
  vh::ScopedMessageRecorder recorder;
  const vh::CustomAlert rule{"greater than or equal to", "Net Value", "2.5", "Net Value", "7"};
  ASSERT_TRUE(vh::WriteAlertRule("Net Value", rule));
  EXPECT_EQ(ReadFile(cmd.file("UserSetting.ini")),
            "[CUSTOMIZE_WINDOW]\nNet Value=Net Value|greater than or equal to|2.5|7|Net Value\n");
  const auto back = vh::ReadAlertRule("net value");
  ASSERT_TRUE(back);
  EXPECT_EQ(vh::FormatAlertRule(*back), "Net Value|greater than or equal to|2.5|7|net value");

  ASSERT_TRUE(vh::DeleteAlertRule("Net Value"));
  EXPECT_EQ(ReadFile(cmd.file("UserSetting.ini")), "[CUSTOMIZE_WINDOW]\nNet Value= \n");
  EXPECT_FALSE(vh::ReadAlertRule("Net Value"));
  EXPECT_FALSE(std::filesystem::exists(grid.file("UserSetting.ini")));
}

TEST(ViewTitle, WrittenAndReadFromDifferentSections) {
  TempDir cmd;
  vh::ScopedSettingsPaths paths({"", cmd.path().string()});
  vh::ScopedMessageRecorder recorder;
  EXPECT_FALSE(vh::ReadViewTitle());
  EXPECT_TRUE(recorder.statuses().empty()) << "a missing file is not probed further";
  ASSERT_TRUE(vh::WriteViewTitle("My Holdings"));
  EXPECT_FALSE(vh::ReadViewTitle()) << "the written title is not read back";
  WriteFile(cmd.file("UserSetting.ini"), "[CUSTOMIZE_WINDOW]\nTitle1=By Hand\n");
  EXPECT_EQ(vh::ReadViewTitle(), "By Hand");
}

} // namespace
