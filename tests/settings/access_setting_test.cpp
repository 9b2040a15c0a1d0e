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

TEST_F(AccessSetting, SettingValueReadOutcomes) {
  WriteFile(cmd_.file("U.ini"),
            "[S]\nempty=\nliteral=Key not found\nlong=" + std::string(5000, 'x') + "\n");
  const struct {
    const char* name;
    int mode;
    const char* key;
    int result;
    std::string value; // value after the call, which starts as "before"
  } cases[] = {
      {"missing key empties the value", vh::kSettingRead, "none", 0, ""},
      {"stored default text counts as missing", vh::kSettingRead, "literal", 0, ""},
      {"empty value leaves it untouched", vh::kSettingRead, "empty", 0, "before"},
      {"long value cut to 4,094 characters", vh::kSettingRead, "long", 1, std::string(4094, 'x')},
      {"load mode is not for setting values", vh::kSettingLoad, "long", 0, "before"},
  };
  for (const auto& c : cases) {
    std::string value = "before";
    EXPECT_EQ(vh::AccessSettingValue(c.mode, "S", c.key, value, "U.ini"), c.result) << c.name;
    EXPECT_EQ(value, c.value) << c.name;
  }
  EXPECT_TRUE(recorder_.statuses().empty());
}

TEST_F(AccessSetting, UndetectedFilesComposeAStatusTextAndShowNothing) {
  std::string value;
  EXPECT_EQ(vh::AccessSettingValue(vh::kSettingRead, "S", "k", value, "Missing.ini"), 0);
  EXPECT_FALSE(std::filesystem::exists(cmd_.file("Missing.ini")));

  ASSERT_TRUE(std::filesystem::create_directory(cmd_.file("Dir.ini")));
  value = "v";
  EXPECT_EQ(vh::AccessSettingValue(vh::kSettingWrite, "S", "k", value, "Dir.ini"), 0);

  ASSERT_EQ(::mkfifo(cmd_.file("Fifo.ini").c_str(), 0644), 0);
  EXPECT_EQ(vh::AccessSettingValue(vh::kSettingRead, "S", "k", value, "Fifo.ini"), 0);

  WriteFile(cmd_.file("Locked.ini"), "[S]\nk=1\n");
  ASSERT_EQ(::chmod(cmd_.file("Locked.ini").c_str(), 0444), 0);
  EXPECT_EQ(vh::AccessSettingValue(vh::kSettingRead, "S", "k", value, "Locked.ini"), 0);

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
  const struct {
    const char* path;
    const char* dir;
  } cases[] = {
      {"/opt/tarn/tarntrader", "/opt/tarn"},
      {"/tarntrader", ""},
      {"tarntrader", ""},
      {"rel/dir/x", "rel/dir"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(vh::DirectoryOfPath(c.path), c.dir) << c.path;
  vh::ScopedSettingsPaths none({"", ""});
  EXPECT_EQ(vh::GridSettingsFile(), "/UserSetting.ini");
  EXPECT_EQ(vh::CommandLineFile("DialogPos.ini"), "/DialogPos.ini");
}

} // namespace
