// The grids' menus, keys, clipboard text, fitting and spreadsheet export
// (read back from the written workbook), driven as a user clicks and types.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"

#include <QClipboard>

#include <cstdlib>

namespace vh::test {
namespace {

enum MenuCase {
  kHeader = 1,
  kCustomizable = 2,
  kNoExport = 4,
  kNoImport = 8,
  kReposition = 16,
  kCustom = 32
};

TEST_F(GridTest, MenusShowTheirItemsInOrderWithGreying) {
  const struct {
    const char* name;
    int flags;
    Texts texts;
  } cases[] = {
      {"rowsAll",
       kCustomizable | kNoExport | kReposition | kCustom,
       {"Write to Excel\tShift+E [grey]", "Read from Excel", "Draw Grid Lines\tShift+G",
        "Customize \t Ctrl+Shift+C", "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match",
        "Add Custom Columns", "Edit Custom Columns", "Delete Custom Columns", "Reposition Columns",
        "Fit to Data", "Fit to Header Size", "Fit to Window"}},
      {"rowsPlain",
       kNoImport,
       {"Write to Excel\tShift+E", "Read from Excel [grey]", "Draw Grid Lines\tShift+G",
        "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match", "Fit To Data",
        "Fit to Header Size", "Fit to Window"}},
      {"headerRepositioning",
       kHeader | kReposition,
       {"Reposition Columns", "Fit to Data", "Fit to Header Size", "Fit to Window"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid(c.flags & kCustomizable);
    grid.SetExportAllowed(!(c.flags & kNoExport));
    grid.SetImportAllowed(!(c.flags & kNoImport));
    grid.SetRepositionAllowed(c.flags & kReposition);
    grid.SetAllowCustomColumns(c.flags & kCustom);
    EXPECT_EQ(MenuAt(c.flags & kHeader ? grid.horizontalHeader()->viewport() : grid.viewport()),
              c.texts);
  }
}

TEST_F(GridTest, KeysOnTheRowsAndInFilterFields) {
  const struct {
    const char* name;
    bool inField;
    char key;
    Qt::KeyboardModifiers mods;
    bool gridLines;
    Texts messages;
    QString fieldText;
  } cases[] = {
      {"shiftEExports", false, 'E', Qt::ShiftModifier, false, {"File is generated"}, ""},
      {"shiftGDrawsLines", false, 'G', Qt::ShiftModifier, true, {}, ""},
      {"capitalEInAFieldTypesE", true, 'E', Qt::ShiftModifier, false, {}, "E"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid();
    AddRows(SampleRows());
    Show();
    messages_.clear();
    if (c.inField)
      grid.ToggleFilterBar();
    QWidget* target =
        c.inField ? static_cast<QWidget*>(grid.FilterHeader()->FilterField(0)) : &grid;
    QTest::keyClick(target, c.key, c.mods);
    EXPECT_EQ(grid.showGrid(), c.gridLines);
    EXPECT_EQ(messages_.messages(), c.messages);
    EXPECT_EQ(grid.FilterHeader()->FilterField(0)->text(), c.fieldText);
  }
  QTest::keyClick(grid_, Qt::Key_Menu); // opens the row menu
  ASSERT_NE(grid_->OpenMenu(), nullptr);
  EXPECT_EQ(grid_->OpenMenu()->actions().front()->text(), "Write to Excel\tShift+E");
}

TEST_F(GridTest, CopyGivesSelectedRowsTabbedWithCrLf) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  const auto copy = [&] {
    QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
    return QGuiApplication::clipboard()->text();
  };
  EXPECT_EQ(copy(), ""); // nothing selected
  for (int r : {3, 1})
    grid.selectionModel()->select(grid.model()->index(r, 0),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
  EXPECT_EQ(copy(), "C002\tTCS\t15\t3320.5\t\r\nC004\tABB\t7\tn/a\t\r\n");
  QTest::keyClick(&grid, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(copy().count("\r\n"), 5);
}

TEST_F(GridTest, FitWidthsByModeWithTheirFloors) {
  const std::string wide(40, 'W');
  const struct {
    const char* name;
    int mode, client;
    std::string cell;
    int least, most; // -1: the header's own measure
  } cases[] = {
      {"windowShared", kFitWindow, 500, "1", 125, 125},
      {"windowHasNoFloor", kFitWindow, 120, "1", 30, 30},
      {"dataFloor", kFitData, 500, "1", 50, 50},
      {"dataWide", kFitData, 500, wide, 200, 1000},
      {"headerTakesTheLabel", kFitHeader, 500, "1", -1, 1000},
      {"headerTakesTheData", kFitHeader, 500, wide, 200, 1000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid();
    AddRows({Texts(4, c.cell)});
    Show();
    dialog_->resize(dialog_->width() + c.client - grid.viewport()->width(), 300);
    QCoreApplication::processEvents();
    ASSERT_EQ(grid.viewport()->width(), c.client);
    grid.FitColumns(c.mode);
    for (int s = 0; s < 4; ++s) {
      const int width = grid.horizontalHeader()->sectionSize(s);
      EXPECT_GE(width,
                c.least < 0 ? std::max(50, grid.horizontalHeader()->sectionSizeHint(s)) : c.least);
      EXPECT_LE(width, c.most);
    }
  }
}

// Only a customizable grid inside a dialog reads its saved appearance.
TEST_F(GridTest, SavedAppearanceIsReadOnlyByCustomizableGridsInDialogs) {
  WriteFile(dir_.file("UserSetting.ini"), "[CUSTOMIZE_LISTS]\n-0=0,0,Arial,12\n"
                                          "testgrid-9016=FF0000,FFFFFF,Arial,12\n");
  for (const bool customizable : {false, true}) {
    CFilterListCtrl& grid = MakeGrid(customizable);
    EXPECT_EQ(grid.HasOwnSettings(), customizable);
    EXPECT_EQ(grid.DefaultBackground(), customizable ? QColor(0, 0, 255) : QColor(Qt::black));
  }
  CFilterListCtrl lone; // customizable, in no dialog: it must not read "-0"
  lone.SetCustomizable(true);
  lone.SetUpColumns(columns_);
  EXPECT_FALSE(lone.HasOwnSettings());
}

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
  EXPECT_EQ(messages_.messages(), Texts{"File is generated"});
  const std::filesystem::path path = grid.LastExportPath();
  EXPECT_EQ(path.parent_path(), dir_.path() / "Documents");
  EXPECT_EQ(path.filename().string().rfind("testgrid_", 0), 0u);
  // Typed columns write numbers, unless the text is none; the rest texts.
  const std::string sheet = Sheet(path.string());
  for (const char* cell :
       {"<c r=\"C2\"><v>120</v></c>", "<c r=\"D5\" t=\"inlineStr\"><is><t>n/a</t></is></c>",
        "<c r=\"A6\" t=\"inlineStr\"><is><t>C005</t></is></c>"})
    EXPECT_NE(sheet.find(cell), std::string::npos) << cell << sheet.substr(0, 600);
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
  data_.rows.assign(1048576, Texts{"1"});
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    grid.DeleteAllItems();
    for (int i = 0; i < c.rows; ++i)
      grid.SetItemData(grid.InsertItem(0), uint64_t(i + 1));
    grid.Model().Flush();
    messages_.clear();
    EXPECT_EQ(grid.ExportToExcel(c.path), 0);
    EXPECT_EQ(messages_.messages(), Texts{c.message});
    EXPECT_FALSE(std::filesystem::exists(c.path));
  }
}

} // namespace
} // namespace vh::test
