// Two engines over the same rows, one with key caches in check mode and one
// with caching off, take the same random changes and passes; every result
// (rows shown and their order, top rows, distinct values, column texts,
// messages) must be identical.
#include "common/message.h"
#include "grid/row_custom_formula.h"
#include "grid/row_engine.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <bit>
#include <random>

namespace vh {
namespace {

using test::TextTable;

constexpr int kDataColumns = 8;
const char* const kExpressions[] = {
    " \"0\"*\"1\"",       // integer times decimal
    " \"8\"+\"3\"",       // a custom column and a long one
    " \"1\"/\"0\"",       // zero divisors
    " \"4\"-\"2\"",       // decimal minus text: mostly "0"
    " \"12\"+\"0\"",      // a cycle through itself
    " \"6\" \"1\"",       // leftover operands: a message per computed cell
    " \"6\"/\"3\"-\"3\"", // one column read twice, texts the formula reads its own way
};
constexpr int kColumnCount = kDataColumns + int(std::size(kExpressions));

std::string RandomCell(std::mt19937& rng, int column) {
  static const char* const kDates[] = {"01/02/2024",
                                       "12/11/2023",
                                       "01-02-2024 10:15:00",
                                       "10:15:00 AM",
                                       "09:01:59 PM",
                                       "01Jan2024",
                                       "15Mar2023",
                                       "",
                                       "7"};
  switch (column) {
  case 2: // texts kept in their keys
    return test::RandomText(rng, "aAbB ~*", 3);
  case 7: // now and then a text too long for a key
    return test::RandomText(rng, "aAbB ~*", 9);
  case 5:
    return kDates[std::uniform_int_distribution<size_t>(0, std::size(kDates) - 1)(rng)];
  case 6: // plain integers, some past 32 bits: every cell reads as a number
    return std::string(std::uniform_int_distribution<int>(0, 3)(rng) == 0 ? "-" : "") +
           test::RandomText(rng, "0123456789", 11) + "7";
  case 4: { // plain decimals: every cell reads as a number
    std::uniform_int_distribution<int> number(-2000, 2000);
    return std::to_string(number(rng)) + "." + std::to_string(number(rng) & 63);
  }
  default: {
    // Texts the formula and the comparisons read differently.
    static const char* const kOdd[] = {"nan",  "-inf", "---",  "",         "1e3", " 5",
                                       "5abc", "-0",   "0x1A", "1,000.50", "-.5", "+7"};
    if (std::uniform_int_distribution<int>(0, 3)(rng) == 0)
      return kOdd[std::uniform_int_distribution<size_t>(0, std::size(kOdd) - 1)(rng)];
    return test::RandomText(rng, " -+.0123456789eEx", 5);
  }
  }
}

std::vector<std::string> RandomRow(std::mt19937& rng) {
  std::vector<std::string> row;
  for (int c = 0; c < kDataColumns; ++c)
    row.push_back(RandomCell(rng, c));
  // Now and then a record the source cannot give every cell of.
  if (std::uniform_int_distribution<int>(0, 11)(rng) == 0)
    row.resize(std::uniform_int_distribution<size_t>(0, kDataColumns - 1)(rng));
  return row;
}

struct Twin {
  TextTable table;
  RowEngine cached;
  RowEngine plain;
  std::vector<std::string> cachedMessages, plainMessages;

  Twin(bool viewSource, bool reverse, size_t cacheLimit) {
    std::vector<int32_t> types = {1, 2, 3, 4, 5, 6, 1, 3};
    const int32_t customTypes[] = {2, 2, 3, 1, 2, 2, 2};
    types.insert(types.end(), std::begin(customTypes), std::end(customTypes));
    auto columns = test::Columns(types);
    for (size_t i = 0; i < std::size(kExpressions); ++i)
      columns[kDataColumns + i].strExpression = kExpressions[i];
    for (RowEngine* e : {&cached, &plain}) {
      e->SetOwnerDataSource(&TextTable::Fetch, &table);
      if (viewSource)
        e->SetViewDataSource(&TextTable::View, &table);
      e->SetColumns(columns, kDataColumns);
      e->SetCustomColumnCompiler(&CompileRowFormula);
      e->SetReverseDisplay(reverse);
    }
    plain.SetKeyCacheLimit(0);
    cached.SetKeyCacheLimit(cacheLimit);
    cached.SetKeyCacheCheck(true);
    cached.SetKeyMismatchHandler([](int column, int dataIndex) {
      ADD_FAILURE() << "cached key of column " << column << " at " << dataIndex << " is stale";
    });
  }

