// Alerts, mark/unmark and the report buttons as the holdings view carries
// them, against a real tarn-riskd: the rule dialog's messages, change in
// place, double-click and Delete, a rule that selects exactly the
// database's rows and comes back after a restart; a mark from the row
// menu's command that the next answer shows; the lien report of the
// store's rows.
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTabBar>
#include <QTest>

#include <cstdlib>
#include <set>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "holdings/alert_rules.h"
#include "holdings/dialogs/lien_report_dlg.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "holdings/dialogs/view_alert.h"
#include "holdings/dialogs/view_hold_features.h"
#include "holdings/mark_unmark.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/view/view_fixture.h"
#include "tests/widgets/screenshot.h"

namespace vh::test {
namespace {

// The distinct shown rows of `list`, each its first `columns` cells joined
// by '|', sorted and joined by blanks (as SQL's group_concat of them).
std::string ShownRows(CFilterListCtrl& list, int columns) {
  list.Model().Flush();
  std::set<std::string> rows;
  for (int r = 0; r < list.Engine().DisplayedCount(); ++r) {
    std::string row = list.GetCellBytes(r, 0);
    for (int c = 1; c < columns; ++c)
      row += "|" + list.GetCellBytes(r, c);
    rows.insert(row);
  }
  std::string out;
  for (const std::string& row : rows)
    out += (out.empty() ? "" : " ") + row;
  return out;
}

using FeaturesE2E = BackendFixture;

TEST_F(FeaturesE2E, ARuleSelectsTheDatabasesRowsAndComesBackAfterARestart) {
  const std::string client = busiestClient;
  const std::string ofClient = " FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE "
                               "h.client_id='" +
                               client + "'";
  // The median quantity, so that the rule selects some rows and not others.
  const std::string t =
      DatabaseText(db, "SELECT h.holdings_qty" + ofClient +
                           " ORDER BY 1 LIMIT 1 OFFSET (SELECT count(*)/2" + ofClient + ")");
  auto view = MakeView();
  EXPECT_FALSE(GetDlgItem(view.get(), kButtonAlertSetting)->isHidden());
  EXPECT_TRUE(view->Tabs()->isHidden());
  ASSERT_TRUE(AskForClient(view.get(), client) && WaitForAnswers(*view));
  ASSERT_EQ(view->AddCustomColumn("Held", "\"Holdings Qty\""), "");

  ASSERT_TRUE(Click(view.get(), kButtonAlertSetting));
  CViewAlert* dialog = view->Features()->AlertDialog();
  ASSERT_TRUE(dialog && dialog->isVisible());
  auto combo = [&](int id) { return qobject_cast<QComboBox*>(GetDlgItem(dialog, id)); };
  auto* value = qobject_cast<QLineEdit*>(GetDlgItem(dialog, kEditAlertValue));
  const struct {
    const char* name;
    int column, comparison;
    std::string value;
    std::vector<std::string> messages;
    std::string rules; // name|comparison|value|number
  } cases[] = {
      {"no column", -1, 0, "5", {kSelectColumnMessage}, ""},
      {"no comparison", 0, -1, "5", {kSelectExpressionMessage}, ""},
      {"no value", 0, 1, "", {kEnterValueMessage}, ""},
      {"made", 0, 0, "abc", {}, "Held|less than or equal to|abc|18"},
      {"changed in place", 0, 1, t, {}, "Held|greater than or equal to|" + t + "|18"},
  };
  for (const auto& c : cases) {
    messages.clear();
    combo(kComboAlertColumn)->setCurrentIndex(c.column);
    combo(kComboAlertExpression)->setCurrentIndex(c.comparison);
    value->clear();
    QTest::keyClicks(value, QString::fromStdString(c.value));
    ASSERT_TRUE(Click(dialog, kButtonAlertUpdate));
    EXPECT_EQ(messages, c.messages) << c.name;
    EXPECT_EQ(ShownRows(*dialog->RuleGrid(), 4), c.rules) << c.name;
    EXPECT_EQ(view->Tabs()->isHidden(), c.rules.empty()) << c.name;
  }
  // A column table out of step with its grid is refused; the lists stay.
  CustomColumnGrid& columns = *view->HoldingsGrid()->CustomColumns();
  const std::vector<sTarnColInfo> kept = columns.ColumnTable();
  columns.ColumnTable().resize(2);
  EXPECT_FALSE(dialog->SetUpWithColumns(columns));
  columns.ColumnTable() = kept;
  EXPECT_EQ(messages, std::vector<std::string>{kUserColumnsErrorMessage});
  EXPECT_EQ(combo(kComboAlertColumn)->count(), 1);
  // A double click puts the rule back into the fields.
  combo(kComboAlertColumn)->setCurrentIndex(-1);
  combo(kComboAlertExpression)->setCurrentIndex(-1);
  value->clear();
  CFilterListCtrl* rules = dialog->RuleGrid();
  const QPoint cell = rules->visualRect(rules->model()->index(0, 0)).center();
  QTest::mouseClick(rules->viewport(), Qt::LeftButton, {}, cell);
  QTest::mouseDClick(rules->viewport(), Qt::LeftButton, {}, cell);
  EXPECT_EQ(combo(kComboAlertColumn)->currentText() + "|" +
                combo(kComboAlertColumnNumber)->currentText() + "|" +
                combo(kComboAlertExpression)->currentText() + "|" + value->text(),
            QString::fromStdString("Held|18|greater than or equal to|" + t));

  const int repaints = view->Features()->AlertList().Repaints();
  view->Core().OnPresentValuesEnd(); // what the end of a present-values answer runs
  const std::string expected =
      DatabaseText(db, "SELECT group_concat(r, ' ') FROM (SELECT DISTINCT 'Held|'||h.client_id||'|'"
                       "||s.isin r" +
                           ofClient + " AND h.holdings_qty>=" + t + " ORDER BY r)");
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(ShownRows(*view->AlertGrid(), 3), expected);
  EXPECT_EQ(view->Features()->AlertList().Repaints(), repaints + 1); // once, whatever the hits

  // A restart: rules saved at exit, the grid's custom column with its
  // profile; the new view loads the rule without the dialog being opened.
  view->SaveOnExit();
  view.reset();
  ModuleAlertRules().Reset();
  auto again = MakeView();
  EXPECT_FALSE(again->Tabs()->isHidden());
  EXPECT_EQ(again->Features()->AlertDialog(), nullptr);
  ASSERT_TRUE(AskForClient(again.get(), client) && WaitForAnswers(*again));
  again->Core().OnPresentValuesEnd();
  EXPECT_EQ(ShownRows(*again->AlertGrid(), 3), expected);

  // Delete: nothing without a selected rule, else the rule goes for good.
  ASSERT_TRUE(Click(again.get(), kButtonAlertSetting));
  rules = again->Features()->AlertDialog()->RuleGrid();
  ASSERT_TRUE(Click(again->Features()->AlertDialog(), kButtonAlertDelete));
  EXPECT_EQ(rules->Engine().DisplayedCount(), 1);
  rules->selectRow(0);
  ASSERT_TRUE(Click(again->Features()->AlertDialog(), kButtonAlertDelete));
  EXPECT_EQ(rules->Engine().DisplayedCount(), 0);
  EXPECT_TRUE(messages.empty());
  again->SaveOnExit();
  ModuleAlertRules().Reset();
  EXPECT_EQ(ModuleAlertRules().Load("Held"), nullptr);
}

TEST_F(FeaturesE2E, AMarkFromTheRowMenuShowsInTheNextAnswer) {
  auto view = MakeView();
  ASSERT_TRUE(AskForClient(view.get(), busiestClient) && WaitForAnswers(*view));
  CFilterListCtrl* grid = view->HoldingsGrid();
  auto cells = [&](int r) { // through "Holdings Update Qty"
    Row out;
    for (int c = 0; c < 8; ++c)
      out.push_back(grid->GetCellBytes(r, c));
    return out;
  };
  // The first row with a quantity to mark: one unit moves to the update qty.
  int row = 0;
  while (row < grid->Engine().DisplayedCount() && std::atoi(cells(row)[6].c_str()) <= 0)
    ++row;
  Row expected = cells(row);
  expected[6] = std::to_string(std::atoi(expected[6].c_str()) - 1);
  expected[7] = std::to_string(std::atoi(expected[7].c_str()) + 1);
  grid->selectRow(row);
  view->OnMarkCommand(kCmdMarkFo);
  CMarkUnMark* dialog = view->Features()->MarkDialog();
  ASSERT_TRUE(dialog && dialog->isVisible());
  auto* quantity = qobject_cast<QLineEdit*>(GetDlgItem(dialog, kEditMarkQuantity));
  EXPECT_TRUE(SaveScreenshot(*dialog, "mark_unmark"));
  // A refusal keeps the dialog open, the focus on the quantity.
  quantity->clear();
  QApplication::setActiveWindow(dialog);
  ASSERT_TRUE(Click(dialog, kButtonMarkSubmit));
  EXPECT_EQ(messages, std::vector<std::string>{kQuantityZeroMessage});
  EXPECT_TRUE(dialog->isVisible() && QApplication::focusWidget() == quantity);
  messages.clear();
  QTest::keyClicks(quantity, "+1");
  ASSERT_TRUE(Click(dialog, kButtonMarkSubmit));
  EXPECT_FALSE(dialog->isVisible());
  EXPECT_TRUE(messages.empty());

  // The transfer and the next request share the connection, in order.
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos) && WaitForAnswers(*view));
  bool shown = false;
  for (int r = 0; r < grid->Engine().DisplayedCount(); ++r)
    shown = shown || cells(r) == expected;
  EXPECT_TRUE(shown);
  // Without a selected row the command opens nothing.
  grid->clearSelection();
  view->OnMarkCommand(kCmdUnmarkCur);
  EXPECT_FALSE(dialog->isVisible());
}

