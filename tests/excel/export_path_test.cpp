#include "excel/export_path.h"

#include <filesystem>
#include <fstream>
#include <regex>

#include <gtest/gtest.h>

#include "tests/excel/temp_folder.h"

namespace vh {
namespace {

namespace fs = std::filesystem;

TEST(ExportPath, StemsKeepOnlyWhatEveryFileSystemAccepts) {
  const struct {
    const char* name;
    std::string in;
    std::string out;
  } cases[] = {
      {"plain", "rmsholdview", "rmsholdview"},
      {"separators", "a/b\\c", "a_b_c"},
      {"windowsReserved", "x:*?\"<>|y", "x_______y"},
      {"controlCharacters", "tab\there\nnl\x7F", "tab_here_nl_"},
      {"trimmedBlanksAndDots", " . hidden. ", "hidden"},
      {"innerBlanksKept", "View Holdings", "View Holdings"},
      {"dotsOnly", "..", std::string(kDefaultExportStem)},
      {"empty", "", std::string(kDefaultExportStem)},
      {"utf8Kept", "r\xC3\xA9sum\xC3\xA9", "r\xC3\xA9sum\xC3\xA9"},
      {"cutToLimit", std::string(150, 'a'), std::string(kMaxExportStemBytes, 'a')},
      // A two-byte character straddling the limit goes whole.
      {"cutOnCharacter", std::string(kMaxExportStemBytes - 1, 'a') + "\xC3\xA9",
       std::string(kMaxExportStemBytes - 1, 'a')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(SafeFileStem(c.in), c.out);
  }
}

TEST(ExportPath, DocumentsFolderFollowsUserDirsThenDocumentsThenHome) {
  const struct {
    const char* name;
    const char* userDirs; // nullptr: no user-dirs.dirs file
    bool makeDocuments;   // whether <home>/Documents exists
    bool makeDocs;        // whether <home>/Docs exists
    const char* expected; // relative to home; "" is home itself
  } cases[] = {
      {"userDirsRelativeToHome", "XDG_DOCUMENTS_DIR=\"$HOME/Docs\"\n", true, true, "/Docs"},
      {"userDirsAbsolute", "XDG_DOCUMENTS_DIR=\"@HOME@/Docs\"\n", false, true, "/Docs"},
      {"userDirsAmongOthers",
       "# written by xdg-user-dirs-update\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\n"
       "XDG_DOCUMENTS_DIR=\"$HOME/Docs\"\r\nXDG_MUSIC_DIR=\"$HOME/Music\"\n",
       true, true, "/Docs"},
      {"userDirsFolderMissing", "XDG_DOCUMENTS_DIR=\"$HOME/Docs\"\n", true, false, "/Documents"},
      {"userDirsUnquoted", "XDG_DOCUMENTS_DIR=$HOME/Docs\n", true, true, "/Documents"},
      {"userDirsRelativePath", "XDG_DOCUMENTS_DIR=\"Docs\"\n", true, true, "/Documents"},
      {"userDirsOtherVariable", "XDG_DOCUMENTS_DIR=\"$HOMEX/Docs\"\n", false, true, ""},
      {"noUserDirs", nullptr, true, true, "/Documents"},
      {"nothingButHome", nullptr, false, false, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    test::TempFolder home;
    const std::string h = home.path().string();
    if (c.makeDocuments)
      fs::create_directory(home.path() / "Documents");
    if (c.makeDocs)
      fs::create_directory(home.path() / "Docs");
    if (c.userDirs) {
      fs::create_directory(home.path() / ".config");
      std::string content = c.userDirs;
      if (const size_t at = content.find("@HOME@"); at != std::string::npos)
        content.replace(at, 6, h);
      std::ofstream(home.file(".config/user-dirs.dirs")) << content;
    }
    EXPECT_EQ(DocumentsFolderFor(h, ""), h + c.expected);
  }
}

TEST(ExportPath, ConfigHomeIsWhereUserDirsIsRead) {
  test::TempFolder home;
  test::TempFolder config;
  const std::string h = home.path().string();
  fs::create_directory(home.path() / "Docs");
  std::ofstream(config.file("user-dirs.dirs")) << "XDG_DOCUMENTS_DIR=\"$HOME/Docs\"\n";
  EXPECT_EQ(DocumentsFolderFor(h, config.path().string()), h + "/Docs");
  EXPECT_EQ(DocumentsFolderFor(h, ""), h);
}

TEST(ExportPath, NameCarriesStemAndLocalTimeStampAndNeverReplacesAFile) {
  test::TempFolder folder;
  std::tm local{};
  local.tm_year = 2024 - 1900;
  local.tm_mon = 5; // June
  local.tm_mday = 7;
  local.tm_hour = 9;
  local.tm_min = 5;
  local.tm_sec = 3;
  local.tm_isdst = -1;
  const std::time_t when = std::mktime(&local);
  const std::string head = folder.file("rms_holdview_20240607_090503");

  EXPECT_EQ(DefaultExportPath(folder.path().string(), "rms/holdview", when), head + ".xlsx");
  std::ofstream(head + ".xlsx") << "x";
  EXPECT_EQ(DefaultExportPath(folder.path().string(), "rms/holdview", when), head + "_2.xlsx");
  std::ofstream(head + "_2.xlsx") << "x";
  EXPECT_EQ(DefaultExportPath(folder.path().string(), "rms/holdview", when), head + "_3.xlsx");
}

} // namespace
} // namespace vh
