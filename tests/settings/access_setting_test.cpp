// The two access routines: paths, modes, messages and status texts.
#include <string>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/access_setting.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WriteFile;

class AccessSetting : public ::testing::Test {
protected:
  TempDir grid_;
  TempDir cmd_;
  vh::ScopedSettingsPaths paths_{{grid_.path().string(), cmd_.path().string()}};
  vh::ScopedMessageRecorder recorder_;
};

// Files that cannot be opened compose a status text and show nothing.
TEST_F(AccessSetting, SettingValueOutcomes) {
  WriteFile(cmd_.file("U.ini"),
            "[S]\nempty=\nliteral=Key not found\nlong=" + std::string(5000, 'x') + "\n");
  ASSERT_TRUE(std::filesystem::create_directory(cmd_.file("Dir.ini")));
  ASSERT_EQ(::mkfifo(cmd_.file("Fifo.ini").c_str(), 0644), 0);
  WriteFile(cmd_.file("Locked.ini"), "[S]\nk=1\n");
  ASSERT_EQ(::chmod(cmd_.file("Locked.ini").c_str(), 0444), 0);
  const struct {
    const char* name;
    const char* file;
    int mode;
    const char* key;
    int result;
    std::string value; // value after the call, which starts as "before"
  } cases[] = {
      {"missing key empties the value", "U.ini", vh::kSettingRead, "none", 0, ""},
      {"stored default text counts as missing", "U.ini", vh::kSettingRead, "literal", 0, ""},
      {"empty value leaves it untouched", "U.ini", vh::kSettingRead, "empty", 0, "before"},
      {"long value cut to 4,094 characters", "U.ini", vh::kSettingRead, "long", 1,
       std::string(4094, 'x')},
      {"load mode is not for setting values", "U.ini", vh::kSettingLoad, "long", 0, "before"},
      {"missing file", "Missing.ini", vh::kSettingRead, "k", 0, "before"},
      {"directory", "Dir.ini", vh::kSettingWrite, "k", 0, "before"},
      {"fifo", "Fifo.ini", vh::kSettingRead, "k", 0, "before"},
      {"read-only file", "Locked.ini", vh::kSettingRead, "k", 0, "before"},
  };
  for (const auto& c : cases) {
    std::string value = "before";
    EXPECT_EQ(vh::AccessSettingValue(c.mode, "S", c.key, value, c.file), c.result) << c.name;
    EXPECT_EQ(value, c.value) << c.name;
  }
  EXPECT_FALSE(std::filesystem::exists(cmd_.file("Missing.ini")));
  const std::vector<std::string> expected = {"Did not detect Missing.ini", "Did not detect Dir.ini",
                                             "Did not detect Fifo.ini",
                                             "Did not detect Locked.ini"};
  EXPECT_EQ(recorder_.statuses(), expected);
  EXPECT_TRUE(recorder_.messages().empty());
}

TEST_F(AccessSetting, ColumnProfilesLiveInTheSettingsDirectory) {
  std::string value = "0,0,80";
  ASSERT_EQ(vh::AccessColumnProfile(vh::kSettingWrite, "rmsholdview", value), 1);
  EXPECT_EQ(ReadFile(grid_.file("UserSetting.ini")), "[rmsholdview]\r\nCOLUMNPROFILE=0,0,80\r\n");
  std::string read;
  EXPECT_EQ(vh::AccessColumnProfile(vh::kSettingLoad, "RMSHOLDVIEW", read), 1);
  EXPECT_EQ(read, "0,0,80");
  EXPECT_EQ(vh::AccessColumnProfile(vh::kSettingLoad, "other", read), 0);
  EXPECT_EQ(read, "Settings not found");
  EXPECT_EQ(vh::AccessColumnProfile(vh::kSettingRead, "rmsholdview", read), 0);
  EXPECT_TRUE(recorder_.messages().empty());
}

TEST(SettingsPaths, DirectoriesAreCutBeforeTheLastSeparator) {
  EXPECT_EQ(vh::DirectoryOfPath("/opt/tarn/tarntrader"), "/opt/tarn");
  EXPECT_EQ(vh::DirectoryOfPath("/tarntrader"), "");
  EXPECT_EQ(vh::DirectoryOfPath("tarntrader"), "");
  vh::ScopedSettingsPaths none({"", ""});
  EXPECT_EQ(vh::GridSettingsFile(), "/UserSetting.ini");
  EXPECT_EQ(vh::CommandLineFile("DialogPos.ini"), "/DialogPos.ini");
}

} // namespace
