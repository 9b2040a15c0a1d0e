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

using vh::testing::EditorTestGrid;

constexpr int kPlus = 1012, kTimes = 1014, kDivide = 1015, kOpen = 1016, kClose = 1017, kEnd = 1018,
              kClear = 1019;

class UserDefinedColDlgTest : public ::testing::Test {
protected:
  template <typename T> T* Control(int id) {
    T* control = qobject_cast<T*>(GetDlgItem(&dlg, id));
    EXPECT_NE(control, nullptr) << "control " << id;
    return control;
  }
  QListWidget* List() { return Control<QListWidget>(CUserDefinedColDlg::kColumnListId); }
  QPlainTextEdit* Expression() {
    return Control<QPlainTextEdit>(CUserDefinedColDlg::kExpressionEditId);
  }
  QComboBox* Combo() { return Control<QComboBox>(CUserDefinedColDlg::kCustomComboId); }
  std::string ExpressionText() { return Expression()->toPlainText().toStdString(); }

  void Open(int mode) {
    ASSERT_TRUE(dlg.Open(grid, mode));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dlg));
  }
  void Click(int id, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton, modifiers);
  }
  // Clicks the column list entry named `name`.
  void Pick(const QString& name) {
    const auto found = List()->findItems(name, Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1) << name.toStdString();
    QTest::mouseClick(List()->viewport(), Qt::LeftButton, {},
                      List()->visualItemRect(found[0]).center());
  }
  // Chooses custom column `index` in the combo with the arrow key.
  void Choose(int index) {
    Combo()->setFocus();
    for (int i = Combo()->currentIndex(); i < index; ++i)
      QTest::keyClick(Combo(), Qt::Key_Down);
  }
  void TypeExpression(const QString& text) {
    Expression()->setFocus();
    Expression()->moveCursor(QTextCursor::End);
    QTest::keyClicks(Expression(), text);
  }
  // An Add through the controls: the name and the expression typed.
  void AddColumn(const QString& name, const QString& expression) {
    Open(vh::kUserColumnAdd);
    QTest::keyClicks(Control<QLineEdit>(CUserDefinedColDlg::kNameEditId), name);
    TypeExpression(expression);
    Click(CUserDefinedColDlg::kConfirmId);
    ASSERT_FALSE(dlg.isVisible()) << recorder.messages().back();
  }
  void Screenshot(const char* file) {
    ASSERT_TRUE(dlg.grab().save(QString(VH_SCREENSHOT_DIR "/") + file));
  }

  vh::ScopedMessageRecorder recorder;
  EditorTestGrid grid{{"Client id", "Qty", "Price", "Symbol", "Haircut", "Count"},
                      {3, 4, 2, 3, 5, 1},
                      {{"C1", "10", "2.5", "ABC", "1", "3"}, {"C2", "4", "-1", "XYZ", "0", "7"}}};
  CUserDefinedColDlg dlg;
};

TEST_F(UserDefinedColDlgTest, EachModeHasItsCaptionLabelAndNameControl) {
  AddColumn("Value", R"("Qty" * "Price")");
  const struct {
    const char* name;
    int mode;
    const char* caption;
    const char* confirm;
    bool nameEdit;
    const char* screenshot;
  } cases[] = {
      {"add", vh::kUserColumnAdd, "rmsholdview: Add Custom Columns", "Add", true, "udc_add.png"},
      {"edit", vh::kUserColumnEdit, "rmsholdview: Edit Custom Columns", "Save", false,
       "udc_edit.png"},
      {"delete", vh::kUserColumnDelete, "rmsholdview: Delete Custom Columns", "Delete", false,
       "udc_delete.png"},
  };
  for (const auto& c : cases) {
    grid.profile = "other";
    Open(c.mode);
    EXPECT_EQ(dlg.windowTitle().toStdString(), c.caption) << c.name;
    EXPECT_EQ(Control<QPushButton>(1)->text().toStdString(), c.confirm) << c.name;
    EXPECT_EQ(Control<QLineEdit>(1022)->isVisible(), c.nameEdit) << c.name;
    EXPECT_EQ(Combo()->isVisible(), !c.nameEdit) << c.name;
    EXPECT_EQ(Combo()->currentIndex(), -1) << c.name;
    if (c.mode == vh::kUserColumnEdit) {
      Choose(0);
      Pick("Count");
    }
    Screenshot(c.screenshot);
    dlg.reject();
  }
}

