// The placement value and its reading rules (Qt-free part).
#include <string>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/dialog_position.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

TEST(WindowPlacement, ParsesValues) {
  using enum vh::PlacementParse;
  const struct {
    const char* name;
    const char* value;
    vh::PlacementParse result;
    const char* formatted; // the placement as written back, when Ok
  } cases[] = {
      {"nine fields", "10,20,300,400,-1,-1,-32000,-32000,3", Ok,
       "10,20,300,400,-1,-1,-32000,-32000,3"},
      {"eight fields restore", "10,20,300,400,1,2,3,4", Ok, "10,20,300,400,1,2,3,4,1"},
      {"seven do not", "10,20,300,400,1,2,3", TooFew, ""},
      {"extra fields ignored", "1,2,3,4,5,6,7,8,9,10,11", Ok, "1,2,3,4,5,6,7,8,9"},
      {"empty pieces skipped", "1,,2,3,4,5,6,7,8,", Ok, "1,2,3,4,5,6,7,8,1"},
      {"blank after a comma", "10, 20,300,400,-1,-1,-1,-1,1", Malformed, ""},
      {"minus inside a field", "10,2-0,300,400,-1,-1,-1,-1,1", Malformed, ""},
      {"plus sign", "+10,20,300,400,-1,-1,-1,-1,1", Malformed, ""},
      {"bad field before too few", "x", Malformed, ""},
      {"lone minus reads as 0", "-,0,0,0,0,0,0,0,0", Ok, "0,0,0,0,0,0,0,0,0"},
      {"numbers clamped to int", "99999999999,-99999999999,0,0,0,0,0,0,0", Ok,
       "2147483647,-2147483648,0,0,0,0,0,0,0"},
  };
  for (const auto& c : cases) {
    vh::sWindowPlacement p;
    EXPECT_EQ(vh::ParseWindowPlacement(c.value, p), c.result) << c.name;
    if (c.result == Ok) {
      EXPECT_EQ(vh::FormatWindowPlacement(p), c.formatted) << c.name;
    }
  }
}

TEST(WindowPlacement, ReadingComposesTheDefualtTexts) {
  vh::test::TempDir cmd;
  vh::ScopedSettingsPaths paths({"", cmd.path().string()});
  vh::test::WriteFile(cmd.file("DialogPos.ini"), "[DIALOG_POSITION]\n"
                                                 "Good=1,2,3,4,5,6,7,8,1\n"
                                                 "Empty=\n"
                                                 "Bad=1, 2,3,4,5,6,7,8,1\n"
                                                 "Short=1,2,3\n");
  const struct {
    const char* name;
    bool found;
    const char* status;
  } cases[] = {
      {"Good", true, ""},
      {"Empty", false, "Could Not Find Saved Positions for EmptyDialog; Loading Defualt"},
      {"Bad", false, "Error Occured While Reading saved Positions for BadDialog; Loading Defualt"},
      {"Short", false, ""},
      {"Missing", false, ""},
      {"", false, ""},
  };
  for (const auto& c : cases) {
    vh::ScopedMessageRecorder recorder;
    EXPECT_EQ(vh::ReadWindowPlacement(c.name).has_value(), c.found) << c.name;
    const std::vector<std::string> expected =
        *c.status ? std::vector<std::string>{c.status} : std::vector<std::string>{};
    EXPECT_EQ(recorder.statuses(), expected) << c.name;
    EXPECT_TRUE(recorder.messages().empty()) << c.name;
  }
}

} // namespace
