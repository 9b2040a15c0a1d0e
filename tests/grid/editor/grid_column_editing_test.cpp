// The column editors on a real filtering grid, opened from its menus and
// commands once the program has installed them, and driven through their
// controls: the texts they show and say, values the grid shows, what
// follows a column through a change (filters, sort mark, tooltips, widths),
// and the profile read back by a new grid.
#include "grid/column_reposition.h"
#include "grid/editor/column_editor_hooks.h"
#include "grid/editor/reposition_columns.h"
#include "grid/editor/user_defined_col_dlg.h"
#include "grid/user_column_editor.h"
#include "grid/widgets/grid_commands.h"
#include "plugin/tarn_host_api.h"
#include "tests/grid/widgets/grid_fixture.h"
#include "widgets/drag_list_ctrl.h"

#include <QComboBox>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>

namespace vh::test {
namespace {

constexpr int kPlus = 1012, kTimes = 1014, kDivide = 1015, kOpen = 1016, kCloseParen = 1017,
              kEnd = 1018, kClear = 1019, kConfirm = 1, kNameEdit = 1022, kExpressionEdit = 1010,
              kColumnList = 1009, kCustomCombo = 1011;
enum ListRow { kQty, kClose }; // the numeric columns of HoldingColumns()
const char* const kModeMenus[] = {"Add Custom Columns", "Edit Custom Columns",
                                  "Delete Custom Columns"};
using Profile = CRepositionColumns;

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
  void Menu(const char* text) { MenuAt(grid_->viewport(), text); }
  template <typename Dialog> Dialog* Visible() {
    for (QWidget* w : QApplication::topLevelWidgets())
      if (auto* d = qobject_cast<Dialog*>(w); d && d->isVisible())
        return d;
    return nullptr;
  }
  // A control of the open custom-column editor, else of the profile dialog.
  template <typename T = QWidget> T* Control(int id) {
    QWidget* dialog = Visible<CUserDefinedColDlg>();
    return qobject_cast<T*>(GetDlgItem(dialog ? dialog : grid_->findChild<Profile*>(), id));
  }
  void Click(int id, Qt::KeyboardModifiers m = {}) {
    QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton, m);
  }
  void Type(int id, const std::string& text) {
    QTest::keyClicks(Control(id), QString::fromStdString(text));
  }
  void Pick(int row) {
    auto* list = Control<QListWidget>(kColumnList);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
  }
  // Clicks the entries of a profile list, the later ones with Ctrl held.
  void Select(int listId, std::initializer_list<const char*> names) {
    auto* list = Control<CNTDragListCtrl>(listId);
    Qt::KeyboardModifiers modifiers;
    for (const char* name : names) {
      const QRect r = list->visualItemRect(list->findItems(name, Qt::MatchExactly).at(0));
      QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, r.center());
      modifiers = Qt::ControlModifier;
    }
  }
  // Add Custom Columns, name and expression typed, Enter.
  void Add(const std::string& name, const std::string& expression) {
    Menu("Add Custom Columns");
    Type(kNameEdit, name);
    Type(kExpressionEdit, expression);
    QTest::keyClick(Control(kNameEdit), Qt::Key_Return);
    ASSERT_EQ(Visible<CUserDefinedColDlg>(), nullptr) << messages_.messages().back();
  }
  void Choose(int comboIndex) { // with the arrow key, as a user does
    for (int i = Control<QComboBox>(kCustomCombo)->currentIndex(); i < comboIndex; ++i)
      QTest::keyClick(Control(kCustomCombo), Qt::Key_Down);
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
  int Width(int visual) {
    return grid_->horizontalHeader()->sectionSize(grid_->horizontalHeader()->logicalIndex(visual));
  }
  // Whether a column profile was written to any settings file.
  bool ProfileSaved() {
    for (const auto& e : std::filesystem::directory_iterator(dir_.path()))
      if (ReadFile(e.path().string()).find("COLUMNPROFILE") != std::string::npos)
        return true;
    return false;
  }
};

