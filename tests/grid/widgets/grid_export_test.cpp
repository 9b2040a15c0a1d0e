// The spreadsheet export, read back from the written workbook.
#include "tests/grid/widgets/grid_fixture.h"

#include <cstdlib>

namespace vh::test {
namespace {

std::string Sheet(const std::string& xlsx) {
  const std::string out = xlsx + ".sheet.xml";
  const std::string command = "unzip -p '" + xlsx + "' xl/worksheets/sheet1.xml > '" + out + "'";
  return std::system(command.c_str()) == 0 ? ReadFile(out) : std::string();
}

TEST_F(GridTest, ExportWritesHeadingThenRowsWithNumbersAsNumbers) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  messages_.clear();
  // Shift+E writes into the documents folder, under the grid's name.
  std::filesystem::create_directory(dir_.path() / "Documents");
  QTest::keyClick(&grid, Qt::Key_E, Qt::ShiftModifier);
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{"File is generated"});
  const std::filesystem::path path = grid.LastExportPath();
  EXPECT_EQ(path.parent_path(), dir_.path() / "Documents");
  EXPECT_EQ(path.filename().string().rfind("testgrid_", 0), 0u);
  const std::string sheet = Sheet(path.string());
  const struct {
    const char* name;
    const char* xml;
  } cells[] = {
      {"textColumnStaysText", "<c r=\"A2\" t=\"inlineStr\"><is><t>C001</t></is></c>"},
      {"integerIsANumber", "<c r=\"C2\"><v>120</v></c>"},
      {"decimalIsANumber", "<c r=\"D3\"><v>3320.5</v></c>"},
      {"nonNumberInANumericColumn", "<c r=\"D5\" t=\"inlineStr\"><is><t>n/a</t></is></c>"},
      {"lastRow", "<c r=\"A6\" t=\"inlineStr\"><is><t>C005</t></is></c>"},
  };
  for (const auto& c : cells) {
    SCOPED_TRACE(c.name);
    EXPECT_NE(sheet.find(c.xml), std::string::npos) << sheet.substr(0, 600);
  }
  EXPECT_EQ(sheet.find("r=\"A7\""), std::string::npos);
}

TEST_F(GridTest, ExportFailuresSayWhy) {
  CFilterListCtrl& grid = MakeGrid();
  const struct {
    const char* name;
    int rows;
    std::string path;
    const char* message;
  } cases[] = {
      {"emptyGrid", 0, dir_.file("x.xlsx"), "No Items in the List"},
      {"unwritableFolder", 3, dir_.file("missing/x.xlsx"), "File generation Failed"},
      {"moreRowsThanASheet", 1048576, dir_.file("big.xlsx"), "File generation Failed"},
  };
  grid.Engine().SetOwnerDataSource(
      [](void*, uint64_t item, int, std::string& text, CellStyle&) {
        text = std::to_string(item);
        return 1;
      },
      nullptr);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    grid.DeleteAllItems();
    for (int i = 0; i < c.rows; ++i)
      grid.SetItemData(grid.InsertItem(0), uint64_t(i + 1));
    grid.Model().Flush();
    messages_.clear();
    EXPECT_EQ(grid.ExportToExcel(c.path), 0);
    EXPECT_EQ(messages_.messages(), std::vector<std::string>{c.message});
    EXPECT_FALSE(std::filesystem::exists(c.path));
  }
}

} // namespace
} // namespace vh::test