// The view's report buttons, each opening one dialog; the lien report
// shows the store's rows, of every segment or of one.
TEST_F(FeaturesE2E, TheReportButtonsAndTheLienReport) {
  auto view = MakeView();
  view->show();
  QWidget* topTen = GetDlgItem(view.get(), kButtonTopTen);
  QWidget* lienButton = GetDlgItem(view.get(), kButtonLienReports);
  ASSERT_TRUE(topTen && lienButton);
  EXPECT_TRUE(topTen->isVisible() && !topTen->geometry().intersects(lienButton->geometry()));
  // The second press brings the same dialog back.
  ASSERT_TRUE(Click(view.get(), kButtonTopTen) && Click(view.get(), kButtonTopTen));
  ASSERT_EQ(view->findChildren<CTopNDlg*>().size(), 1);
  CTopNDlg* topN = view->findChild<CTopNDlg*>();
  ASSERT_TRUE(Click(topN, CTopNDlg::kIdRefresh));
  // Listed only because the answer's first client is in the view's list.
  EXPECT_TRUE(topN->isVisible() &&
              QTest::qWaitFor([&] { return topN->List().Engine().DisplayedCount() == 10; }, 10000));

  ASSERT_TRUE(Click(view.get(), kButtonLienReports));
  CLienReport* lien = view->findChild<CLienReport*>();
  ASSERT_TRUE(lien && lien->isVisible());
  const struct {
    const char* name;
    const char* segment;
    std::string where;
  } cases[] = {{"all, as opened", nullptr, "1"},
               {"derivatives", "Derivatives", "segment='FO'"},
               {"allAgainAfterEmptying", "--ALL--", "1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    messages.clear();
    ASSERT_TRUE((!c.segment || Pick(lien, CLienReport::kIdSegment, c.segment)) &&
                Click(lien, CLienReport::kIdGetReport));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !messages.empty(); }, 10000));
    EXPECT_EQ(messages, std::vector<std::string>{"Lien Report Download Completed."});
    const std::string where = " FROM lien WHERE " + c.where;
    EXPECT_EQ(std::to_string(lien->List().Engine().DisplayedCount()),
              DatabaseText(db, "SELECT count(*)" + where));
    EXPECT_EQ(ShownRows(lien->List(), 5),
              DatabaseText(db, "SELECT group_concat(r, ' ') FROM (SELECT client_id||'|'||segment||"
                               "printf('|%.2f|%.2f|%.2f', lien_paise/100.0, payin_paise/100.0,"
                               " payout_paise/100.0) r" +
                                   where + " ORDER BY r)"));
  }
  // Resizing: the list stretches, "Cancel" keeps to the right edge.
  QWidget* list = GetDlgItem(lien, CLienReport::kIdList);
  QWidget* cancel = GetDlgItem(lien, CLienReport::kIdCancel);
  const QRect list0 = list->geometry(), cancel0 = cancel->geometry();
  lien->resize(lien->size() + QSize(120, 60));
  EXPECT_EQ(list->geometry(), list0.adjusted(0, 0, 120, 60));
  EXPECT_EQ(cancel->geometry(), cancel0.translated(120, 0));
  EXPECT_TRUE(SaveScreenshot(*lien, "lien_report"));
  ASSERT_TRUE(Click(lien, CLienReport::kIdCancel));
  EXPECT_FALSE(lien->isVisible());
}

} // namespace
} // namespace vh::test