TEST_F(GridColumnEditingTest, ButtonsBuildAColumnTheGridShowsAndEditTakesTheLastPress) {
  CFilterListCtrl& grid = Filled();
  Menu("Add Custom Columns");
  Type(kNameEdit, "Weighted");
  Pick(kClose);
  Click(kTimes);
  Click(kClear); // starts over
  Click(kOpen, Qt::ControlModifier);
  Pick(kQty);
  Click(kPlus);
  Pick(kClose);
  Click(kCloseParen);
  Type(kExpressionEdit, "* 2");
  Click(kDivide, Qt::ControlModifier);
  Pick(kQty);
  Click(kEnd, Qt::ControlModifier);
  Click(kConfirm);
  ASSERT_EQ(Header().size(), 5u) << messages_.messages().at(0);
  EXPECT_EQ(grid.Engine().ColumnInfo(4)->strExpression, R"( ("2" + "3" ) * 2/"2")");
  EXPECT_EQ(Header(Qt::ToolTipRole).back(), R"(("Qty" + "Close" ) * 2/"Qty")");
  EXPECT_EQ(grid.horizontalHeader()->sectionSize(4), 100);
  EXPECT_EQ(Shown(4), (Texts{"27.17", "444.73", "12.08", "2.00", "2.60"}));

  Menu("Edit Custom Columns");
  Choose(0);
  Type(kExpressionEdit, " + ");
  Pick(kQty);
  Click(kEnd);
  Type(kExpressionEdit, " - 100"); // after the last press: not saved
  Click(kConfirm);
  // The divisor is now "Qty" + "Qty", never zero; the whole adds Qty.
  EXPECT_EQ(Shown(4), (Texts{"147.17", "459.73", "312.08", "9.00", "2002.60"}));
  EXPECT_EQ(Header(Qt::ToolTipRole).back(), R"(("Qty" + "Close" ) * 2/"Qty")")
      << "an edit leaves the tooltip";
}

