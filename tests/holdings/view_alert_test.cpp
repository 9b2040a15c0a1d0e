// CViewAlert through its controls, over a real holdings-like grid with two
// custom columns: every message, Update in place, double-click, Delete, and
// the rules coming back after a restart of the rule table.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "holdings/dialogs/view_alert.h"
#include "plugin/tarn_host_api.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"
#include "tests/widgets/screenshot.h"

namespace vh {
namespace {

using Strings = std::vector<std::string>;

int NoCell(void*, uint64_t, int, std::string& text, CellStyle&) {
  text.clear();
  return 1;
}

sTarnColInfo Column(const char* name, const char* stored = "") {
  sTarnColInfo c;
  c.SetName(name);
  c.nType = stored[0] ? kCompareDecimal : kCompareText;
  c.strExpression = stored;
  return c;
}

class ViewAlertTest : public testing::Test {
protected:
  void SetUp() override {
    grid.Engine().SetOwnerDataSource(&NoCell, nullptr);
    grid.Engine().SetColumns({Column("Client id"), Column("Holdings Qty"), Column("Close Price"),
                              Column("Value", R"( "1"*"2")"), Column("Half", R"( "1"/2)")},
                             3);
    dialog = std::make_unique<CViewAlert>(rules);
    dialog->Open(&grid);
  }
  template <typename T> T* Control(int id) {
    return qobject_cast<T*>(GetDlgItem(dialog.get(), id));
  }
  void Choose(int column, int comparison, const QString& value) {
    Control<QComboBox>(kComboAlertColumn)->setCurrentIndex(column);
    Control<QComboBox>(kComboAlertExpression)->setCurrentIndex(comparison);
    QLineEdit* edit = Control<QLineEdit>(kEditAlertValue);
    edit->clear();
    QTest::keyClicks(edit, value);
  }
  void Click(int id) { QTest::mouseClick(Control<QPushButton>(id), Qt::LeftButton); }
  // The rule list as "name|comparison|value|number" per row.
  Strings Rows() {
    Strings out;
    CFilterListCtrl* list = dialog->RuleGrid();
    for (int r = 0; r < list->Engine().DisplayedCount(); ++r)
      out.push_back(list->GetCellBytes(r, 0) + "|" + list->GetCellBytes(r, 1) + "|" +
                    list->GetCellBytes(r, 2) + "|" + list->GetCellBytes(r, 3));
    return out;
  }

  test::TempDir dir;
  ScopedSettingsPaths paths{{dir.path().string(), dir.path().string()}};
  ScopedMessageRecorder recorder;
  CAlertRuleTable rules;
  CFilterListCtrl grid;
  std::unique_ptr<CViewAlert> dialog;
};

TEST_F(ViewAlertTest, ControlsAndTheirTexts) {
  EXPECT_EQ(dialog->windowTitle(), "Custom Column Alert Setting");
  QComboBox* names = Control<QComboBox>(kComboAlertColumn);
  QComboBox* numbers = Control<QComboBox>(kComboAlertColumnNumber);
  QComboBox* expression = Control<QComboBox>(kComboAlertExpression);
  ASSERT_TRUE(names && numbers && expression && Control<QLineEdit>(kEditAlertValue));
  EXPECT_EQ(Control<QPushButton>(kButtonAlertUpdate)->text(), "Update");
  EXPECT_EQ(Control<QPushButton>(kButtonAlertDelete)->text(), "Delete");
  EXPECT_TRUE(numbers->isHidden());
  ASSERT_EQ(expression->count(), 2);
  EXPECT_EQ(expression->itemText(0), "less than or equal to");
  EXPECT_EQ(expression->itemText(1), "greater than or equal to");
  ASSERT_EQ(names->count(), 2);
  EXPECT_EQ(names->itemText(1), "Half");
  EXPECT_EQ(numbers->itemText(1), "4");
  names->setCurrentIndex(1);
  EXPECT_EQ(numbers->currentIndex(), 1);
  CFilterListCtrl* list = dialog->RuleGrid();
  EXPECT_EQ(list->ListControlId(), kGridAlertRules);
  EXPECT_EQ(list->ProfileName(), "Custom Alert Setting");
  QStringList headings;
  for (int c = 0; c < list->HeaderItemCount(); ++c)
    headings << list->HeaderItemText(c);
  EXPECT_EQ(headings,
            (QStringList{"Custom Column Name", "Expression", "Value", "Custom Column Number"}));
}

TEST_F(ViewAlertTest, UpdateMessagesInOrder) {
  const struct {
    const char* name;
    int column;
    int comparison;
    const char* value;
    Strings messages;
    Strings rows;
  } cases[] = {
      {"nothing chosen", -1, -1, "", {"Please select a custom column"}, {}},
      {"no column", -1, 0, "5", {"Please select a custom column"}, {}},
      {"no comparison", 0, -1, "5", {"Please select a expression"}, {}},
      {"no value", 0, 1, "", {"Please enter some value"}, {}},
      {"made", 0, 1, "5", {}, {"Value|greater than or equal to|5|3"}},
      {"changed in place", 0, 0, "abc", {}, {"Value|less than or equal to|abc|3"}},
      {"second column",
       1,
       0,
       "-2.5",
       {},
       {"Value|less than or equal to|abc|3", "Half|less than or equal to|-2.5|4"}},
  };
  for (const auto& c : cases) {
    recorder.clear();
    Choose(c.column, c.comparison, c.value);
    Click(kButtonAlertUpdate);
    EXPECT_EQ(recorder.messages(), c.messages) << c.name;
    EXPECT_EQ(Rows(), c.rows) << c.name;
    EXPECT_EQ(rules.Size(), c.rows.size()) << c.name;
  }
}

TEST_F(ViewAlertTest, DoubleClickFillsTheControlsAndDeleteTakesTheSelectedRule) {
  Choose(1, 0, "7");
  Click(kButtonAlertUpdate);
  Choose(0, 1, "100");
  Click(kButtonAlertUpdate);
  ASSERT_EQ(Rows().size(), 2u);
  dialog->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
  CFilterListCtrl* list = dialog->RuleGrid();
  Choose(-1, -1, "");
  const QRect cell = list->visualRect(list->model()->index(0, 0));
  ASSERT_TRUE(cell.isValid());
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, cell.center());
  EXPECT_EQ(Control<QComboBox>(kComboAlertColumn)->currentText(), "Half");
  EXPECT_EQ(Control<QComboBox>(kComboAlertColumnNumber)->currentText(), "4");
  EXPECT_EQ(Control<QComboBox>(kComboAlertExpression)->currentText(), "less than or equal to");
  EXPECT_EQ(Control<QLineEdit>(kEditAlertValue)->text(), "7");

