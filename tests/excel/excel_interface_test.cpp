// Exports real files into a temporary folder and reads them back.
#include "excel/excel_interface.h"

#include <cstdlib>
#include <vector>

#include <gtest/gtest.h>

#include "tests/excel/temp_folder.h"
#include "tests/excel/xlsx_read.h"

namespace vh {
namespace {

using test::Sheet;
const auto T = [](std::string s) { return test::SheetCell{false, std::move(s)}; };
const auto N = [](std::string s) { return test::SheetCell{true, std::move(s)}; };

// A grid as the export sees it; row 0 holds "name:type" headings. A cell
// text "-" is declined. The grid's export test drives the export with an
// idle callback, so these go without one.
struct Grid {
  explicit Grid(std::vector<std::vector<std::string>> r) : rows(std::move(r)) {}
  std::vector<std::vector<std::string>> rows;

  static int Cell(void* context, int row, int column, std::string& text, int& type) {
    text = static_cast<Grid*>(context)->rows[row][column];
    if (row == 0) {
      type = std::atoi(text.c_str() + text.find(':') + 1);
      text.resize(text.find(':'));
    }
    return text != "-";
  }
  int Export(const std::string& path) {
    CExcelInterface excel(static_cast<int>(rows.size()), static_cast<int>(rows[0].size()));
    excel.SetContext(this, &Cell);
    excel.SetFilePath(path);
    return excel.WriteToExcel();
  }
};

// Text columns keep numeric-looking texts as text; the number columns of all
// four types write numbers (as doubles, so past 2^53 the nearest one). A
// full sheet is taken (one row more is the grid's export test's refusal) and
// the temporary file is gone.
TEST(ExcelExport, AFullSheetHeadingThenCellsNumericColumnsAsNumbers) {
  test::TempFolder folder;
  Grid grid({{"Client Id:3", "Qty:1", "Close:2", "Haircut:5", "Value:4", "Date:6"},
             {"500", "-20", "1234.50", "12.5", "9007199254740993", "-"}});
  grid.rows.resize(kExcelMaxRows, std::vector<std::string>(6, "-"));
  grid.rows.back()[0] = "last";
  const std::string path = folder.file("holdings.xlsx");
  ASSERT_NE(grid.Export(path), 0);
  // clang-format off
  const Sheet expected = {
      {"A1", T("Client Id")}, {"B1", T("Qty")}, {"C1", T("Close")}, {"D1", T("Haircut")},
      {"E1", T("Value")}, {"F1", T("Date")},
      {"A2", T("500")}, {"B2", N("-20")}, {"C2", N("1234.5")}, {"D2", N("12.5")},
      {"E2", N("9007199254740992")}, {"A1048576", T("last")},
  };
  // clang-format on
  EXPECT_EQ(test::ReadSheet(path), expected);
  EXPECT_EQ(folder.Entries(), std::set<std::string>{"holdings.xlsx"});
}

// A folder that cannot take the file is the grid's export test; a rename
// that fails leaves neither the temporary file nor anything else behind.
TEST(ExcelExport, AFailedRenameLeavesNoFile) {
  test::TempFolder folder;
  std::filesystem::create_directories(folder.path / "taken" / "inside");
  Grid grid({{"A:3"}, {"a"}});
  EXPECT_EQ(grid.Export(folder.file("taken")), 0);
  EXPECT_EQ(folder.Entries(), std::set<std::string>{"taken"});
  EXPECT_TRUE(std::filesystem::exists(folder.path / "taken" / "inside"));
}

} // namespace
} // namespace vh