  // Runs `step` on both engines, recording the messages of each.
  template <typename Step> void Both(Step step) {
    {
      ScopedMessageRecorder recorder;
      step(cached);
      cachedMessages = recorder.messages();
    }
    {
      ScopedMessageRecorder recorder;
      step(plain);
      plainMessages = recorder.messages();
    }
    ASSERT_EQ(cachedMessages, plainMessages);
  }

  std::vector<uint64_t> Shown(RowEngine& e) {
    std::vector<uint64_t> items;
    for (int p = 0; p < e.DisplayedCount(); ++p)
      items.push_back(e.GetItemData(p));
    return items;
  }
};

std::string RandomFilter(std::mt19937& rng) {
  static const char* const kFilters[] = {">5",  "<0",  ">1~<-1", "a",   "*b*", "*B",   "1",
                                         "~",   ">x",  "",       "0x",  "-",   ">1e3", "<.5",
                                         "*0*", "Div", "0.00",   ">-1", "01",  "10:"};
  return kFilters[std::uniform_int_distribution<size_t>(0, std::size(kFilters) - 1)(rng)];
}

void RunScenario(uint32_t seed, bool viewSource, bool reverse, size_t cacheLimit) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 rng(seed);
  Twin twin(viewSource, reverse, cacheLimit);
  for (int r = 0; r < 120; ++r)
    twin.table.rows.push_back(RandomRow(rng));
  twin.Both([&](RowEngine& e) { test::LoadRows(e, twin.table); });
  const auto pick = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(rng); };

  for (int step = 0; step < 300; ++step) {
    const int what = pick(15);
    const int column = pick(kColumnCount + 1) - (pick(8) == 0 ? 1 : 0); // sometimes unknown
    if (what == 0 && twin.cached.RowCount() > 0) {
      // A record changes and its owner says so.
      const int d = pick(int(twin.cached.RowCount()));
      const int c = pick(kDataColumns);
      const uint64_t item = twin.cached.ItemDataOfIndex(d);
      if (item != 0 && size_t(c) < twin.table.rows[item - 1].size())
        twin.table.rows[item - 1][size_t(c)] = RandomCell(rng, c);
      twin.Both([&](RowEngine& e) { e.RowChanged(d); });
    } else if (what == 1) {
      twin.table.rows.push_back(RandomRow(rng));
      const int position = pick(int(twin.cached.RowCount()) + 2);
      const uint64_t item = twin.table.rows.size();
      const bool giveData = pick(4) != 0; // some rows keep zero item data for a while
      twin.Both([&](RowEngine& e) {
        const int at = e.InsertItem(position, "");
        if (giveData)
          e.SetItemData(at, item);
      });
    } else if (what == 2 && twin.cached.DisplayedCount() > 0) {
      const int position = pick(twin.cached.DisplayedCount());
      twin.Both([&](RowEngine& e) { e.DeleteItem(position); });
    } else if (what == 3 && twin.cached.RowCount() > 0) {
      const int d = pick(int(twin.cached.RowCount()));
      twin.Both([&](RowEngine& e) { e.DeleteItemByDataIndex(d); });
    } else if (what == 4) {
      // A custom column gets a new definition.
      const int custom = kDataColumns + pick(int(std::size(kExpressions)));
      sTarnColInfo info = *twin.cached.ColumnInfo(custom);
      info.strExpression = kExpressions[pick(int(std::size(kExpressions)))];
      info.nType = 1 + pick(5);
      twin.Both([&](RowEngine& e) { e.SetColumnInfo(custom, info); });
    } else if (what == 5) {
      // A whole column changes (a new price list).
      const int c = pick(kDataColumns);
      for (auto& row : twin.table.rows)
        if (size_t(c) < row.size())
          row[size_t(c)] = RandomCell(rng, c);
      twin.Both([&](RowEngine& e) { e.ColumnChanged(c); });
    } else if (what == 6) {
      for (auto& row : twin.table.rows)
        row = RandomRow(rng);
      twin.Both([&](RowEngine& e) { e.AllRowsChanged(); });
    } else if (what <= 8) {
      const std::string filter = RandomFilter(rng);
      const bool exact = pick(5) == 0;
      twin.Both([&](RowEngine& e) { e.SetFilter(column, filter, exact); });
      if (pick(6) == 0)
        twin.Both([&](RowEngine& e) { e.ResetFilters(); });
    } else if (what <= 10) {
      const int displayColumn = twin.cached.ColumnPosition(column);
      twin.Both([&](RowEngine& e) { e.SortOnColumn(displayColumn); });
    } else if (what == 11) {
      const size_t n = size_t(pick(12));
      std::vector<int32_t> top[2];
      int i = 0;
      twin.Both([&](RowEngine& e) { top[i++] = e.LargestRows(column, n); });
      ASSERT_EQ(top[0], top[1]) << "largest rows of column " << column;
    } else if (what == 12) {
      std::vector<std::string> values[2];
      int i = 0;
      twin.Both([&](RowEngine& e) { values[i++] = e.DistinctValues(column); });
      ASSERT_EQ(values[0], values[1]) << "distinct values of column " << column;
    } else if (what == 13) {
      // Bits, so that NaN cells compare too.
      std::vector<uint64_t> bits[2];
      int i = 0;
      twin.Both([&](RowEngine& e) {
        std::vector<double> values;
        if (e.DisplayedCustomNumbers(column, values))
          for (const double v : values)
            bits[i].push_back(std::bit_cast<uint64_t>(v));
        ++i;
      });
      ASSERT_EQ(bits[0], bits[1]) << "custom numbers of column " << column;
    } else {
      std::vector<std::pair<int, std::string>> texts[2];
      int i = 0;
      twin.Both([&](RowEngine& e) {
        e.VisitColumnTexts(column, [&](int d, std::string_view t) { texts[i].emplace_back(d, t); });
        ++i;
      });
      ASSERT_EQ(texts[0], texts[1]) << "texts of column " << column;
    }
    ASSERT_EQ(twin.Shown(twin.cached), twin.Shown(twin.plain))
        << "after step " << step << " kind " << what << " column " << column;
    ASSERT_EQ(twin.cached.RowCount(), twin.plain.RowCount());
  }
}