TEST_F(GridColumnEditingTest, ChecksSpeakInOrder) {
  CFilterListCtrl& grid = Filled();
  const std::string kInvalid = "Invalid Expression, Please check the expression again";
  const struct {
    const char* why;
    int mode;
    std::string name, typed;
    int combo, button; // chosen before, pressed before confirming (-1, 0: none)
    std::string message;
  } cases[] = {
      {"blank name, before expression", 0, "   ", "", -1, 0, "Please Enter the column Name"},
      {"separator before expression", 0, "A,B", "", -1, 0,
       "\"#,\" are not allowed as a custom column name , please choose a different name"},
      {"64 characters", 0, std::string(64, 'n'), "", -1, 0,
       "The column name is too long, please use at most 63 characters"},
      {"empty expression", 0, "X", "", -1, 0,
       "Column Expression is empty, please enter an expression to add a column"},
      {"text column", 0, "X", R"("Symbol" + 1)", -1, 0, kInvalid},
      {"expression before name", 0, "Qty", R"("Nope")", -1, 0, kInvalid},
      {"taken name", 0, " Close ", R"("Qty")", -1, 0,
       "This column name already present,Please choose different column Name"},
      {"other case, other name", 0, "value", R"("qTY")", -1, 0, ""},
      {"63 characters", 0, std::string(63, 'n'), R"(""Qty"")", -1, 0, ""},
      {"nothing to edit", 1, "", "", -1, 0, "No user defined column selected to edit"},
      {"typing alone is not seen", 1, "", " + 1", 0, 0, kInvalid},
      {"nothing to delete", 2, "", "", -1, 0, "No user defined column selected to delete"},
      {"operator without column", 0, "X", "", -1, kTimes, "Please select a Column Name"},
      {"End without column", 0, "X", "", -1, kEnd, "No column is selected"},
  };
  // Per mode: caption, confirm label, focus on opening and after one Tab.
  const char* const kLooks[] = {"rmsholdview: Add Custom Columns/Add/1022/1009",
                                "rmsholdview: Edit Custom Columns/Save/1011/1009",
                                "rmsholdview: Delete Custom Columns/Delete/1011/1009"};
  const auto look = [this](QWidget* dialog) {
    const auto focused = [dialog] {
      return dialog->focusWidget()->property(kControlIdProperty).toString();
    };
    const QString opened = focused();
    QTest::keyClick(dialog->focusWidget(), Qt::Key_Tab);
    return QString("%1/%2/%3/%4")
        .arg(dialog->windowTitle(), Control<QPushButton>(kConfirm)->text(), opened, focused());
  };
  Add("Value", R"("Qty" * "Close")");
  for (const auto& c : cases) {
    Menu(kModeMenus[c.mode]);
    ASSERT_NE(Visible<CUserDefinedColDlg>(), nullptr) << c.why;
    EXPECT_EQ(look(Visible<CUserDefinedColDlg>()), kLooks[c.mode]) << c.why;
    Type(kNameEdit, c.name);
    Choose(c.combo);
    Type(kExpressionEdit, c.typed);
    for (const int id : {c.button, c.button == kTimes || c.button == kEnd ? 0 : kConfirm})
      if (id)
        Click(id);
    EXPECT_EQ(messages_.messages(), c.message.empty() ? Texts{} : Texts{c.message}) << c.why;
    auto* dialog = Visible<CUserDefinedColDlg>();
    EXPECT_EQ(dialog != nullptr, !c.message.empty()) << c.why;
    messages_.clear();
    if (dialog)
      dialog->reject();
  }
  EXPECT_EQ(grid.Engine().ColumnCount(), 7) << "only the two accepted names were added";
  // A column table shorter than its data columns can only come from a
  // broken grid; the editor refuses it rather than index past its end.
  Menu(kModeMenus[0]);
  CustomColumnGrid& columns = *grid.CustomColumns(); // taken afresh from the grid
  std::vector<sTarnColInfo>& table = columns.ColumnTable();
  const std::vector<sTarnColInfo> kept = table;
  table.resize(2);
  EXPECT_FALSE(Visible<CUserDefinedColDlg>()->Open(columns, kUserColumnAdd));
  table = kept;
  EXPECT_EQ(messages_.messages(), Texts{"Error while adding user defined cols"});
}

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