  list->clearSelection();
  Click(kButtonAlertDelete); // no row selected: nothing happens
  EXPECT_EQ(Rows().size(), 2u);
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
  Click(kButtonAlertDelete);
  EXPECT_EQ(Rows(), Strings{"Value|greater than or equal to|100|3"});
  EXPECT_EQ(rules.Find("Half"), nullptr);
  EXPECT_NE(test::ReadFile(dir.file("UserSetting.ini")).find("Half= "), std::string::npos);
  EXPECT_TRUE(recorder.messages().empty());
  EXPECT_TRUE(test::SaveScreenshot(*dialog, "view_alert"));
}

TEST_F(ViewAlertTest, RulesComeBackAfterARestartOnlyForExistingColumns) {
  Choose(0, 0, "10");
  Click(kButtonAlertUpdate);
  Choose(1, 1, "3");
  Click(kButtonAlertUpdate);
  ASSERT_TRUE(rules.SaveAll());
  dialog.reset();

  // A restart: a new table and dialog; "Half" is gone from the grid.
  ASSERT_TRUE(grid.Engine().DeleteHeaderColumn(4));
  CAlertRuleTable restarted;
  CViewAlert again(restarted);
  ASSERT_TRUE(again.SetUpWithGrid(&grid));
  ASSERT_EQ(again.RuleGrid()->Engine().DisplayedCount(), 1);
  EXPECT_EQ(again.RuleAt(0)->field3, "10");
  EXPECT_EQ(restarted.Find("Half"), nullptr);
  EXPECT_NE(ReadAlertRule("Half"), std::nullopt); // kept in the file
}

} // namespace
} // namespace vh

namespace vh {
namespace {

TEST(ViewAlertSetUp, MoreDataColumnsThanColumnRecordsIsRefused) {
  ScopedMessageRecorder recorder;
  CAlertRuleTable rules;
  CViewAlert dialog(rules);
  CFilterListCtrl grid;
  grid.Engine().SetOwnerDataSource(&NoCell, nullptr);
  grid.Engine().SetColumns({Column("A"), Column("B")}, 5);
  if (grid.Engine().DataColumnCount() <= grid.Engine().ColumnCount())
    GTEST_SKIP() << "the engine keeps its data column count within its columns";
  EXPECT_FALSE(dialog.SetUpWithGrid(&grid));
  EXPECT_EQ(recorder.messages(), Strings{"Error while adding user defined cols"});
}

} // namespace
} // namespace vh
