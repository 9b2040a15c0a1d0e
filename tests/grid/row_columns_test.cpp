// The engine calls the grid widgets make: where an inserted row lands, the
// starting sort state, and one column added or removed after set-up.
#include "grid/row_engine.h"

#include "grid/custom_column.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

namespace vh {
namespace {

using test::TextTable;

struct Landings : RowEngineObserver {
  std::vector<int> rows;
  void OnRowInsertedAt(int, std::string_view, int displayRow) override {
    rows.push_back(displayRow);
  }
};

TEST(RowColumns, InsertedRowsSayWhereTheyLanded) {
  const struct {
    const char* name;
    bool reverse;
    std::vector<int> positions;
    std::vector<int> landed;
  } cases[] = {
      {"appendsAtTheEnd", false, {0, 0, 0}, {0, 1, 2}},
      {"reverseShowsOnTop", true, {0, 0, 0}, {0, 0, 0}},
      {"insertionPoint", false, {0, 0, 0, 1}, {0, 1, 2, 1}},
      {"insertionPointMirrored", true, {0, 0, 0, 1}, {0, 0, 0, 2}},
      {"pastTheEndAppends", false, {0, 7}, {0, 1}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TextTable table;
    RowEngine engine;
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    engine.SetColumns(test::Columns({3}), 1);
    engine.SetReverseDisplay(c.reverse);
    Landings log;
    engine.SetObserver(&log);
    for (int p : c.positions)
      engine.InsertItem(p, "");
    EXPECT_EQ(log.rows, c.landed);
  }
}

TEST(RowColumns, SortStateAtSetUpMakesTheFirstClickReverse) {
  TextTable table;
  table.rows = {{"b"}, {"a"}, {"c"}};
  RowEngine engine;
  engine.SetOwnerDataSource(&TextTable::Fetch, &table);
  engine.SetColumns(test::Columns({3}), 1);
  test::LoadRows(engine, table);
  engine.SetSortState(0);
  EXPECT_EQ(engine.PreviousSortColumn(), 0);
  engine.SortOnColumn(0);
  EXPECT_EQ(engine.SortDirection(), 1);
  EXPECT_EQ(engine.GetItemText(0, 0), "c");
}

TEST(RowColumns, AppendedAndDeletedColumnsKeepFiltersAndFormulas) {
  TextTable table;
  table.rows = {{"1", "2", "x"}, {"3", "4", "y"}};
  RowEngine engine;
  engine.SetOwnerDataSource(&TextTable::Fetch, &table);
  engine.SetCustomColumnCompiler(&CompileCustomColumn);
  engine.SetColumns(test::Columns({1, 1, 3}), 3);
  test::LoadRows(engine, table);
  sTarnColInfo sum;
  sum.SetName("sum");
  sum.strExpression = " \"0\"+\"1\"";
  sTarnColInfo product = sum;
  product.SetName("product");
  product.strExpression = " \"0\"*\"1\"";
  EXPECT_EQ(engine.AppendColumn(sum), 3);
  EXPECT_EQ(engine.AppendColumn(product), 4);
  EXPECT_EQ(engine.HeaderItemCount(), 5);
  EXPECT_EQ(engine.GetItemText(1, 4), "12.00");

  engine.SetFilter(4, ">5", false);
  engine.SetFilter(2, "y", false);
  ASSERT_EQ(engine.DisplayedCount(), 1);
  const struct {
    const char* name;
    int headerItem;
    bool deleted;
    std::vector<int32_t> filterColumns;
    std::vector<std::string> headings;
  } cases[] = {
      {"customGoesLaterFilterFollows", 3, true, {3, 2}, {"col0", "col1", "col2", "product"}},
      {"dataColumnIsHiddenItsFilterGoes", 2, true, {3}, {"col0", "col1", "product"}},
      {"nothingThere", 5, false, {3}, {"col0", "col1", "product"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(engine.DeleteHeaderColumn(c.headerItem), c.deleted);
    EXPECT_EQ(engine.FilterColumns(), c.filterColumns);
    std::vector<std::string> headings;
    for (int h = 0; h < engine.HeaderItemCount(); ++h)
      headings.emplace_back(engine.ColumnInfo(engine.DataColumnAt(h))->Name());
    EXPECT_EQ(headings, c.headings);
    EXPECT_EQ(engine.FilterColumns().size(), engine.FilterTexts().size());
  }
  engine.Filter();
  EXPECT_EQ(engine.DisplayedCount(), 1);
  EXPECT_EQ(engine.GetItemText(0, 2), "12.00"); // still compiled, now at item 2
  EXPECT_EQ(engine.ColumnPosition(2), -1);
}

} // namespace
} // namespace vh