// Deleting a column once the profile dialog has hidden it leaves the header,
// the widths, the filter and the sort alone.
TEST_F(GridColumnEditingTest, DeletingAHiddenColumnLeavesTheGridAlone) {
  CFilterListCtrl& grid = Filled();
  Add("Triple", R"("Qty" * 3)");
  EXPECT_EQ(Shown(4), (Texts{"360.00", "45.00", "900.00", "21.00", "6000.00"}));
  Add("E", R"("Qty" + 1)");
  grid.horizontalHeader()->resizeSection(2, 133);
  grid.SetFilter(2, ">100"); // 120, 300, 2000
  ClickSection(3);           // Close, ascending

  grid.OnCommand(kCmdRepositionColumns);
  Select(Profile::kShownListId, {"Triple"});
  Click(Profile::kHideId);
  Click(Profile::kViewId);
  ASSERT_EQ(Header(), (Texts{"Client", "Symbol", "Qty", "Close", "E"}));

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

TEST_F(GridColumnEditingTest, ProfileDialogHidesShowsAndViewsWithoutSaving) {
  Filled();
  grid_->horizontalHeader()->resizeSection(3, 120); // Close, widened by the user
  grid_->OnCommand(kCmdRepositionColumns);
  ASSERT_TRUE(grid_->findChild<Profile*>()->isVisible());
  EXPECT_EQ(grid_->findChild<Profile*>()->windowTitle(), " Column Profile");
  Select(Profile::kShownListId, {"Client", "Qty"});
  Click(Profile::kHideId);
  EXPECT_EQ(messages_.messages(), Texts{"Client cannot be removed"});
  QTest::keyClick(Control(Profile::kShownListId), Qt::Key_Return); // "&View", the default
  EXPECT_EQ(Header(), (Texts{"Client", "Symbol", "Close"}));
  Select(Profile::kHiddenListId, {"Qty"});
  Click(Profile::kShowId);
  QTest::keyClick(Control(Profile::kShownListId), Qt::Key_Return);
  EXPECT_TRUE(grid_->findChild<Profile*>()->isVisible());
  EXPECT_EQ(Header(), (Texts{"Client", "Symbol", "Close", "Qty"}));
  EXPECT_EQ(Width(2), 120);
  EXPECT_EQ(Width(3), kNewlyShownWidth);
  EXPECT_FALSE(ProfileSaved()) << "View does not save";
  Click(Profile::kSaveId);
  EXPECT_FALSE(grid_->findChild<Profile*>()->isVisible());
  EXPECT_TRUE(ProfileSaved());
  EXPECT_EQ(Header(), (Texts{"Client", "Symbol", "Close", "Qty"}));
}

TEST_F(GridColumnEditingTest, ANewGridFindsColumnsPositionsWidthsAndDefaultSort) {
  CFilterListCtrl& grid = Filled();
  Add("Value", R"("Qty" * "Close")");
  grid.horizontalHeader()->moveSection(4, 1); // dragged after Client
  grid.horizontalHeader()->resizeSection(4, 140);
  grid.OnCommand(kCmdColumnProfileSortMode);
  ASSERT_TRUE(grid.findChild<Profile*>()->isVisible());
  EXPECT_FALSE(Control(Profile::kSaveId)->isEnabled());
  for (const char* typed : {"Volume", "value,d"}) {
    Control<QLineEdit>(Profile::kSortEditId)->clear();
    Type(Profile::kSortEditId, typed);
    QTest::keyClick(Control(Profile::kSortEditId), Qt::Key_Return); // "Sort", the default
  }
  EXPECT_EQ(messages_.messages(), Texts{"Volume is not a column of this grid"});
  EXPECT_EQ(Shown(0), (Texts{"C005", "C003", "C001", "C002", "C004"}));
  EXPECT_EQ(Get("rmsholdview", "DEFAULTSORT", dir_.file("UserSetting.ini")), "Value,D");
  grid.OnCommand(kCmdRepositionColumns);
  Click(Profile::kDefaultId);
  EXPECT_EQ(Control<QLineEdit>(Profile::kSortEditId)->text(), "Value,D");
  Click(Profile::kSaveId); // the dragged section stays where the dialog lists it
  EXPECT_EQ(Header(), (Texts{"Client", "Value", "Symbol", "Qty", "Close"}));
  EXPECT_EQ(Width(1), 140);
  delete grid_;

  CFilterListCtrl& again = MakeGrid();
  again.SetProfileName("rmsholdview");
  again.SetUpColumns(HoldingColumns());
  AddRows(SampleRows());
  EXPECT_EQ(Header(), (Texts{"Client", "Value", "Symbol", "Qty", "Close"}));
  again.ApplyDefaultSort();
  EXPECT_EQ(Shown(0), (Texts{"C005", "C003", "C001", "C002", "C004"}));
  EXPECT_EQ(again.FilterHeader()->SectionImage(1), 1);
  ScopedSettingsPaths missing{{dir_.file("no-such-dir"), ""}};
  messages_.clear();
  again.OnCommand(kCmdColumnProfileSortMode);
  Click(Profile::kDefaultId);
  Click(Profile::kSortId);
  EXPECT_EQ(messages_.messages(), Texts{"Error while saving column profile"});
}

} // namespace
} // namespace vh::test
