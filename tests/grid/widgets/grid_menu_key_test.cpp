// The grids' menus, keys, clipboard text, fitting and dialog hooks, driven
// as a user clicks and types.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"

#include <QClipboard>
#include <QScrollBar>

namespace vh::test {
namespace {

using Texts = std::vector<std::string>;

TEST_F(GridTest, MenusShowTheirItemsInOrderWithGreying) {
  const struct {
    const char* name;
    bool header, customizable, exportOk, importOk, reposition, customColumns;
    Texts texts;
    std::vector<bool> enabled;
  } cases[] = {
      {"rowsPlain",
       false,
       false,
       true,
       true,
       false,
       false,
       {"Write to Excel\tShift+E", "Read from Excel", "Draw Grid Lines\tShift+G",
        "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match", "Fit To Data",
        "Fit to Header Size", "Fit to Window"},
       {true, true, true, true, true, true, true, true, true}},
      {"rowsCustomizableNoExportNoImport",
       false,
       true,
       false,
       false,
       true,
       true,
       {"Write to Excel\tShift+E", "Read from Excel", "Draw Grid Lines\tShift+G",
        "Customize \t Ctrl+Shift+C", "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match",
        "Add Custom Columns", "Edit Custom Columns", "Delete Custom Columns", "Reposition Columns",
        "Fit to Data", "Fit to Header Size", "Fit to Window"},
       {false, false, true, true, true, true, true, true, true, true, true, true, true, true}},
      {"headerRepositioning",
       true,
       false,
       true,
       true,
       true,
       false,
       {"Reposition Columns", "Fit to Data", "Fit to Header Size", "Fit to Window"},
       {true, true, true, true}},
      {"headerFixed",
       true,
       false,
       true,
       true,
       false,
       false,
       {"Fit To Data", "Fit to Header Size", "Fit to Window"},
       {true, true, true}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid(c.customizable);
    grid.SetExportAllowed(c.exportOk);
    grid.SetImportAllowed(c.importOk);
    grid.SetRepositionAllowed(c.reposition);
    grid.SetAllowCustomColumns(c.customColumns);
    std::vector<bool> enabled;
    QWidget* target = c.header ? grid.horizontalHeader()->viewport() : grid.viewport();
    EXPECT_EQ(MenuAt(target, &enabled), c.texts);
    EXPECT_EQ(enabled, c.enabled);
  }
}

TEST_F(GridTest, SavedAppearanceIsReadOnlyByCustomizableGridsInDialogs) {
  WriteFile(dir_.file("UserSetting.ini"),
            "[CUSTOMIZE_LISTS]\ntestgrid-9016=FF0000,FFFFFF,DejaVu Sans,12,1,tcs,FF,\n");
  const struct {
    const char* name;
    bool customizable, inDialog, colouring;
    QColor text, background;
    bool own;
  } cases[] = {
      {"customizableInDialog", true, true, true, Qt::white, QColor(0, 0, 255), true},
      {"coloursNotAllowed", true, true, false, QColor(0, 255, 0), Qt::black, true},
      {"notCustomizable", false, true, true, QColor(0, 255, 0), Qt::black, false},
      {"notInADialog", true, false, true, QColor(0, 255, 0), Qt::black, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    dialog_.reset();
    window_.reset();
    dialog_ = std::make_unique<QDialog>();
    auto* grid = new CFilterListCtrl(dialog_.get());
    if (!c.inDialog) {
      window_ = std::make_unique<QWidget>();
      grid->setParent(window_.get());
    }
    grid->SetProfileName("testgrid");
    grid->SetListControlId(9016);
    grid->SetCustomizable(c.customizable);
    grid->SetColouringAllowed(c.colouring);
    grid->Engine().SetOwnerDataSource(&GridRows::Fetch, &data_);
    grid->SetUpColumns(HoldingColumns());
    EXPECT_EQ(grid->HasOwnSettings(), c.own);
    EXPECT_EQ(grid->DefaultTextColour(), c.text);
    EXPECT_EQ(grid->DefaultBackground(), c.background);
    // The row height follows the font: its line height plus one pixel.
    const QFontMetrics fm(grid->font());
    EXPECT_EQ(grid->verticalHeader()->defaultSectionSize(), fm.height() + fm.leading() + 1);
    if (c.own)
      EXPECT_EQ(grid->font().family(), "DejaVu Sans");
  }
}

TEST_F(GridTest, ExactMatchIsCheckedWhileOn) {
  CFilterListCtrl& grid = MakeGrid();
  grid.OnCommand(kCmdExactMatch);
  const Texts texts = MenuAt(grid.viewport());
  EXPECT_NE(std::find(texts.begin(), texts.end(), "Exact Match [x]"), texts.end());
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
      {"ctrlShiftGDoesNot", false, 'G', Qt::ControlModifier | Qt::ShiftModifier, false, {}, ""},
      {"capitalEInAFieldTypesE", true, 'E', Qt::ShiftModifier, false, {}, "E"},
      {"capitalGInAFieldTypesG", true, 'G', Qt::ShiftModifier, false, {}, "G"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid();
    AddRows(SampleRows());
    grid.SetExportAllowed(true);
    Show();
    messages_.clear();
    QWidget* target = &grid;
    if (c.inField) {
      grid.ToggleFilterBar();
      target = grid.FilterHeader()->FilterField(0);
    }
    QTest::keyClick(target, c.key, c.mods);
    EXPECT_EQ(grid.showGrid(), c.gridLines);
    EXPECT_EQ(messages_.messages(), c.messages);
    if (c.inField) {
      EXPECT_EQ(grid.FilterHeader()->FilterField(0)->text(), c.fieldText);
    }
  }
}

TEST_F(GridTest, CopyGivesSelectedRowsTabbedWithCrLf) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  const struct {
    const char* name;
    std::vector<int> rows;
    bool selectAll;
    QString text;
  } cases[] = {
      {"nothingSelected", {}, false, ""},
      {"twoRowsAscending", {3, 1}, false, "C002\tTCS\t15\t3320.5\t\r\nC004\tABB\t7\tn/a\t\r\n"},
      {"ctrlAThenCtrlC", {}, true, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    grid.clearSelection();
    for (int r : c.rows)
      grid.selectionModel()->select(grid.model()->index(r, 0),
                                    QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (c.selectAll)
      QTest::keyClick(&grid, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier);
    const QString got = QGuiApplication::clipboard()->text();
    if (c.selectAll) {
      EXPECT_EQ(got.count("\r\n"), 5);
    } else {
      EXPECT_EQ(got, c.text);
    }
  }
}

TEST_F(GridTest, FitWidthsByMode) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows({{"C1", "A VERY LONG SYMBOL NAME INDEED", "1", "2"}});
  Show();
  QHeaderView* h = grid.horizontalHeader();
  grid.OnCommand(kCmdFitToData);
  EXPECT_EQ(h->sectionSize(0), 50); // short texts get the floor
  EXPECT_GT(h->sectionSize(1), 100);
  grid.OnCommand(kCmdFitToHeader);
  EXPECT_GE(h->sectionSize(0), 50);
  EXPECT_GE(h->sectionSize(3), grid.fontMetrics().horizontalAdvance("Close"));
  grid.OnCommand(kCmdFitToWindow);
  const int each = grid.viewport()->width() / 4;
  for (int s = 0; s < 4; ++s)
    EXPECT_EQ(h->sectionSize(s), each);
}

// A stand-in for the dialogs another part of the system builds.
struct StandIn : CGridDialog {
  std::vector<std::pair<CCommonListCtrl*, int>> opened;
  void OpenFor(CCommonListCtrl* grid, int mode) override { opened.emplace_back(grid, mode); }
};

TEST_F(GridTest, DialogHooksOpenWithTheirModes) {
  std::vector<StandIn*> made;
  auto factory = [&made](QWidget* parent) {
    made.push_back(new StandIn);
    made.back()->setParent(parent, Qt::Dialog);
    return made.back();
  };
  CCommonListCtrl::SetAppearanceDialogFactory(factory);
  CCommonListCtrl::SetColumnProfileDialogFactory(factory);
  CFilterListCtrl::SetCustomColumnEditorFactory(factory);
  const struct {
    const char* name;
    int command;
    int mode;
  } cases[] = {
      {"reposition", kCmdRepositionColumns, 0},     {"sortMode", kCmdColumnProfileSortMode, 1},
      {"addCustom", kCmdAddCustomColumns, 0},       {"editCustom", kCmdEditCustomColumns, 1},
      {"deleteCustom", kCmdDeleteCustomColumns, 2},
  };
  CFilterListCtrl& grid = MakeGrid(true);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(grid.OnCommand(c.command));
    ASSERT_FALSE(made.empty());
    ASSERT_FALSE(made.back()->opened.empty());
    EXPECT_EQ(made.back()->opened.back(),
              std::make_pair(static_cast<CCommonListCtrl*>(&grid), c.mode));
    EXPECT_TRUE(made.back()->isVisible());
  }
  EXPECT_EQ(made.size(), 2u); // one profile dialog per grid, one shared editor
  // Ctrl+Shift+C copies and opens the appearance dialog, captioned.
  QGuiApplication::clipboard()->setText("old");
  QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "");
  ASSERT_EQ(made.size(), 3u);
  EXPECT_EQ(made.back()->windowTitle(), "Customize Appearance :testgrid");
  CFilterListCtrl::SetCustomColumnEditorFactory({});
  CCommonListCtrl::SetAppearanceDialogFactory({});
  CCommonListCtrl::SetColumnProfileDialogFactory({});
  CCommonListCtrl::DestroySharedDialogs();
}

TEST_F(GridTest, RegistryForgetsDestroyedGrids) {
  CFilterListCtrl& grid = MakeGrid();
  grid.AddToRegistry();
  grid.AddToRegistry();
  EXPECT_EQ(CCommonListCtrl::Registry(), std::vector<CCommonListCtrl*>{&grid});
  dialog_.reset();
  EXPECT_TRUE(CCommonListCtrl::Registry().empty());
}

} // namespace
} // namespace vh::test

