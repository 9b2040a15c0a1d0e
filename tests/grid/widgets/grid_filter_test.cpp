// The model over the row engine (checked by Qt's model tester while rows
// stream in), the filter bar, the distinct-values pop-up and what a user or the owner reaches on
// the rows themselves.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"
#include "plugin/tarn_host_api.h"
#include "widgets/filter_text.h"

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QSignalSpy>
#include <QToolButton>
#include <QToolTip>

namespace vh::test {
namespace {

TEST_F(GridTest, TypedFilterAppliesAfterTheDelayAndEchoesNeverFilterAgain) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  AddRows({{"C006", "INFYX", "1", "1"}});
  Show();
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  ASSERT_TRUE(grid.FilterBarShown());
  QTest::keyClicks(grid.FilterHeader()->FilterField(1), "inf");
  EXPECT_EQ(grid.Model().rowCount(), 6); // not before the delay
  QTRY_COMPARE_WITH_TIMEOUT(grid.Model().rowCount(), 3, 2000);
  EXPECT_EQ(Shown(0), (Texts{"C001", "C003", "C006"}));

  // The engine writes the field: no timer, no report back, so the exact
  // pass below is not undone half a second later.
  QSignalSpy reported(grid.FilterHeader(), &CFilterHeader::FilterChanged);
  grid.SetFilter(1, "infy", false);
  grid.OnCommand(kCmdExactMatch);
  EXPECT_EQ(grid.Model().rowCount(), 2);
  const Texts menu = MenuAt(grid.viewport());
  EXPECT_NE(std::find(menu.begin(), menu.end(), "Exact Match [x]"), menu.end());
  QTest::qWait(700);
  EXPECT_EQ(reported.count(), 0);
  EXPECT_EQ(grid.Model().rowCount(), 2);
  grid.OnCommand(kCmdResetFilters);
  EXPECT_EQ(grid.FilterHeader()->FilterText(1), "");
  EXPECT_EQ(grid.Model().rowCount(), 6);
}

TEST_F(GridTest, PopUpAndComboListTheColumnsValues) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  AddRows({{"C006", "INF", "1", "1"}});
  Show();
  QComboBox combo;
  grid.FillComboWithColumn(&combo, 1);
  EXPECT_EQ(Items(combo.model()), (Texts{"--ALL-- ", "INFY", "TCS", "ABB", "SBIN", "INF"}));
  EXPECT_EQ(combo.currentIndex(), 0);

  grid.ToggleFilterBar();
  QSignalSpy clicked(&grid, &CFilterListCtrl::FilterButtonClicked);
  QTest::mouseClick(grid.FilterHeader()->FilterButton(1), Qt::LeftButton);
  EXPECT_EQ(clicked.count(), 1);
  CFilterText* popup = CFilterListCtrl::SharedFilterPopup();
  ASSERT_TRUE(popup && popup->isVisible());
  auto* list = qobject_cast<QAbstractItemView*>(GetDlgItem(popup, kFilterTextListId));
  EXPECT_EQ(Items(list->model()), (Texts{"ABB", "INF", "INFY", "SBIN", "TCS"}));
  // INFY then INF: INF is inside the text joined so far, so it is left out.
  for (int r : {2, 1, 4})
    list->selectionModel()->select(list->model()->index(r, 0), QItemSelectionModel::Select);
  QTest::keyClick(list, Qt::Key_Return);
  EXPECT_FALSE(popup->isVisible());
  EXPECT_EQ(grid.FilterHeader()->FilterText(1), "INF~INFY~TCS");
  EXPECT_EQ(Shown(0), (Texts{"C001", "C002", "C003", "C006"}));
}

TEST_F(GridTest, TabMovesBetweenFieldsWithWrapAround) {
  CFilterListCtrl& grid = MakeGrid();
  dialog_->resize(160, 200);
  Show();
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  // Key, field it leads to: back wraps to the last, forward wraps to the first.
  const std::pair<Qt::Key, int> cases[] = {
      {Qt::Key_Backtab, 3}, {Qt::Key_Tab, 0}, {Qt::Key_Tab, 1}};
  for (const auto& [key, to] : cases) {
    SCOPED_TRACE(to);
    QTest::keyClick(QApplication::focusWidget(), key,
                    key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    QLineEdit* field = grid.FilterHeader()->FilterField(to);
    EXPECT_EQ(QApplication::focusWidget(), field);
    // The edited field is scrolled into view.
    EXPECT_GE(field->geometry().left(), 0);
    EXPECT_LE(field->geometry().left(), grid.viewport()->width());
  }
  // Ctrl+F from inside a field gives the focus back to the list and hides.
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier);
  EXPECT_FALSE(grid.FilterBarShown());
  EXPECT_EQ(QApplication::focusWidget(), &grid);
}

