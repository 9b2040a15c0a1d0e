// The key caches at the edges of their keys and in check mode. Everything
// else they do meets the uncached engine in the random comparison; how much
// they save and cost is the benchmark's to show.
#include "common/message.h"
#include "grid/row_custom_formula.h"
#include "grid/row_engine.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>

namespace vh {
namespace {

using test::TextTable;

// The same rows in an engine with key caches and in one without; custom
// columns follow the data columns.
struct Twins {
  TextTable table;
  RowEngine cached, plain;
  Twins(std::vector<std::vector<std::string>> rows, std::vector<int32_t> types,
        std::vector<std::string> expressions = {}) {
    table.rows = std::move(rows);
    auto columns = test::Columns(types);
    const int data = int(types.size() - expressions.size());
    for (size_t k = 0; k < expressions.size(); ++k)
      columns[size_t(data) + k].strExpression = expressions[k];
    for (RowEngine* e : {&cached, &plain}) {
      e->SetOwnerDataSource(&TextTable::Fetch, &table);
      e->SetColumns(columns, data);
      e->SetCustomColumnCompiler(&CompileRowFormula);
      test::LoadRows(*e, table);
    }
    plain.SetKeyCacheLimit(0);
    cached.SetKeyCacheCheck(true);
  }
  static std::vector<std::vector<std::string>> OneColumn(const std::vector<std::string>& cells) {
    std::vector<std::vector<std::string>> rows;
    for (const std::string& cell : cells)
      rows.push_back({cell});
    return rows;
  }
  template <typename Step> void Both(Step step) {
    step(cached);
    step(plain);
  }
  void ExpectSameRows(const std::string& what) {
    SCOPED_TRACE(what);
    ASSERT_EQ(cached.DisplayedCount(), plain.DisplayedCount());
    for (int p = 0; p < plain.DisplayedCount(); ++p)
      EXPECT_EQ(cached.GetItemData(p), plain.GetItemData(p)) << "position " << p;
  }
};

// Number columns filtered with ">"/"<" compare keys only when every cell
// reads with "%lf" as its key's number, through ranges of keys; the bounds
// here sit on the edges of those ranges. Texts of up to 8 bytes are kept in
// their keys; the first longer one makes the column number its texts
// instead. Each case sorts, lists and filters twice, the second time after
// row 0 took a text that may change the column's kind. Ordinary cells and
// filters meet the uncached engine in the random comparison.
TEST(KeyCache, KeyEdgesAgreeWithTheUncachedEngine) {
  using namespace std::string_literals;
  const std::vector<std::string> kBounds = {
      ">2.5", "<-2.5", ">-0",  "<0",     ">1e10",        "<-1e10",     ">inf",
      "<inf", ">-inf", ">nan", ">2~<-2", "<-2147483648", ">2147483646"};
  const std::vector<std::string> kTextFilters = {
      "abcdefgh", "*h", "A", "*\x80*", "z", "Z", "[", "`", "@", "{", "\xE1", "\xC1", "zx~@"};
  const struct {
    const char* name;
    int type;
    std::vector<std::string> cells;
    const std::vector<std::string>& filters;
    std::string laterText; // written into row 0 after the first round
  } cases[] = {
      {"hexadecimal prefix without digits", 2, {"0x", "0x1A", "1"}, kBounds, "0x"},
      {"long column near its limits",
       4,
       {"9223372036854775807", "-9223372036854775808", "1"},
       kBounds,
       "1e19"},
      {"integers", 1, {"-3", "-2", "0", "2", "3", "2147483647", "-2147483648"}, kBounds, "2.5"},
      {"decimals",
       2,
       {"-0.0", "0", "1.5", "-1.5", "2.5", "inf", "-inf", "nan", "1e300"},
       kBounds,
       "abc"},
      {"eight bytes at most",
       3,
       {"abcdefgh", "abcdefg", "ABCDEFGH", "abc", "", "b"},
       kTextFilters,
       "zz"},
      {"one of nine bytes",
       3,
       {"abcdefghi", "abcdefgh", "abcdefghj", "a", "abcdefgh"},
       kTextFilters,
       "a"},
      {"zero and high bytes",
       3,
       {"a\0"s, "a", "a\0\0"s, "\x80", "\x7f", "a\x80"},
       kTextFilters,
       "\0"s},
      {"a longer text arrives later",
       3,
       {"one", "two", "three", "t"},
       kTextFilters,
       "twenty-three"},
      {"a shorter text arrives later", 3, {"eleven char", "two", "t"}, kTextFilters, "t"},
      {"case folding at the letter edges",
       3,
       {"@x", "Ax", "Zx", "[x", "`x", "ax", "zx", "{x", "\xC1x", "\xDAx", "\xE1x"},
       kTextFilters,
       "ZX"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Twins twins(Twins::OneColumn(c.cells), {c.type});
    for (int round = 0; round < 2; ++round) {
      twins.Both([](RowEngine& e) { e.SortOnColumn(0); });
      twins.ExpectSameRows("sorted");
      EXPECT_EQ(twins.cached.DistinctValues(0), twins.plain.DistinctValues(0));
      for (const std::string& filter : c.filters) {
        twins.Both([&](RowEngine& e) { e.SetFilter(0, filter, false); });
        twins.ExpectSameRows(filter);
      }
      twins.Both([](RowEngine& e) { e.ResetFilters(); });
      twins.table.rows[0][0] = c.laterText;
      twins.cached.RowChanged(0);
    }
  }
}

// Custom cells are kept as numbers; their texts are made again from them.
TEST(KeyCache, CustomTextsMadeFromKeptValuesEqualTheComputedOnes) {
  std::mt19937 rng(11);
  std::vector<std::vector<std::string>> rows;
  std::uniform_int_distribution<int> exponent(-6, 18);
  std::uniform_real_distribution<double> mantissa(-10, 10);
  char text[64];
  for (int r = 0; r < 3000; ++r) {
    std::snprintf(text, sizeof text, "%.17g", mantissa(rng) * std::pow(10.0, exponent(rng)));
    rows.push_back({text, r % 3 == 0 ? "0.005" : (r % 3 == 1 ? "-1" : "100")});
  }
  Twins twins(rows, {2, 2, 2}, {" \"0\"*\"1\""});
  for (int pass = 0; pass < 2; ++pass) {
    std::vector<std::string> texts[2];
    int i = 0;
    twins.Both([&](RowEngine& e) {
      e.VisitColumnTexts(2, [&](int, std::string_view t) { texts[i].emplace_back(t); });
      ++i;
    });
    ASSERT_EQ(texts[0].size(), rows.size());
    ASSERT_EQ(texts[0], texts[1]) << "pass " << pass;
  }
}

struct CacheFixture : ::testing::Test {
  TextTable table;
  RowEngine engine;
  std::vector<std::pair<int, int>> mismatches;

  // Columns: 0 integer, 1 decimal, 2 text, 3 custom "0"*"1", 4 custom "3"+"0".
  void SetUp() override {
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    auto columns = test::Columns({1, 2, 3, 2, 2});
    columns[3].strExpression = " \"0\"*\"1\"";
    columns[4].strExpression = " \"3\"+\"0\"";
    engine.SetColumns(columns, 3);
    engine.SetCustomColumnCompiler(&CompileRowFormula);
    for (int r = 0; r < 40; ++r)
      table.rows.push_back(
          {std::to_string(r % 7), std::to_string(r) + ".5", "t" + std::to_string(r % 5)});
    test::LoadRows(engine, table);
    engine.SetKeyCacheCheck(true);
    engine.SetKeyMismatchHandler([this](int c, int d) { mismatches.emplace_back(c, d); });
  }
  void Touch(int column) { engine.LargestRows(column, 1); }
};

TEST_F(CacheFixture, CheckModeReportsChangesTheOwnerDidNotAnnounce) {
  const struct {
    const char* name;
    int column;
    int passColumn; // the pass that must notice
    bool announce;
  } cases[] = {
      {"integer cell, silent", 0, 0, false},
      {"text cell, silent", 2, 2, false},
      {"input of a custom column, silent", 1, 3, false},
      {"input of a custom column of a custom column, silent", 0, 4, false},
      {"integer cell, row announced", 0, 0, true},
      {"input of a custom column, row announced", 1, 4, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    engine.AllRowsChanged();
    Touch(c.passColumn);
    mismatches.clear();
    const int d = 17;
    table.rows[engine.ItemDataOfIndex(d) - 1][size_t(c.column)] += "1";
    if (c.announce)
      engine.RowChanged(d);
    Touch(c.passColumn);
    if (c.announce) {
      EXPECT_TRUE(mismatches.empty());
    } else {
      ASSERT_EQ(mismatches.size(), 1u);
      EXPECT_EQ(mismatches[0], std::make_pair(c.passColumn, d));
    }
  }
}

} // namespace
} // namespace vh
