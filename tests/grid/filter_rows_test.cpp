#include "grid/row_engine.h"

#include "common/message.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace vh {
namespace {

using test::TextTable;

// The naive matcher: the C library, no index, no shortcuts.
std::string Lower(std::string s) {
  for (char& c : s)
    c = char(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool NaiveAlternative(const std::string& alt, const std::string& cell, bool exact) {
  if (exact)
    return Lower(alt) == Lower(cell);
  if (alt[0] == '*' && alt[alt.size() - 1] == '*') {
    const std::string mid = alt.size() >= 2 ? alt.substr(1, alt.size() - 2) : "";
    return Lower(cell).find(Lower(mid)) != std::string::npos;
  }
  if (alt[0] == '*') {
    const size_t n = alt.size() - 1;
    const std::string tail = cell.size() >= n ? cell.substr(cell.size() - n) : cell;
    return Lower(tail) == Lower(alt.substr(1));
  }
  if (alt[0] == '>' || alt[0] == '<') {
    double c = 0, f = 0;
    if (std::sscanf(cell.c_str(), "%lf", &c) != 1 || std::sscanf(alt.c_str() + 1, "%lf", &f) != 1)
      return false;
    return alt[0] == '>' ? c > f : c < f;
  }
  return cell.size() >= alt.size() && Lower(cell.substr(0, alt.size())) == Lower(alt);
}

bool NaiveMatch(const std::string& filter, const std::string& cell, bool exact) {
  std::vector<std::string> alts;
  std::string piece;
  for (char c : filter + "~") {
    if (c != '~') {
      piece += c;
    } else if (!piece.empty()) {
      alts.push_back(piece);
      piece.clear();
    }
  }
  if (alts.empty())
    return true;
  for (const std::string& alt : alts)
    if (NaiveAlternative(alt, cell, exact))
      return true;
  return false;
}

struct FilterFixture : ::testing::Test {
  TextTable table;
  RowEngine engine;
  void SetUp() override {
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    engine.SetColumns(test::Columns({3, 2, 3}), 3);
  }
  std::vector<uint64_t> Shown() {
    std::vector<uint64_t> items;
    for (int p = 0; p < engine.DisplayedCount(); ++p)
      items.push_back(engine.GetItemData(p));
    return items;
  }
};

TEST_F(FilterFixture, RandomFiltersAgreeWithADirectScan) {
  std::mt19937 rng(99);
  const char* const pieces[] = {"a",  "AB", "*b*", "*c", ">5", "<-2.5", "~",     "",
                                "b~", "*",  "x",   "**", "<5", ">abc",  "*ABCD", "<0x1"};
  auto randomFilter = [&] {
    std::string f;
    for (int k = std::uniform_int_distribution<int>(0, 2)(rng); k >= 0; --k)
      f += pieces[std::uniform_int_distribution<size_t>(0, std::size(pieces) - 1)(rng)];
    return f;
  };
  for (int round = 0; round < 200; ++round) {
    table.rows.clear();
    for (int r = 0; r < 60; ++r)
      table.rows.push_back({test::RandomText(rng, "abcABC ", 4),
                            test::RandomText(rng, "-.0123456789ex ", 4),
                            test::RandomText(rng, "bcxBX*>~", 3)});
    engine.DeleteAllItems();
    engine.SetViewDataSource(round % 2 ? &TextTable::View : nullptr, &table);
    test::LoadRows(engine, table);
    engine.SetItemData(3, 0); // a row without data never passes
    const bool exact = round % 4 == 0;
    const std::string f0 = randomFilter(), f1 = randomFilter(), f2 = randomFilter();
    engine.RestoreFilters({0, 1, 2}, {f0, f1, f2});
    engine.SetFilter(0, f0, exact);
    std::vector<uint64_t> want;
    for (size_t r = 0; r < table.rows.size(); ++r) {
      const auto& row = table.rows[r];
      if (r != 3 && NaiveMatch(f0, row[0], exact) && NaiveMatch(f1, row[1], exact) &&
          NaiveMatch(f2, row[2], exact))
        want.push_back(r + 1);
    }
    ASSERT_EQ(Shown(), want) << "filters \"" << f0 << "\" \"" << f1 << "\" \"" << f2 << "\"";
  }
}

struct HeaderLog : RowEngineObserver {
  std::vector<std::pair<int, std::string>> writes;
  int clears = 0;
  int filtered = -1;
  void OnHeaderFilterText(int item, std::string_view text) override {
    writes.emplace_back(item, std::string(text));
  }
  void OnClearHeaderFilters() override { ++clears; }
  void OnFiltered(int count) override { filtered = count; }
};

TEST_F(FilterFixture, HiddenColumnFilterClearsTheFirstShownColumn) {
  table.rows = {{"ab", "1", "x"}, {"ac", "7", "y"}, {"b", "9", "x"}};
  test::LoadRows(engine, table);
  engine.SetColumns(test::Columns({3, 2, 3}), 3, {0, 1, -1});
  HeaderLog log;
  engine.SetObserver(&log);
  engine.SetFilter(0, "a", false);
  engine.SetFilter(1, ">5", false);
  EXPECT_EQ(Shown(), (std::vector<uint64_t>{2}));
  engine.SetFilter(2, "x", false);
  EXPECT_EQ(engine.FilterColumns(), (std::vector<int32_t>{1, 2}));
  EXPECT_EQ(Shown(), (std::vector<uint64_t>{3}));
  ASSERT_FALSE(log.writes.empty());
  EXPECT_EQ(log.writes.back(), (std::pair<int, std::string>{0, ""}));
  engine.ResetFilters();
  EXPECT_EQ(log.clears, 1);
  EXPECT_TRUE(engine.FilterColumns().empty());
  EXPECT_EQ(log.filtered, 3);
}

// Filter arrays of unequal length show nothing and say so; with no column in
// the header, or no data source, a pass filters nothing.
TEST_F(FilterFixture, PassesThatCannotFilter) {
  table.rows = {{"a", "1", ""}, {"b", "2", ""}};
  test::LoadRows(engine, table);
  HeaderLog log;
  engine.SetObserver(&log);
  ScopedMessageRecorder messages;
  engine.RestoreFilters({0, 1}, {"a"});
  engine.Filter();
  EXPECT_EQ(messages.messages(), (std::vector<std::string>{"Error occured while filtering"}));
  EXPECT_EQ(engine.DisplayedCount(), 0);
  EXPECT_EQ(log.filtered, 0);
  engine.OnHeaderFilterChanged(1, "zzz"); // must not touch a text that is not there
  EXPECT_EQ(engine.FilterTexts().size(), 1u);

  engine.ResetFilters();
  engine.SetColumns(test::Columns({3, 2, 3}), 3, {-1, -1, -1});
  engine.RestoreFilters({0}, {"a"});
  engine.Filter();
  EXPECT_EQ(engine.DisplayedCount(), 2);
  RowEngine bare;
  bare.SetColumns(test::Columns({3}), 1);
  bare.Filter();
  EXPECT_EQ(bare.DisplayedCount(), 0);
}

} // namespace
} // namespace vh
