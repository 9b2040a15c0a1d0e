// The grids' menus, keys, clipboard text, fitting and dialog hooks, driven
// as a user clicks and types.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/appearance_hook.h"
#include "grid/widgets/grid_commands.h"
#include "widgets/customized_appearance.h"

#include <QClipboard>
#include <QComboBox>
#include <QPushButton>
#include <QScrollBar>

namespace vh::test {
namespace {

using Texts = std::vector<std::string>;

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
    const char* enabled; // one '+' (enabled) or '-' (greyed) per item
  } cases[] = {
      {"rowsAll",
       kCustomizable | kNoExport | kNoImport | kReposition | kCustom,
       {"Write to Excel\tShift+E", "Read from Excel", "Draw Grid Lines\tShift+G",
        "Customize \t Ctrl+Shift+C", "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match",
        "Add Custom Columns", "Edit Custom Columns", "Delete Custom Columns", "Reposition Columns",
        "Fit to Data", "Fit to Header Size", "Fit to Window"},
       "--++++++++++++"},
      {"rowsPlain",
       0,
       {"Write to Excel\tShift+E", "Read from Excel", "Draw Grid Lines\tShift+G",
        "Copy to Clip Board\tCtrl+C", "Reset Filters", "Exact Match", "Fit To Data",
        "Fit to Header Size", "Fit to Window"},
       "+++++++++"},
      {"headerRepositioning",
       kHeader | kReposition,
       {"Reposition Columns", "Fit to Data", "Fit to Header Size", "Fit to Window"},
       "++++"},
      {"headerFixed", kHeader, {"Fit To Data", "Fit to Header Size", "Fit to Window"}, "+++"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CFilterListCtrl& grid = MakeGrid(c.flags & kCustomizable);
    grid.SetExportAllowed(!(c.flags & kNoExport));
    grid.SetImportAllowed(!(c.flags & kNoImport));
    grid.SetRepositionAllowed(c.flags & kReposition);
    grid.SetAllowCustomColumns(c.flags & kCustom);
    std::vector<bool> enabled;
    QWidget* target = c.flags & kHeader ? grid.horizontalHeader()->viewport() : grid.viewport();
    EXPECT_EQ(MenuAt(target, &enabled), c.texts);
    std::string greying;
    for (bool e : enabled)
      greying += e ? '+' : '-';
    EXPECT_EQ(greying, c.enabled);
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
  // The menu key opens the row menu.
  QTest::keyClick(grid_, Qt::Key_Menu);
  ASSERT_NE(grid_->OpenMenu(), nullptr);
  EXPECT_EQ(grid_->OpenMenu()->actions().front()->text(), "Write to Excel\tShift+E");
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

// A stand-in for the dialogs another part of the system builds.
struct StandIn : GridDialog {
  std::unique_ptr<QDialog> window = std::make_unique<QDialog>();
  std::vector<std::pair<CCommonListCtrl*, int>> opened;
  QWidget* Window() override { return window.get(); }
  void OpenFor(CCommonListCtrl* grid, int mode) override { opened.emplace_back(grid, mode); }
};

TEST_F(GridTest, DialogHooksOpenWithTheirModes) {
  std::vector<StandIn*> made;
  auto factory = [&made](QWidget*) {
    auto hook = std::make_unique<StandIn>();
    made.push_back(hook.get());
    return std::unique_ptr<GridDialog>(std::move(hook));
  };
  CCommonListCtrl::SetAppearanceDialogFactory(factory);
  CCommonListCtrl::SetColumnProfileDialogFactory(factory);
  CFilterListCtrl::SetCustomColumnEditorFactory(factory);
  // Command, mode: profile dialog normal and sort mode, editor add, edit, delete.
  const std::pair<int, int> cases[] = {{kCmdRepositionColumns, 0},
                                       {kCmdColumnProfileSortMode, 1},
                                       {kCmdAddCustomColumns, 0},
                                       {kCmdEditCustomColumns, 1},
                                       {kCmdDeleteCustomColumns, 2}};
  CFilterListCtrl& grid = MakeGrid(true);
  for (const auto& [command, mode] : cases) {
    SCOPED_TRACE(command);
    EXPECT_TRUE(grid.OnCommand(command));
    ASSERT_FALSE(made.empty() || made.back()->opened.empty());
    EXPECT_EQ(made.back()->opened.back(),
              std::make_pair(static_cast<CCommonListCtrl*>(&grid), mode));
    EXPECT_TRUE(made.back()->window->isVisible());
  }
  EXPECT_EQ(made.size(), 2u); // one profile dialog per grid, one shared editor
  CFilterListCtrl::SetCustomColumnEditorFactory({});
  CCommonListCtrl::SetAppearanceDialogFactory({});
  CCommonListCtrl::SetColumnProfileDialogFactory({});
  CCommonListCtrl::DestroySharedDialogs();
}

TEST_F(GridTest, SavedAppearanceIsReadOnlyByCustomizableGridsInDialogs) {
  WriteFile(dir_.file("UserSetting.ini"),
            "[CUSTOMIZE_LISTS]\ntestgrid-9016=FF0000,FFFFFF,Arial,12\n");
  for (const auto& [customizable, inDialog] :
       {std::pair{true, true}, std::pair{false, true}, std::pair{true, false}}) {
    CFilterListCtrl& grid = MakeGrid(customizable, inDialog);
    const bool own = customizable && inDialog;
    EXPECT_EQ(grid.HasOwnSettings(), own);
    EXPECT_EQ(grid.DefaultBackground(), own ? QColor(0, 0, 255) : QColor(Qt::black));
  }
}

TEST_F(GridTest, CustomizeOpensTheAppearanceDialogWhoseApplyRestylesTheGrid) {
  InstallAppearanceDialog();
  CFilterListCtrl& grid = MakeGrid(true);
  Show();
  QGuiApplication::clipboard()->setText("old");
  QTest::keyClick(&grid, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), ""); // it copied (nothing) too
  CCustomizedAppearance* dialog = nullptr;
  for (QWidget* w : QApplication::topLevelWidgets())
    if (auto* d = qobject_cast<CCustomizedAppearance*>(w); d && d->isVisible())
      dialog = d;
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->windowTitle(), "Customize Appearance :testgrid");
  dialog->findChild<QComboBox*>("keywordColumn")->setCurrentIndex(2); // "Symbol"
  QTest::mouseClick(dialog->findChild<QPushButton*>("apply"), Qt::LeftButton);
  EXPECT_EQ(grid.Appearance().keywordColumn, 1);
  EXPECT_TRUE(grid.HasOwnSettings());
  EXPECT_EQ(Get("CUSTOMIZE_LISTS", "testgrid-9016", dir_.file("UserSetting.ini")),
            "0,FF00,MS Shell Dlg 2,8,1,");
  CCommonListCtrl::DestroySharedDialogs();
  CCommonListCtrl::SetAppearanceDialogFactory({});
}

} // namespace
} // namespace vh::test