TEST_F(UserDefinedColDlgTest, ListsHoldNumericAndCustomColumnsInTableOrder) {
  AddColumn("Value", R"("Qty" * "Price")");
  AddColumn("Half", R"("Value" / 2)");
  Open(vh::kUserColumnEdit);
  QStringList listed;
  for (int i = 0; i < List()->count(); ++i)
    listed << List()->item(i)->text() + "=" + List()->item(i)->data(Qt::UserRole).toString();
  EXPECT_EQ(listed, QStringList({"Qty=1", "Price=2", "Haircut=4", "Count=5", "Value=6", "Half=7"}));
  ASSERT_EQ(Combo()->count(), 2);
  EXPECT_EQ(Combo()->itemText(1), "Half");
  EXPECT_EQ(Combo()->itemData(1).toInt(), 7);
  Choose(1);
  EXPECT_EQ(ExpressionText(), R"("Value" / 2)");
  EXPECT_EQ(grid.Cell(0, 7), "12.50");
}

TEST_F(UserDefinedColDlgTest, ButtonsWithAndWithoutCtrlBuildAColumn) {
  Open(vh::kUserColumnAdd);
  QTest::keyClicks(Control<QLineEdit>(1022), "Weighted");
  Click(kOpen, Qt::ControlModifier);
  Pick("Qty");
  Click(kPlus);
  Pick("Count");
  Click(kClose);
  TypeExpression("* 2");
  Click(kDivide, Qt::ControlModifier);
  Pick("Price");
  Click(kEnd, Qt::ControlModifier);
  EXPECT_EQ(ExpressionText(), R"(("Qty" + "Count" ) * 2/"Price")");
  Click(CUserDefinedColDlg::kConfirmId);
  ASSERT_FALSE(dlg.isVisible());
  const int column = grid.ColumnNamed("Weighted");
  EXPECT_EQ(grid.table[size_t(column)].strExpression, R"( ("1" + "5" ) * 2/"2")");
  EXPECT_EQ(grid.Cell(0, column), "10.40");
  EXPECT_EQ(grid.header.back().heading, "Weighted");
  EXPECT_EQ(grid.header.back().tip, R"(("Qty" + "Count" ) * 2/"Price")");
  EXPECT_EQ(grid.saves.size(), 1u);
}

TEST_F(UserDefinedColDlgTest, ChecksSpeakInOrder) {
  const std::string longName(64, 'n');
  const struct {
    const char* name;
    int mode;
    std::string nameText;
    const char* typed;
    int combo;  // custom column chosen, -1 none
    int button; // pressed before confirming, 0 none
    const char* message;
  } cases[] = {
      {"blank name", 0, "   ", R"("Qty")", -1, 0, "Please Enter the column Name"},
      {"name before expression", 0, "", "", -1, 0, "Please Enter the column Name"},
      {"hash", 0, "A#B", "", -1, 0,
       "\"#,\" are not allowed as a custom column name , please choose a different name"},
      {"comma", 0, "A,B", R"("Qty")", -1, 0,
       "\"#,\" are not allowed as a custom column name , please choose a different name"},
      {"64 characters", 0, longName, R"("Qty")", -1, 0,
       "The column name is too long, please use at most 63 characters"},
      {"empty expression", 0, "X", "", -1, 0,
       "Column Expression is empty, please enter an expression to add a column"},
      {"unknown column", 0, "X", R"("Volume" + 1)", -1, 0,
       "Invalid Expression, Please check the expression again"},
      {"text column", 0, "X", R"("Symbol" + 1)", -1, 0,
       "Invalid Expression, Please check the expression again"},
      {"engine refuses", 0, "X", R"("Qty" +)", -1, 0,
       "Invalid Expression, Please check the expression again"},
      {"expression before name", 0, "Qty", R"("Nope")", -1, 0,
       "Invalid Expression, Please check the expression again"},
      {"data column name", 0, " Price ", R"("Qty")", -1, 0,
       "This column name already present,Please choose different column Name"},
      {"custom column name", 0, "Value", R"("Qty")", -1, 0,
       "This column name already present,Please choose different column Name"},
      {"other case is another name", 0, "value", R"("Qty")", -1, 0, ""},
      {"63 characters", 0, std::string(63, 'n'), R"("Qty")", -1, 0, ""},
      {"nothing to edit", 1, "", "", -1, 0, "No user defined column selected to edit"},
      {"edit without a button press", 1, "", " + 1", 0, 0,
       "Invalid Expression, Please check the expression again"},
      {"edit after Clear", 1, "", "", 0, kClear,
       "Invalid Expression, Please check the expression again"},
      {"nothing to delete", 2, "", "", -1, 0, "No user defined column selected to delete"},
      {"operator without a column", 0, "X", "", -1, kTimes, "Please select a Column Name"},
      {"End without a column", 0, "X", "", -1, kEnd, "No column is selected"},
  };
  AddColumn("Value", R"("Qty" * "Price")");
  for (const auto& c : cases) {
    Open(c.mode);
    QTest::keyClicks(Control<QLineEdit>(1022), QString::fromStdString(c.nameText));
    if (c.combo >= 0)
      Choose(c.combo);
    TypeExpression(c.typed);
    if (c.button)
      Click(c.button);
    if (c.button != kTimes && c.button != kEnd)
      Click(CUserDefinedColDlg::kConfirmId);
    const std::vector<std::string> expected =
        *c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{};
    EXPECT_EQ(recorder.messages(), expected) << c.name;
    EXPECT_EQ(dlg.isVisible(), *c.message != '\0') << c.name;
    recorder.clear();
    dlg.reject();
  }
  EXPECT_EQ(grid.table.size(), 9u) << "only the two accepted names were added";
}

