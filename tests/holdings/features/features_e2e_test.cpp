// Alerts and mark/unmark as the holdings view carries them, against a real
// tarn-riskd: the button and the tab, the rule dialog's messages, change in
// place, double-click and Delete, a rule that selects exactly the database's
// rows, the rule back after a restart, and a mark from the row menu's
// command that the next answer shows.
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTest>

#include <cstdlib>
#include <set>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/alert_rules.h"
#include "holdings/dialogs/view_alert.h"
#include "holdings/dialogs/view_hold_features.h"
#include "holdings/mark_unmark.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/view/view_fixture.h"

namespace vh::test {
namespace {

class FeaturesE2E : public BackendFixture {
protected:
  // The alert list's ISINs, sorted and joined by blanks; every row is of "Held".
  std::string AlertIsins(CViewHold& view) {
    std::set<std::string> isins;
    CFilterListCtrl* list = view.AlertGrid();
    for (int r = 0; r < list->Engine().DisplayedCount(); ++r) {
      EXPECT_EQ(list->GetCellBytes(r, 0), "Held");
      isins.insert(list->GetCellBytes(r, 2));
    }
    std::string out;
    for (const std::string& isin : isins)
      out += (out.empty() ? "" : " ") + isin;
    return out;
  }
};

TEST_F(FeaturesE2E, ARuleSelectsTheDatabasesRowsAndComesBackAfterARestart) {
  const std::string client = BusiestClient();
  auto view = MakeView();
  EXPECT_FALSE(GetDlgItem(view.get(), kButtonAlertSetting)->isHidden());
  EXPECT_TRUE(view->Tabs()->isHidden());
  ASSERT_TRUE(AskForClient(view.get(), client) && WaitForAnswers(*view));
  ASSERT_EQ(view->AddCustomColumn("Held", "\"Holdings Qty\""), "");
  // The median quantity, so that the rule selects some rows and not others.
  std::vector<int> quantities;
  for (const Row& r : GridRows(*view))
    quantities.push_back(std::atoi(r[6].c_str()));
  ASSERT_GE(quantities.size(), 2u);
  std::sort(quantities.begin(), quantities.end());
  const int threshold = quantities[quantities.size() / 2];

  ASSERT_TRUE(Click(view.get(), kButtonAlertSetting));
  CViewAlert* dialog = view->Features()->AlertDialog();
  ASSERT_TRUE(dialog && dialog->isVisible());
  auto combo = [&](int id) { return qobject_cast<QComboBox*>(GetDlgItem(dialog, id)); };
  auto* value = qobject_cast<QLineEdit*>(GetDlgItem(dialog, kEditAlertValue));
  EXPECT_TRUE(combo(kComboAlertColumnNumber)->isHidden());
  const std::string t = std::to_string(threshold);
  const struct {
    const char* name;
    int column, comparison;
    std::string value;
    std::vector<std::string> messages, rows; // rows: name|comparison|value|number
  } cases[] = {
      {"no column", -1, 0, "5", {"Please select a custom column"}, {}},
      {"no comparison", 0, -1, "5", {"Please select a expression"}, {}},
      {"no value", 0, 1, "", {"Please enter some value"}, {}},
      {"made", 0, 0, "abc", {}, {"Held|less than or equal to|abc|18"}},
      {"changed in place", 0, 1, t, {}, {"Held|greater than or equal to|" + t + "|18"}},
  };
  for (const auto& c : cases) {
    messages.clear();
    combo(kComboAlertColumn)->setCurrentIndex(c.column);
    combo(kComboAlertExpression)->setCurrentIndex(c.comparison);
    value->clear();
    QTest::keyClicks(value, QString::fromStdString(c.value));
    ASSERT_TRUE(Click(dialog, kButtonAlertUpdate));
    EXPECT_EQ(messages, c.messages) << c.name;
    std::vector<std::string> rows;
    CFilterListCtrl* list = dialog->RuleGrid();
    for (int r = 0; r < list->Engine().DisplayedCount(); ++r)
      rows.push_back(list->GetCellBytes(r, 0) + "|" + list->GetCellBytes(r, 1) + "|" +
                     list->GetCellBytes(r, 2) + "|" + list->GetCellBytes(r, 3));
    EXPECT_EQ(rows, c.rows) << c.name;
    EXPECT_EQ(view->Tabs()->isHidden(), c.rows.empty()) << c.name;
  }
  // A column table out of step with its grid is refused; the lists stay.
  CustomColumnGrid& columns = *view->HoldingsGrid()->CustomColumns();
  const std::vector<sTarnColInfo> kept = columns.ColumnTable();
  columns.ColumnTable().resize(2);
  messages.clear();
  EXPECT_FALSE(dialog->SetUpWithColumns(columns));
  columns.ColumnTable() = kept;
  EXPECT_EQ(messages, std::vector<std::string>{"Error while adding user defined cols"});
  EXPECT_EQ(combo(kComboAlertColumn)->count(), 1);
  // A double click puts the rule back into the fields.
  combo(kComboAlertColumn)->setCurrentIndex(-1);
  combo(kComboAlertExpression)->setCurrentIndex(-1);
  value->clear();
  CFilterListCtrl* list = dialog->RuleGrid();
  const QPoint cell = list->visualRect(list->model()->index(0, 0)).center();
  QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell);
  QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, cell);
  EXPECT_EQ(combo(kComboAlertColumn)->currentText() + "|" +
                combo(kComboAlertColumnNumber)->currentText() + "|" +
                combo(kComboAlertExpression)->currentText() + "|" + value->text(),
            QString::fromStdString("Held|18|greater than or equal to|" + t));