TEST(KeyCacheRandom, EveryPassEqualsTheUncachedEngine) {
  const struct {
    const char* name;
    bool viewSource;
    bool reverse;
    size_t cacheLimit;
  } cases[] = {
      {"owner source, newest first", false, true, RowEngine::kDefaultKeyCacheLimit},
      {"view source, newest first", true, true, RowEngine::kDefaultKeyCacheLimit},
      {"owner source, oldest first", false, false, RowEngine::kDefaultKeyCacheLimit},
      {"a cap of about two columns: caches come and go", true, true, 2500},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (uint32_t seed = 1; seed <= 12; ++seed) {
      RunScenario(seed, c.viewSource, c.reverse, c.cacheLimit);
      if (::testing::Test::HasFatalFailure())
        return;
    }
  }
}

// The largest rows are read in store order only while few rows reach the
// bound; past that, and whatever the map's order, the result is the same.
TEST(KeyCacheRandom, LargestRowsWithManyRowsAtTheBound) {
  const struct {
    const char* name;
    int modulus; // row r holds r % modulus
  } cases[] = {
      {"every row ties", 1},
      {"a few hundred tie at the bound", 7},
      {"hardly any tie", 100000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TextTable table;
    for (int r = 0; r < 6000; ++r)
      table.rows.push_back({std::to_string(r % c.modulus), std::to_string(r % 13)});
    RowEngine engines[2];
    for (RowEngine& e : engines) {
      e.SetOwnerDataSource(&TextTable::Fetch, &table);
      e.SetColumns(test::Columns({1, 1}), 2);
      test::LoadRows(e, table);
      e.SortOnColumn(1); // a map out of store order
    }
    engines[1].SetKeyCacheLimit(0);
    for (const size_t n : {1, 10, 500})
      EXPECT_EQ(engines[0].LargestRows(0, n), engines[1].LargestRows(0, n)) << n << " rows";
  }
}

} // namespace
} // namespace vh
