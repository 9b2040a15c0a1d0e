// The column editors on a real filtering grid, opened from its menus and
// commands once the program has installed them, and driven through their
// controls: values the grid shows, what follows a column through a change
// (filters, sort mark, tooltips, widths), and the profile read back by a
// new grid.
#include "grid/editor/column_editor_hooks.h"
#include "grid/editor/reposition_columns.h"
#include "grid/editor/user_defined_col_dlg.h"
#include "grid/widgets/grid_commands.h"
#include "plugin/tarn_host_api.h"
#include "tests/grid/widgets/grid_fixture.h"

#include <QComboBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>

namespace vh::test {
namespace {

constexpr int kConfirm = 1, kNameEdit = 1022, kExpressionEdit = 1010, kColumnList = 1009;
using Texts = std::vector<std::string>;

class GridColumnEditingTest : public GridTest {
protected:
  void SetUp() override { InstallColumnEditors(); }
  void TearDown() override {
    CFilterListCtrl::DestroySharedWindows();
    CFilterListCtrl::SetCustomColumnEditorFactory({});
    CCommonListCtrl::SetColumnProfileDialogFactory({});
  }
  CFilterListCtrl& Filled() {
    CFilterListCtrl& grid = MakeGrid();
    grid.SetAllowCustomColumns(true);
    AddRows(SampleRows());
    Show();
    messages_.clear(); // the first run's "File Open Failed"
    return grid;
  }
  // Right click on the rows, then the item called `text`.
  void Menu(const char* text) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, {5, 5},
                            grid_->viewport()->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(grid_->viewport(), &event);
    for (QAction* a : grid_->OpenMenu()->actions())
      if (a->text() == text)
        a->trigger();
    if (grid_->OpenMenu())
      grid_->OpenMenu()->close();
  }
  template <typename Dialog> Dialog* Visible() {
    for (QWidget* w : QApplication::topLevelWidgets())
      if (auto* d = qobject_cast<Dialog*>(w); d && d->isVisible())
        return d;
    return nullptr;
  }
  template <typename T = QWidget> T* Control(int id) {
    return qobject_cast<T*>(GetDlgItem(Visible<CUserDefinedColDlg>(), id));
  }
  void Click(int id) { QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton); }
  // Add Custom Columns, name and expression typed, Enter.
  void Add(const std::string& name, const std::string& expression) {
    Menu("Add Custom Columns");
    QTest::keyClicks(Control(kNameEdit), QString::fromStdString(name));
    QTest::keyClicks(Control(kExpressionEdit), QString::fromStdString(expression));
    QTest::keyClick(Control(kNameEdit), Qt::Key_Return);
    ASSERT_EQ(Visible<CUserDefinedColDlg>(), nullptr) << messages_.messages().back();
  }
  void Choose(int comboIndex) { // with the arrow key, as a user does
    for (int i = Control<QComboBox>(1011)->currentIndex(); i < comboIndex; ++i)
      QTest::keyClick(Control(1011), Qt::Key_Down);
  }
  // Headings in screen order, or the tooltips.
  Texts Header(int role = Qt::DisplayRole) {
    Texts out;
    for (int v = 0; v < grid_->HeaderItemCount(); ++v) {
      const int item = grid_->horizontalHeader()->logicalIndex(v);
      out.push_back(grid_->Model().headerData(item, Qt::Horizontal, role).toString().toStdString());
    }
    return out;
  }
};

// A and its dependants B and C: B goes, C (taken second) has moved up into
// B's place by then, so A goes and C stays, its formula now on itself.
// Filters and the sort mark stay with their columns; B's filter goes.
TEST_F(GridColumnEditingTest, DeletingAColumnTwoOthersDependOnKeepsFiltersSortAndTips) {
  CFilterListCtrl& grid = Filled();
  Add("A", R"("Qty" + 1)");
  Add("B", R"("A" * 2)");
  Add("C", R"("A" + "Close")");
  grid.ToggleFilterBar();
  grid.FilterHeader()->SetFilterText(5, ">100");
  grid.Engine().OnHeaderFilterChanged(5, ">100"); // B: 242, 32, 602, 16, 4002
  grid.SetFilter(1, "INFY");
  ClickSection(6);
  ClickSection(6); // C, descending
  ASSERT_EQ(Shown(0), (Texts{"C003", "C001"}));
  Menu("Delete Custom Columns");
  Choose(0);
  Click(kConfirm);
  EXPECT_EQ(Header(), (Texts{"Client", "Symbol", "Qty", "Close", "C"}));
  EXPECT_EQ(Header(Qt::ToolTipRole),
            (Texts{"Client", "Symbol", "Qty", "Close", R"("A" + "Close")"}));
  EXPECT_EQ(grid.Engine().FilterColumns(), (std::vector<int32_t>{1}));
  EXPECT_EQ(grid.FilterHeader()->FilterText(1), "INFY");
  EXPECT_EQ(grid.FilterHeader()->SectionImage(4), 1);
  EXPECT_EQ(Shown(0).size(), 2u);
}

