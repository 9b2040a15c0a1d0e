// The model over the row engine, checked by Qt's model tester while rows
// stream in, are deleted, filtered and sorted.
#include "tests/grid/widgets/grid_fixture.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

namespace vh::test {
namespace {

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
