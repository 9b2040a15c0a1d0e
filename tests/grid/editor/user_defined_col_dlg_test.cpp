// The custom-column dialog driven through its controls, over a grid that
// computes its columns with the real row engine.
#include "grid/editor/user_defined_col_dlg.h"

#include "common/message.h"
#include "plugin/tarn_host_api.h"
#include "tests/grid/editor_test_grid.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr int kPlus = 1012, kTimes = 1014, kDivide = 1015, kOpen = 1016, kClose = 1017, kEnd = 1018,
              kClear = 1019, kConfirm = 1, kName = 1022, kExpression = 1010;
enum ListRow { kQty, kPrice, kHaircut, kCount };
using Texts = std::vector<std::string>;

class UserDefinedColDlgTest : public ::testing::Test {
protected:
  template <typename T> T* Control(int id) { return qobject_cast<T*>(GetDlgItem(&dlg, id)); }
  void Open(int mode) { ASSERT_TRUE(dlg.Open(grid, mode)); }
  void Click(int id, Qt::KeyboardModifiers m = {}) {
    QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton, m);
  }
  void Pick(int row) {
    auto* list = Control<QListWidget>(1009);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
  }
  void Choose(int index) { // with the arrow key, as a user does
    for (int i = Control<QComboBox>(1011)->currentIndex(); i < index; ++i)
      QTest::keyClick(Control<QComboBox>(1011), Qt::Key_Down);
  }
  void Type(int id, const std::string& text) {
    QTest::keyClicks(Control<QWidget>(id), QString::fromStdString(text));
  }
  // Add mode, both texts typed, Enter.
  void AddColumn(const std::string& name, const std::string& expression) {
    Open(vh::kUserColumnAdd);
    Type(kName, name);
    Type(kExpression, expression);
    QTest::keyClick(Control<QWidget>(kName), Qt::Key_Return);
    ASSERT_FALSE(dlg.isVisible()) << recorder.messages().back();
  }

  vh::ScopedMessageRecorder recorder;
  vh::testing::EditorTestGrid grid{{"Client id", "Qty", "Price", "Symbol", "Haircut", "Count"},
                                   {3, 4, 2, 3, 5, 1},
                                   {"C1", "10", "2.5", "ABC", "1", "3"}};
  CUserDefinedColDlg dlg;
};

