// Custom columns that refer to themselves or reach one another in a ring,
// met by everything the engine does with a column: showing, sorting,
// filtering, the largest rows and the distinct values. The rows all stay,
// nothing on the ring is ever written, and the sound columns beside the
// ring keep computing.
#include "common/message.h"
#include "grid/custom_column.h"
#include "grid/row_engine.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vh {
namespace {

using test::TextTable;

struct Path {
  const char* name;
  CustomColumnCompiler compiler;
};

class EngineCycles : public ::testing::TestWithParam<Path> {};

// Data columns: name, quantity, price. Custom columns from 3 on.
constexpr int kDataColumns = 3;

TEST_P(EngineCycles, RingsStayBlankAndEverythingElseWorks) {
  const struct {
    const char* name;
    std::vector<std::string> custom; // stored expressions of columns 3, 4, ...
    std::vector<int> ring;           // custom columns on or behind a ring
  } cases[] = {
      {"itself", {R"( "3"+1)", R"( "1"*"2")"}, {3}},
      {"two columns", {R"( "4"+1)", R"( "3"*2)", R"( "1"*"2")"}, {3, 4}},
      {"three columns", {R"( "4")", R"( "5")", R"( "3"-1)", R"( "1"*"2")"}, {3, 4, 5}},
      {"chain into a ring", {R"( "4"*2)", R"( "5")", R"( "4")", R"( "1"*"2")"}, {3, 4, 5}},
      {"ring behind data", {R"( "1"*"4")", R"( "2"+"3")", R"( "1"*"2")"}, {3, 4}},
      {"ring behind a division", {R"( 4/"4")", R"( "3"+1)", R"( "1"*"2")"}, {3, 4}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TextTable table;
    table.rows = {{"a", "2", "10"}, {"b", "3", "5"}, {"c", "-4", "1"}, {"d", "7", "2"}};
    RowEngine engine;
    ScopedMessageRecorder messages;
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    auto columns = test::Columns(std::vector<int32_t>(kDataColumns + c.custom.size(), 2));
    for (size_t k = 0; k < c.custom.size(); ++k)
      columns[kDataColumns + k].strExpression = c.custom[k];
    engine.SetColumns(columns, kDataColumns);
    engine.SetCustomColumnCompiler(GetParam().compiler);
    test::LoadRows(engine, table);
    const int rows = int(table.rows.size());
    const int sound = engine.ColumnCount() - 1; // quantity times price

    for (int column : c.ring) {
      for (int row = 0; row < rows; ++row)
        EXPECT_EQ(engine.GetItemText(row, column), "") << "column " << column << " row " << row;
      engine.SortOnColumn(column);
      EXPECT_EQ(engine.DisplayedCount(), rows);
      engine.SortOnColumn(column); // and the other way
      EXPECT_EQ(engine.DisplayedCount(), rows);
      std::vector<int> seen;
      for (int row = 0; row < rows; ++row)
        seen.push_back(engine.DataIndexAt(row));
      std::sort(seen.begin(), seen.end());
      EXPECT_EQ(seen, (std::vector<int>{0, 1, 2, 3})) << "sorting lost or repeated a row";
      EXPECT_EQ(engine.LargestRows(column, 2).size(), 2u);
      EXPECT_TRUE(engine.DistinctValues(column).empty());
      engine.SetFilter(column, ">0", false);
      EXPECT_EQ(engine.DisplayedCount(), 0) << "a blank cell passed a numeric filter";
      engine.ResetFilters();
      EXPECT_EQ(engine.DisplayedCount(), rows);
    }
    engine.SetFilter(sound, ">10", false);
    EXPECT_EQ(engine.DisplayedCount(), 3); // all but -4.00
    engine.ResetFilters();
    engine.SortOnColumn(sound);
    std::vector<std::string> products;
    for (int row = 0; row < rows; ++row)
      products.push_back(engine.GetItemText(row, sound));
    std::sort(products.begin(), products.end());
    EXPECT_EQ(products, (std::vector<std::string>{"-4.00", "14.00", "15.00", "20.00"}));
    EXPECT_TRUE(messages.messages().empty());
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, EngineCycles,
                         ::testing::Values(Path{"Compiled", CompileCustomColumn},
                                           Path{"Text", TextCustomColumn}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vh
