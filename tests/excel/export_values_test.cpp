// Cell values and default file names of an export.
#include <fstream>

#include <gtest/gtest.h>

#include "excel/cell_value.h"
#include "excel/export_path.h"
#include "tests/excel/temp_folder.h"

namespace vh {
namespace {

TEST(ExportValues, OnlyWholeDecimalNumbersAreNumbers) {
  for (const auto& [text, expected] :
       {std::pair{"1234.50", 1234.5}, {"-17", -17.0}, {".5", 0.5}, {"25E-2", 0.25}}) {
    double value = 0;
    EXPECT_TRUE(ParseWholeNumber(text, value) && value == expected) << text;
  }
  for (std::string_view text : {"", " 12", "12 ", "1,234", "0x1A", "inf", "nan", "1e", "1e400"}) {
    double value = 99;
    EXPECT_FALSE(ParseWholeNumber(text, value)) << text;
    EXPECT_EQ(value, 99) << text;
  }
}

TEST(ExportValues, CellTextsAreValidUtf8WithinTheCellLimit) {
  const std::string kBad = "\xEF\xBF\xBD", kMax(kExcelMaxCellBytes, 'x');
  const struct {
    const char* name;
    std::string in, out;
  } cases[] = {
      {"latin1Byte", "caf\xE9", "caf" + kBad},
      {"overlongTruncatedAndValid", "\xC0\xAF\xE2\x82\xC3\xA9",
       kBad + kBad + kBad + kBad + "\xC3\xA9"},
      {"nulNotCutting", std::string("a\0b", 3), "a" + kBad + "b"},
      {"characterStraddlingLimit", kMax.substr(1) + "\xC3\xA9", kMax.substr(1)},
  };
  for (const auto& c : cases)
    EXPECT_EQ(CellText(c.in), c.out) << c.name;
}

TEST(ExportValues, StemsKeepOnlyWhatEveryFileSystemAccepts) {
  const std::string kLong = std::string(kMaxExportStemBytes - 1, 'a');
  const struct {
    std::string in, out;
  } cases[] = {{"View Holdings", "View Holdings"},
               {"a/b\\c:*?\"<>|d\te", "a_b_c_______d_e"},
               {" . hidden. ", "hidden"},
               {"..", "export"},
               {kLong + "\xC3\xA9", kLong}};
  for (const auto& c : cases)
    EXPECT_EQ(SafeFileStem(c.in), c.out) << c.in;
}

TEST(ExportValues, DocumentsFolderIsUserDirsThenDocumentsThenHome) {
  const struct {
    const char* userDirs; // nullptr: none
    bool documents;       // <home>/Documents exists; <home>/Docs always does
    const char* expected;
  } cases[] = {
      {"# x\nXDG_DOCUMENTS_DIR=\"$HOME/Docs\"\r\n", true, "/Docs"},
      {"XDG_DOCUMENTS_DIR=\"$HOME/Gone\"\n", true, "/Documents"},
      {"XDG_DOCUMENTS_DIR=$HOME/Docs\n", true, "/Documents"},
      {"XDG_DOCUMENTS_DIR=\"Docs\"\n", false, ""},
      {nullptr, true, "/Documents"},
  };
  for (const auto& c : cases) {
    test::TempFolder home;
    std::filesystem::create_directories(home.path / ".config");
    std::filesystem::create_directory(home.path / "Docs");
    if (c.documents)
      std::filesystem::create_directory(home.path / "Documents");
    if (c.userDirs)
      std::ofstream(home.file(".config/user-dirs.dirs")) << c.userDirs;
    EXPECT_EQ(DocumentsFolderFor(home.path, ""), home.path.string() + c.expected) << c.userDirs;
  }
}

TEST(ExportValues, NamesCarryStemAndLocalTimeAndNeverReplaceAFile) {
  test::TempFolder folder;
  std::tm local{};
  local.tm_year = 124, local.tm_mon = 5, local.tm_mday = 7, local.tm_hour = 9, local.tm_isdst = -1;
  const std::time_t when = std::mktime(&local);
  const std::string head = folder.file("rms_holdview_20240607_090000");
  EXPECT_EQ(DefaultExportPath(folder.path, "rms/holdview", when), head + ".xlsx");
  std::ofstream(head + ".xlsx") << "x";
  EXPECT_EQ(DefaultExportPath(folder.path, "rms/holdview", when), head + "_2.xlsx");
}

} // namespace
} // namespace vh