  const int repaints = view->Features()->AlertList().Repaints();
  view->Core().OnPresentValuesEnd(); // what the end of a present-values answer runs
  // The ISINs of the client's holdings of at least the threshold.
  const std::string expected = DatabaseText(
      "SELECT group_concat(isin, ' ') FROM (SELECT DISTINCT s.isin FROM holding h JOIN scrip s "
      "ON s.id=h.scrip_id WHERE h.client_id='" +
      client + "' AND h.holdings_qty>=" + t + " ORDER BY s.isin)");
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(AlertIsins(*view), expected);
  EXPECT_EQ(view->Features()->AlertList().Repaints(), repaints + 1); // once, whatever the hits

  // A restart: rules saved at exit, the grid's custom column with its
  // profile; the new view loads the rule without the dialog being opened.
  view->SaveOnExit();
  view.reset();
  EXPECT_TRUE(ModuleAlertRules().Empty());
  ModuleAlertRules().Reset();
  auto again = MakeView();
  EXPECT_FALSE(again->Tabs()->isHidden());
  EXPECT_EQ(again->Features()->AlertDialog(), nullptr);
  ASSERT_TRUE(AskForClient(again.get(), client) && WaitForAnswers(*again));
  again->Core().OnPresentValuesEnd();
  EXPECT_EQ(AlertIsins(*again), expected);

  // Delete: nothing without a selected rule, else the rule goes for good.
  ASSERT_TRUE(Click(again.get(), kButtonAlertSetting));
  CFilterListCtrl* rules = again->Features()->AlertDialog()->RuleGrid();
  ASSERT_EQ(rules->Engine().DisplayedCount(), 1);
  ASSERT_TRUE(Click(again->Features()->AlertDialog(), kButtonAlertDelete));
  EXPECT_EQ(rules->Engine().DisplayedCount(), 1);
  rules->selectRow(0);
  ASSERT_TRUE(Click(again->Features()->AlertDialog(), kButtonAlertDelete));
  EXPECT_EQ(rules->Engine().DisplayedCount(), 0);
  EXPECT_TRUE(messages.empty());
  again->SaveOnExit();
  again.reset();
  ModuleAlertRules().Reset();
  auto third = MakeView();
  EXPECT_TRUE(third->Tabs()->isHidden());
  EXPECT_TRUE(ModuleAlertRules().Empty());
  third->SaveOnExit();
  ModuleAlertRules().Reset();
}

TEST_F(FeaturesE2E, AMarkFromTheRowMenuShowsInTheNextAnswer) {
  const std::string client = BusiestClient();
  auto view = MakeView();
  ASSERT_TRUE(AskForClient(view.get(), client) && WaitForAnswers(*view));
  CFilterListCtrl* grid = view->HoldingsGrid();
  // The first row with a quantity to mark.
  int row = -1;
  for (int r = 0; r < grid->Engine().DisplayedCount() && row < 0; ++r)
    if (std::atoi(grid->GetCellBytes(r, 6).c_str()) > 0)
      row = r;
  ASSERT_GE(row, 0);
  auto cells = [&](int r) {
    Row out;
    for (int c = 0; c < 18; ++c)
      out.push_back(grid->GetCellBytes(r, c));
    return out;
  };
  const Row before = cells(row);
  grid->selectRow(row);
  view->OnMarkCommand(kCmdMarkFo);
  CMarkUnMark* dialog = view->Features()->MarkDialog();
  ASSERT_TRUE(dialog && dialog->isVisible());
  EXPECT_EQ(dialog->windowTitle(), "FO Marking");
  auto* quantity = qobject_cast<QLineEdit*>(GetDlgItem(dialog, kEditMarkQuantity));
  quantity->clear();
  QTest::keyClicks(quantity, "+1");
  ASSERT_TRUE(Click(dialog, kButtonMarkSubmit));
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_TRUE(messages.empty());

  Row after;
  // The transfer and the next request share the connection, in order.
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  ASSERT_TRUE(WaitForAnswers(*view));
  for (int r = 0; r < grid->Engine().DisplayedCount(); ++r) {
    const Row now = cells(r);
    if (now[0] == before[0] && now[1] == before[1] && now[3] == before[3] && now[5] == before[5])
      after = now;
  }
  ASSERT_FALSE(after.empty());
  EXPECT_EQ(std::atoi(after[6].c_str()), std::atoi(before[6].c_str()) - 1);
  EXPECT_EQ(std::atoi(after[7].c_str()), std::atoi(before[7].c_str()) + 1);
}

} // namespace
} // namespace vh::test
