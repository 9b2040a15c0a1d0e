// The filter bar, the distinct-values pop-up and header-click sorting.
#include "tests/grid/widgets/grid_fixture.h"

#include "grid/widgets/grid_commands.h"
#include "plugin/tarn_host_api.h"
#include "widgets/filter_text.h"

#include <QSignalSpy>
#include <QToolButton>

namespace vh::test {
namespace {

using Texts = std::vector<std::string>;

TEST_F(GridTest, TypedFilterAppliesAfterTheDelay) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  Show();
  QTest::keyClick(&grid, Qt::Key_F, Qt::ControlModifier);
  ASSERT_TRUE(grid.FilterBarShown());
  EXPECT_EQ(grid.FilterHeader()->ChangeDelay(), 500);
  QLineEdit* symbol = grid.FilterHeader()->FilterField(1);
  QTest::keyClicks(symbol, "inf");
  EXPECT_EQ(grid.Model().rowCount(), 5); // not before the delay
  QTRY_COMPARE_WITH_TIMEOUT(grid.Model().rowCount(), 2, 2000);
  EXPECT_EQ(Shown(0), (Texts{"C001", "C003"}));
}

TEST_F(GridTest, EchoedFilterTextsDoNotFilterAgain) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  AddRows({{"C006", "INFYX", "1", "1"}});
  Show();
  grid.ToggleFilterBar();
  QSignalSpy reported(grid.FilterHeader(), &CFilterHeader::FilterChanged);
  grid.SetFilter(1, "infy", false);
  EXPECT_EQ(grid.FilterHeader()->FilterText(1), "infy");
  EXPECT_EQ(grid.Model().rowCount(), 3);
  grid.OnCommand(kCmdExactMatch); // rewrites the first filter in exact mode
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

TEST_F(GridTest, PopUpOfAFilterButtonFiltersOnThePickedValues) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  AddRows({{"C006", "INF", "1", "1"}});
  Show();
  grid.ToggleFilterBar();
  QSignalSpy clicked(&grid, &CFilterListCtrl::FilterButtonClicked);
  QTest::mouseClick(grid.FilterHeader()->FilterButton(1), Qt::LeftButton);
  EXPECT_EQ(clicked.count(), 1);
  CFilterText* popup = CFilterListCtrl::SharedFilterPopup();
  ASSERT_NE(popup, nullptr);
  ASSERT_TRUE(popup->isVisible());
  auto* list = qobject_cast<QAbstractItemView*>(GetDlgItem(popup, kFilterTextListId));
  ASSERT_NE(list, nullptr);
  Texts values;
  for (int r = 0; r < list->model()->rowCount(); ++r)
    values.push_back(list->model()->index(r, 0).data().toString().toStdString());
  EXPECT_EQ(values, (Texts{"ABB", "INF", "INFY", "SBIN", "TCS"}));
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
  const std::pair<Qt::Key, int> cases[] = {{Qt::Key_Backtab, 3},
                                           {Qt::Key_Tab, 0},
                                           {Qt::Key_Tab, 1},
                                           {Qt::Key_Tab, 2},
                                           {Qt::Key_Backtab, 1}};
  CFilterHeader* header = grid.FilterHeader();
  for (const auto& [key, to] : cases) {
    SCOPED_TRACE(to);
    QTest::keyClick(QApplication::focusWidget(), key,
                    key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
    EXPECT_EQ(QApplication::focusWidget(), header->FilterField(to));
    // The edited field is scrolled into view.
    const QRect field = header->FilterField(to)->geometry();
    EXPECT_GE(field.left(), 0);
    EXPECT_LE(field.left(), grid.viewport()->width());
  }
  // Ctrl+F from inside a field gives the focus back to the list and hides.
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_F, Qt::ControlModifier);
  EXPECT_FALSE(grid.FilterBarShown());
  EXPECT_EQ(QApplication::focusWidget(), &grid);
}

TEST_F(GridTest, HeaderClicksSortAndMoveTheArrow) {
  CFilterListCtrl& grid = MakeGrid();
  AddRows(SampleRows());
  Show();
  CFilterHeader* header = grid.FilterHeader();
  EXPECT_EQ(header->SectionImage(0), 0); // the set-up sort column
  const struct {
    const char* name;
    int section;
    Texts qty;
    std::vector<int> images;
  } cases[] = {
      {"qtyAscending", 2, {"7", "15", "120", "300", "2000"}, {-1, -1, 0, -1}},
      {"qtyDescending", 2, {"2000", "300", "120", "15", "7"}, {-1, -1, 1, -1}},
      {"closeRestartsAscending", 3, {"7", "2000", "120", "300", "15"}, {-1, -1, -1, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ClickSection(c.section);
    EXPECT_EQ(Shown(2), c.qty);
    std::vector<int> images;
    for (int s = 0; s < 4; ++s)
      images.push_back(header->SectionImage(s));
    EXPECT_EQ(images, c.images);
  }
}

} // namespace
} // namespace vh::test