// Keyboard only: the editor's tab order to its expression and confirm
// button; the profile dialog hides a column with "<", and Enter on its shown
// list presses "&View". Deleting that hidden column then leaves the header,
// the widths, the filter and the sort alone.
TEST_F(GridColumnEditingTest, KeyboardAloneAndDeletingAHiddenColumn) {
  CFilterListCtrl& grid = Filled();
  const auto tabTo = [](QWidget* dialog, int id) {
    for (int i = 0; i < 40 && dialog->focusWidget() != GetDlgItem(dialog, id); ++i)
      QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    return dialog->focusWidget() == GetDlgItem(dialog, id);
  };
  grid.OnCommand(kCmdAddCustomColumns);
  auto* dialog = Visible<CUserDefinedColDlg>();
  ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
  QTest::keyClicks(dialog->focusWidget(), "Triple");
  ASSERT_TRUE(tabTo(dialog, kExpressionEdit));
  QTest::keyClicks(dialog->focusWidget(), R"("Qty" * 3)");
  ASSERT_TRUE(tabTo(dialog, kConfirm));
  QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
  EXPECT_EQ(Shown(4), (Texts{"360.00", "45.00", "900.00", "21.00", "6000.00"}));
  Add("E", R"("Qty" + 1)");
  grid.horizontalHeader()->resizeSection(2, 133);
  grid.SetFilter(2, ">100"); // 120, 300, 2000
  ClickSection(3);           // Close, ascending

  grid.OnCommand(kCmdRepositionColumns);
  auto* profile = grid.findChild<CRepositionColumns*>();
  ASSERT_TRUE(QTest::qWaitForWindowActive(profile));
  ASSERT_EQ(profile->focusWidget(), GetDlgItem(profile, CRepositionColumns::kShownListId));
  QTest::keyClick(profile->focusWidget(), Qt::Key_End);
  QTest::keyClick(profile->focusWidget(), Qt::Key_Up); // "Triple"
  ASSERT_TRUE(tabTo(profile, CRepositionColumns::kHideId));
  QTest::keyClick(profile->focusWidget(), Qt::Key_Space);
  ASSERT_TRUE(tabTo(profile, CRepositionColumns::kShownListId));
  QTest::keyClick(profile->focusWidget(), Qt::Key_Return);
  ASSERT_EQ(Header(), (Texts{"Client", "Symbol", "Qty", "Close", "E"}));
  EXPECT_TRUE(profile->isVisible()) << "\"&View\" keeps the dialog open";

  Menu("Delete Custom Columns");
  Choose(0);
  Click(kConfirm);
  EXPECT_EQ(Header(), (Texts{"Client", "Symbol", "Qty", "Close", "E"}));
  EXPECT_EQ(grid.Engine().ColumnCount(), 5);
  EXPECT_EQ(grid.horizontalHeader()->sectionSize(2), 133);
  EXPECT_EQ(Shown(0), (Texts{"C005", "C001", "C003"})) << "still filtered, sorted on Close";
  EXPECT_EQ(grid.FilterHeader()->SectionImage(3), 0);
  EXPECT_EQ(Header(Qt::ToolTipRole).back(), R"("Qty" + 1)");
}

TEST_F(GridColumnEditingTest, ANewGridFindsColumnsPositionsWidthsAndDefaultSort) {
  CFilterListCtrl& grid = Filled();
  Add("Value", R"("Qty" * "Close")");
  grid.horizontalHeader()->moveSection(4, 1); // dragged after Client
  grid.horizontalHeader()->resizeSection(4, 140);
  grid.OnCommand(kCmdColumnProfileSortMode);
  auto* profile = grid.findChild<CRepositionColumns*>();
  ASSERT_TRUE(profile && profile->isVisible());
  QTest::keyClicks(profile->focusWidget(), "value,d");
  QTest::keyClick(profile->focusWidget(), Qt::Key_Return); // "Sort", the default button
  EXPECT_EQ(Shown(0), (Texts{"C005", "C003", "C001", "C002", "C004"}));
  EXPECT_EQ(Get("rmsholdview", "DEFAULTSORT", dir_.file("UserSetting.ini")), "Value,D");
  delete grid_;

  CFilterListCtrl& again = MakeGrid();
  again.SetProfileName("rmsholdview");
  again.SetUpColumns(HoldingColumns());
  AddRows(SampleRows());
  EXPECT_EQ(Header(), (Texts{"Client", "Value", "Symbol", "Qty", "Close"}));
  EXPECT_EQ(again.horizontalHeader()->sectionSize(again.horizontalHeader()->logicalIndex(1)), 140);
  EXPECT_EQ(Shown(1), (Texts{"181230.00", "49807.50", "453600.00", "0.00", "1202800.00"}));
  again.ApplyDefaultSort();
  EXPECT_EQ(Shown(0), (Texts{"C005", "C003", "C001", "C002", "C004"}));
  EXPECT_EQ(again.FilterHeader()->SectionImage(1), 1);
}

} // namespace
} // namespace vh::test