namespace vh::test {
namespace {

TEST_F(GridTest, MenuKeyOpensTheRowMenu) {
  CFilterListCtrl& grid = MakeGrid();
  Show();
  QTest::keyClick(&grid, Qt::Key_Menu);
  ASSERT_NE(grid.OpenMenu(), nullptr);
  EXPECT_EQ(grid.OpenMenu()->actions().front()->text(), "Write to Excel\tShift+E");
  grid.OpenMenu()->close();
}

TEST_F(GridTest, CheckBoxClicksToggleAndSelect) {
  CFilterListCtrl& grid = MakeGrid();
  grid.SetCheckBoxes(true);
  AddRows(SampleRows());
  Show();
  const struct {
    const char* name;
    int row;
    bool onBox;
    std::vector<int> checks;
  } cases[] = {
      {"checkRow1", 1, true, {0, 1, 0}},
      {"checkRow2", 2, true, {0, 1, 1}},
      {"labelClickLeavesIt", 1, false, {0, 1, 1}},
      {"uncheckRow1", 1, true, {0, 0, 1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const QRect cell = grid.visualRect(grid.model()->index(c.row, 0));
    const QPoint at = c.onBox ? CFilterListCtrl::CheckBoxRect(cell).center() : cell.center();
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {}, at);
    std::vector<int> checks;
    for (int r = 0; r < 3; ++r)
      checks.push_back(grid.Engine().GetCheck(r));
    EXPECT_EQ(checks, c.checks);
    EXPECT_EQ(grid.selectionModel()->selectedRows().size(), 1);
    EXPECT_TRUE(grid.selectionModel()->isRowSelected(c.row, {}));
  }
}

} // namespace
} // namespace vh::test
