#include "grid/row_engine.h"

#include "grid/distinct_interner.h"
#include "grid/sort_compare.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

namespace vh {
namespace {

using test::TextTable;

// The naive comparison, converting both texts inside every call.
int NaiveCompare(int type, int direction, const std::string& a, const std::string& b) {
  switch (type) {
  case 1: {
    const int64_t d = int64_t(std::atoi(b.c_str())) - std::atoi(a.c_str());
    return direction * ((d > 0) - (d < 0));
  }
  case 2:
  case 5: {
    const double d = direction * (std::atof(b.c_str()) - std::atof(a.c_str()));
    return (d > 0) - (d < 0);
  }
  case 3:
    return direction * std::strcmp(b.c_str(), a.c_str());
  case 4: {
    const long x = std::atol(a.c_str()), y = std::atol(b.c_str());
    return direction * ((y > x) - (y < x));
  }
  }
  return 0;
}

struct SortFixture : ::testing::Test {
  TextTable table;
  RowEngine engine;
  void SetUp() override {
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    engine.SetColumns(test::Columns({1, 2, 3, 4, 5, 6}), 6);
  }
  std::vector<std::string> ColumnAsShown(int column) {
    std::vector<std::string> texts;
    for (int p = 0; p < engine.DisplayedCount(); ++p)
      texts.push_back(table.rows[engine.GetItemData(p) - 1][size_t(column)]);
    return texts;
  }
};

TEST_F(SortFixture, EveryKeyTypeAgreesWithTheConvertingComparison) {
  std::mt19937 rng(7);
  for (int round = 0; round < 40; ++round) {
    table.rows.clear();
    for (int r = 0; r < 300; ++r) {
      std::vector<std::string> row;
      for (int c = 0; c < 5; ++c)
        row.push_back(test::RandomText(rng, c == 2 ? "aAbB \x80" : " -+.0123456789e", 5));
      row.push_back("");
      table.rows.push_back(row);
    }
    engine.DeleteAllItems();
    engine.SetReverseDisplay(round % 2 == 1);
    engine.SetViewDataSource(round % 4 < 2 ? &TextTable::View : nullptr, &table);
    test::LoadRows(engine, table);
    if (round % 3 == 0)
      engine.SetFilter(2, "a~b", false); // sort a filtered subset too
    for (int column = 0; column < 5; ++column) {
      for (int click = 0; click < 2; ++click) {
        SCOPED_TRACE("round " + std::to_string(round) + " column " + std::to_string(column) +
                     " click " + std::to_string(click));
        std::vector<uint64_t> before, after;
        for (int p = 0; p < engine.DisplayedCount(); ++p)
          before.push_back(engine.GetItemData(p));
        engine.SortOnColumn(column);
        ASSERT_EQ(engine.SortDirection(), click == 0 ? -1 : 1);
        const std::vector<std::string> shown = ColumnAsShown(column);
        // Ties may fall in any order: neighbours must compare in order.
        for (size_t i = 1; i < shown.size(); ++i)
          ASSERT_LE(NaiveCompare(column + 1, engine.SortDirection(), shown[i - 1], shown[i]), 0)
              << "'" << shown[i - 1] << "' before '" << shown[i] << "'";
        for (int p = 0; p < engine.DisplayedCount(); ++p)
          after.push_back(engine.GetItemData(p));
        std::sort(before.begin(), before.end());
        std::sort(after.begin(), after.end());
        ASSERT_EQ(after, before); // the same rows, none lost or doubled
      }
    }
  }
}

// Which way a click sorts and the marks it sets meet the header in the
// widget tests; these are the rules a header click cannot show.
TEST_F(SortFixture, DatesLatestFirstAndADeletionStartsTheClicksOver) {
  table.rows = {{"3", "", "", "", "", "15/03/2023"},
                {"1", "", "", "", "", "01/12/2024"},
                {"2", "", "", "", "", "30/06/2024"}};
  test::LoadRows(engine, table);
  engine.SortOnColumn(5);
  EXPECT_EQ(ColumnAsShown(5), (std::vector<std::string>{"01/12/2024", "30/06/2024", "15/03/2023"}));
  engine.SortOnColumn(0);
  engine.SortOnColumn(0); // descending: row "3" on top
  engine.DeleteItem(0);   // forgets the previous column: the next click starts over
  EXPECT_EQ(engine.PreviousSortColumn(), -1);
  engine.SortOnColumn(0);
  EXPECT_EQ(engine.SortDirection(), -1);
  EXPECT_EQ(ColumnAsShown(0), (std::vector<std::string>{"1", "2"}));
}

// Text ranks decide text sorts and distinct values: numbers must follow
// byte equality, ranks unsigned byte order, at every length the hash reads.
TEST(SortKeys, InternedTextsAndRanks) {
  std::mt19937 rng(17);
  TextInterner interner;
  std::map<std::string, uint32_t> reference;
  for (int i = 0; i < 5000; ++i) {
    const std::string text = test::RandomText(rng, std::string("ab\x80\0", 4), 19);
    const auto [it, added] = reference.emplace(text, uint32_t(reference.size()));
    ASSERT_EQ(interner.Intern(text), it->second) << "new " << added;
  }
  ASSERT_EQ(interner.Size(), reference.size());
  const std::vector<uint32_t> rank = interner.Ranks();
  uint32_t expected = 0;
  for (const auto& [text, id] : reference) { // std::map orders bytes unsigned
    EXPECT_EQ(interner.Text(id), text);
    EXPECT_EQ(rank[id], expected++);
  }
}

TEST(SortCompare, DatesAndTimes) {
  const struct {
    const char* name;
    const char* a;
    const char* b;
    int result; // with direction 1; a positive result puts a after b
  } cases[] = {
      {"slash date later year", "01/01/2024", "31/12/2023", 1},
      {"slash date month before day", "01/02/2024", "28/01/2024", 1},
      {"dash date earlier", "01-01-2023", "02-01-2023", -1},
      {"date then time", "05/06/2024 10:00:01", "05/06/2024 09:59:59", 1},
      {"different lengths by bytes", "1/1/2024", "01/01/2023", -1},
      {"AM before PM", "11:00:00 AM", "01:00:00 PM", -1},
      {"time same half", "10:15:00", "10:14:59", 1},
      {"a time reads its first eight characters", "09:00:00 11:00:00", "10:00:00 08:00:00", -1},
      {"a date's time reads its last eight", "05/06/2024 09:00:00 10:00:00",
       "05/06/2024 10:00:00 09:00:00", 1},
      {"fixed layout year", "01Jan2024", "31Dec2023", 1},
      {"fixed layout month", "01Mar2024", "31Feb2024", 1},
      {"unknown month is zero", "01Foo2024", "01Jan2024", -1},
      {"short texts are all equal", "ab", "cd", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(CompareDateTime(c.a, c.b, 1), c.result);
    EXPECT_EQ(CompareDateTime(c.a, c.b, -1), -c.result);
  }
}

TEST_F(SortFixture, LargestRowsAndEmptyGrid) {
  engine.SortOnColumn(0); // no rows: nothing happens
  EXPECT_EQ(engine.SortColumn(), -1);
  std::mt19937 rng(3);
  for (int r = 0; r < 500; ++r)
    table.rows.push_back({"", test::RandomText(rng, "0123456789.", 6), "", "", "", ""});
  test::LoadRows(engine, table);
  const std::vector<int32_t> top = engine.LargestRows(1, 10);
  ASSERT_EQ(top.size(), 10u);
  std::vector<double> all;
  for (const auto& row : table.rows)
    all.push_back(std::atof(row[1].c_str()));
  std::sort(all.rbegin(), all.rend());
  for (size_t i = 0; i < top.size(); ++i)
    EXPECT_EQ(std::atof(table.rows[size_t(top[i])][1].c_str()), all[i]);
  EXPECT_TRUE(engine.LargestRows(42, 10).empty());
  EXPECT_EQ(engine.LargestRows(1, 10000).size(), 500u);
}

} // namespace
} // namespace vh