TEST_F(UserDefinedColDlgTest, ModesCaptionsListsAndScreenshots) {
  AddColumn("Value", R"("Qty" * "Price")");
  const struct {
    int mode;
    const char* look; // caption / confirm label / focus / focus after Tab
    const char* png;
  } cases[] = {
      {0, "rmsholdview: Add Custom Columns/Add/1022/1009", "/udc_add.png"},
      {1, "rmsholdview: Edit Custom Columns/Save/1011/1009", "/udc_edit.png"},
      {2, "rmsholdview: Delete Custom Columns/Delete/1011/1009", "/udc_delete.png"},
  };
  for (const auto& c : cases) {
    grid.profile = "other";
    Open(c.mode);
    const auto focused = [this] {
      return dlg.focusWidget()->property(kControlIdProperty).toString();
    };
    const QString opened = focused();
    QTest::keyClick(dlg.focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(
        QString("%1/%2/%3/%4")
            .arg(dlg.windowTitle(), Control<QPushButton>(kConfirm)->text(), opened, focused()),
        c.look);
    if (c.mode != vh::kUserColumnAdd)
      Choose(0);
    EXPECT_TRUE(dlg.grab().save(VH_SCREENSHOT_DIR + QString(c.png)));
    dlg.reject();
  }
}

TEST_F(UserDefinedColDlgTest, ButtonsBuildAColumnAndEditTakesTheLastPress) {
  Open(vh::kUserColumnAdd);
  Type(kName, "Weighted");
  Pick(kPrice);
  Click(kTimes);
  Click(kClear); // starts over
  Click(kOpen, Qt::ControlModifier);
  Pick(kQty);
  Click(kPlus);
  Pick(kCount);
  Click(kClose);
  Type(kExpression, "* 2");
  Click(kDivide, Qt::ControlModifier);
  Pick(kPrice);
  Click(kEnd, Qt::ControlModifier);
  Click(kConfirm);
  ASSERT_EQ(grid.table.size(), 7u) << recorder.messages().at(0);
  EXPECT_EQ(grid.table[6].strExpression, R"( ("1" + "5" ) * 2/"2")");
  EXPECT_EQ(grid.Cell(6), "10.40");
  EXPECT_EQ(grid.header[6].tip, R"(("Qty" + "Count" ) * 2/"Price")");
  Open(vh::kUserColumnEdit);
  Choose(0);
  Type(kExpression, " + ");
  Pick(kHaircut);
  Click(kEnd);
  Type(kExpression, " - 100"); // after the last press: not seen by Save
  Click(kConfirm);
  EXPECT_EQ(grid.Cell(6), "11.40");
  EXPECT_EQ(grid.header[6].tip, R"(("Qty" + "Count" ) * 2/"Price")") << "header left alone";
  EXPECT_EQ(grid.saves.size(), 2u);
}

TEST_F(UserDefinedColDlgTest, ChecksSpeakInOrder) {
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
      {"taken name", 0, " Price ", R"("Qty")", -1, 0,
       "This column name already present,Please choose different column Name"},
      {"other case, other name", 0, "value", R"("qTY")", -1, 0, ""},
      {"63 characters", 0, std::string(63, 'n'), R"(""Qty"")", -1, 0, ""},
      {"nothing to edit", 1, "", "", -1, 0, "No user defined column selected to edit"},
      {"typing alone is not seen", 1, "", " + 1", 0, 0, kInvalid},
      {"nothing to delete", 2, "", "", -1, 0, "No user defined column selected to delete"},
      {"operator without column", 0, "X", "", -1, kTimes, "Please select a Column Name"},
      {"End without column", 0, "X", "", -1, kEnd, "No column is selected"},
  };
  AddColumn("Value", R"("Qty" * "Price")");
  for (const auto& c : cases) {
    Open(c.mode);
    Type(kName, c.name);
    Choose(c.combo);
    Type(kExpression, c.typed);
    for (const int id : {c.button, c.button == kTimes || c.button == kEnd ? 0 : kConfirm})
      if (id)
        Click(id);
    EXPECT_EQ(recorder.messages(), c.message.empty() ? Texts{} : Texts{c.message}) << c.why;
    EXPECT_EQ(dlg.isVisible(), !c.message.empty()) << c.why;
    recorder.clear();
    dlg.reject();
  }
  EXPECT_EQ(grid.table.size(), 9u) << "only the two accepted names were added";
  grid.dataCount = 10;
  EXPECT_FALSE(dlg.Open(grid, vh::kUserColumnAdd));
  EXPECT_EQ(recorder.messages(), Texts{"Error while adding user defined cols"});
}

TEST_F(UserDefinedColDlgTest, DeleteTakesDependantsAsRecordedAndHiddenColumnsQuietly) {
  for (const char* definition :
       {"A\"Qty\" + 1", "B\"A\" * 2", "C\"Count\" - 1", "D\"A\" + \"B\"", "E\"Price\" * 4"})
    AddColumn(std::string(definition, 1), definition + 1);
  Open(vh::kUserColumnDelete);
  Choose(0);
  Click(kConfirm);
  // B (7) goes first; E then stands at 9 where D stood, and goes instead.
  EXPECT_EQ(grid.deleted, (std::vector<int>{7, 9, 6}));
  EXPECT_EQ(grid.Headings(),
            (Texts{"Client id", "Qty", "Price", "Symbol", "Haircut", "Count", "C", "D"}));
  grid.positions = {0, 1, 2, 3, 4, 5, -1, 6}; // C hidden
  grid.ColumnsChanged();
  grid.header[0].tip = "stale";
  Open(vh::kUserColumnDelete);
  Choose(0);
  Click(kConfirm);
  EXPECT_EQ(grid.deleted.size(), 3u);
  EXPECT_EQ(grid.positions, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(grid.header[0].tip, "Client id");
}

} // namespace