TEST_F(GridTest, CheckBoxClicksToggleTheRowAndLabelClicksOnlySelect) {
  CFilterListCtrl& grid = MakeGrid();
  grid.SetCheckBoxes(true);
  AddRows(SampleRows());
  Show();
  const struct {
    const char* name;
    int row;
    bool onBox;
    const char* checks; // of displayed rows 0..4 after the click
  } cases[] = {{"boxChecks", 1, true, "01000"},
               {"labelLeavesIt", 1, false, "01000"},
               {"otherBoxChecks", 4, true, "01001"},
               {"boxAgainUnchecks", 1, true, "00001"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const QRect cell = grid.visualRect(grid.model()->index(c.row, 0));
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, {},
                      c.onBox ? CFilterListCtrl::CheckBoxRect(cell).center() : cell.center());
    std::string checks;
    for (int r = 0; r < 5; ++r)
      checks += char('0' + grid.Engine().GetCheck(r));
    EXPECT_EQ(checks, c.checks);
    EXPECT_EQ(grid.selectionModel()->selectedRows().size(), 1);
    EXPECT_EQ(grid.currentIndex().row(), c.row);
  }
}

// What the alert pass asks of the grid, and the tooltip a user sees.
TEST_F(GridTest, TopRowRowsPerPageSingleRowRepaintAndTooltips) {
  CFilterListCtrl& grid = MakeGrid();
  EXPECT_EQ(grid.GetTopIndex(), -1);
  for (int i = 0; i < 60; ++i)
    AddRows({{"C" + std::to_string(100 + i), "S", "1", "1"}});
  Show();
  grid.scrollTo(grid.model()->index(20, 0), QAbstractItemView::PositionAtTop);
  const int top = grid.GetTopIndex(), count = grid.GetCountPerPage();
  EXPECT_EQ(top, 20);
  const auto bottomOf = [&](int row) {
    return grid.rowViewportPosition(row) + grid.rowHeight(row);
  };
  EXPECT_LE(bottomOf(top + count - 1), grid.viewport()->height()); // all of the page shows
  EXPECT_GT(bottomOf(top + count), grid.viewport()->height());     // the next row does not
  QCoreApplication::processEvents();
  data_.fetches = 0;
  grid.RedrawItem(top + 2);
  QCoreApplication::processEvents();
  EXPECT_GT(data_.fetches, 0);
  EXPECT_LE(data_.fetches, 8); // one row's cells and colours, not the page

  const QRect cell = grid.visualRect(grid.model()->index(top + 1, 0));
  QHelpEvent help(QEvent::ToolTip, cell.center(), grid.viewport()->mapToGlobal(cell.center()));
  QApplication::sendEvent(grid.viewport(), &help);
  EXPECT_EQ(QToolTip::text(), "C121");
}

TEST_F(GridTest, ModelStaysConsistentWhileRowsStream) {
  const struct {
    const char* name;
    bool reverse;
    std::string first; // shown on top once all rows are in
    int s3Rows;        // rows of symbol S3 left after deleting display row 3
  } cases[] = {{"appendAtEnd", false, "C0", 285}, {"newestOnTop", true, "C1999", 286}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    data_.rows.clear();
    CFilterListCtrl& grid = MakeGrid();
    grid.Engine().SetReverseDisplay(c.reverse);
    FilterListModel& model = grid.Model();
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy inserts(&model, &QAbstractItemModel::rowsInserted);
    Show();
    for (int batch = 0; batch < 4; ++batch) {
      for (int i = 0; i < 500; ++i) {
        const int n = int(data_.rows.size());
        data_.rows.push_back(
            {"C" + std::to_string(n), "S" + std::to_string(n % 7), std::to_string(n), "1.5"});
        grid.SetItemData(grid.InsertItem(0), uint64_t(n + 1));
      }
      EXPECT_EQ(model.rowCount(), batch * 500); // announced only when the loop runs
      QCoreApplication::processEvents();
      EXPECT_EQ(model.rowCount(), (batch + 1) * 500);
    }
    EXPECT_EQ(inserts.count(), 4); // one announcement per batch, not per row
    data_.fetches = 0;
    grid.viewport()->repaint(); // only the cells in view are asked for
    EXPECT_GT(data_.fetches, 0);
    EXPECT_LT(data_.fetches, 400);
    EXPECT_EQ(grid.GetCellText(0, 0).toStdString(), c.first);
    ASSERT_EQ(grid.DeleteItem(3), 1);
    EXPECT_EQ(model.rowCount(), 1999);
    grid.SetFilter(1, "S3", false);
    EXPECT_EQ(model.rowCount(), c.s3Rows);
  }
}

} // namespace
} // namespace vh::test