TEST_F(UserDefinedColDlgTest, EditTakesTheTextAtTheLastButtonPress) {
  AddColumn("Value", R"("Qty" * "Price")");
  Open(vh::kUserColumnEdit);
  Choose(0);
  TypeExpression(" + ");
  Pick("Count");
  Click(kEnd);
  TypeExpression(" - 100"); // typed after the last press: not seen by Save
  Click(CUserDefinedColDlg::kConfirmId);
  ASSERT_FALSE(dlg.isVisible());
  EXPECT_EQ(grid.table[6].strDisplayExpression, R"("Qty" * "Price" + "Count")");
  EXPECT_EQ(grid.Cell(0, 6), "28.00");
  EXPECT_EQ(grid.header[6].tip, R"("Qty" * "Price")") << "Edit leaves the header alone";
  EXPECT_EQ(grid.header[6].width, 100);
  EXPECT_EQ(grid.saves.size(), 2u);
}

TEST_F(UserDefinedColDlgTest, DeleteTakesTwoDependantsAsRecorded) {
  AddColumn("A", R"("Qty" + 1)");
  AddColumn("B", R"("A" * 2)");
  AddColumn("C", R"("Count" - 1)");
  AddColumn("D", R"("A" + "B")");
  AddColumn("E", R"("Price" * 4)");
  Open(vh::kUserColumnDelete);
  Choose(0);
  Click(CUserDefinedColDlg::kConfirmId);
  ASSERT_FALSE(dlg.isVisible());
  // B goes first; E then stands where D stood and goes in its place.
  EXPECT_EQ(grid.Headings(), (std::vector<std::string>{"Client id", "Qty", "Price", "Symbol",
                                                       "Haircut", "Count", "C", "D"}));
  EXPECT_EQ(grid.Cell(0, grid.ColumnNamed("C")), "2.00");
  EXPECT_EQ(grid.header[7].tip, R"("A" + "B")");
  Open(vh::kUserColumnDelete);
  EXPECT_EQ(Combo()->count(), 2);
}

TEST_F(UserDefinedColDlgTest, KeyboardAlone) {
  Open(vh::kUserColumnAdd);
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dlg));
  QTest::keyClicks(QApplication::focusWidget(), "Next");
  QTest::keyClick(&dlg, Qt::Key_Tab);
  ASSERT_EQ(QApplication::focusWidget(), List());
  QTest::keyClick(List(), Qt::Key_Down); // from the focused first entry to the second
  QTest::keyClick(&dlg, Qt::Key_Tab);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space); // "+"
  for (int i = 0; i < 6; ++i)
    QTest::keyClick(&dlg, Qt::Key_Tab);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space, Qt::ControlModifier); // bare "("
  for (int i = 0; i < 4; ++i)
    QTest::keyClick(&dlg, Qt::Key_Tab);
  ASSERT_EQ(QApplication::focusWidget(), Expression());
  QTest::keyClicks(Expression(), "1)");
  EXPECT_EQ(ExpressionText(), R"("Price" + (1))");
  QTest::keyClick(Expression(), Qt::Key_Tab);
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  ASSERT_FALSE(dlg.isVisible()) << recorder.messages().front();
  EXPECT_EQ(grid.Cell(0, grid.ColumnNamed("Next")), "3.50");
}

TEST_F(UserDefinedColDlgTest, GridShortOfColumnsIsRefusedOnOpening) {
  grid.dataCount = 9;
  EXPECT_FALSE(dlg.Open(grid, vh::kUserColumnAdd));
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"Error while adding user defined cols"}));
  EXPECT_EQ(List()->count(), 0);
}

} // namespace
