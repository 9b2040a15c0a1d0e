// The key caches against the uncached engine: two engines over the same
// rows, one with key caches in check mode and one with caching off, take the
// same changes and passes, and every result (rows shown and their order, top
// rows, distinct values, column texts, messages) must be identical. Random
// scenarios cover the ordinary cells and filters; the tables pin the edges
// of the keys. How much the caches save and cost is the benchmark's to show.
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

// Columns of `types`, the last of them custom columns of `expressions`.
std::vector<sTarnColInfo> WithCustom(const std::vector<int32_t>& types,
                                     const std::vector<std::string>& expressions) {
  auto columns = test::Columns(types);
  for (size_t k = 0; k < expressions.size(); ++k)
    columns[types.size() - expressions.size() + k].strExpression = expressions[k];
  return columns;
}

struct Twin {
  TextTable table;
  RowEngine cached, plain;

  Twin(const std::vector<sTarnColInfo>& columns, int dataColumns,
       size_t cacheLimit = RowEngine::kDefaultKeyCacheLimit) {
    for (RowEngine* e : {&cached, &plain}) {
      e->SetOwnerDataSource(&TextTable::Fetch, &table);
      e->SetColumns(columns, dataColumns);
      e->SetCustomColumnCompiler(&CompileRowFormula);
    }
    plain.SetKeyCacheLimit(0);
    cached.SetKeyCacheLimit(cacheLimit);
    cached.SetKeyCacheCheck(true);
    cached.SetKeyMismatchHandler([](int column, int dataIndex) {
      ADD_FAILURE() << "cached key of column " << column << " at " << dataIndex << " is stale";
    });
  }

  // Runs `step` on both engines; both must show the same messages.
  template <typename Step> void Both(Step step) {
    std::vector<std::string> said[2];
    for (int i = 0; i < 2; ++i) {
      ScopedMessageRecorder recorder;
      step(i == 0 ? cached : plain);
      said[i] = recorder.messages();
    }
    ASSERT_EQ(said[0], said[1]);
  }

  // Asks both engines `query`; the answers must be equal.
  template <typename Query> void Same(Query query, const std::string& what) {
    decltype(query(cached)) answers[2];
    int i = 0;
    Both([&](RowEngine& e) { answers[i++] = query(e); });
    ASSERT_EQ(answers[0], answers[1]) << what;
  }

  static std::vector<uint64_t> Shown(RowEngine& e) {
    std::vector<uint64_t> items;
    for (int p = 0; p < e.DisplayedCount(); ++p)
      items.push_back(e.GetItemData(p));
    return items;
  }
  void SameRows(const std::string& what) { Same(&Twin::Shown, what); }
};

constexpr int kDataColumns = 8;
const char* const kExpressions[] = {
    " \"0\"*\"1\"",       // integer times decimal
    " \"8\"+\"3\"",       // a custom column and a long one
    " \"1\"/\"0\"",       // zero divisors
    " \"4\"-\"2\"",       // decimal minus text: mostly "0"
    " \"12\"+\"0\"",      // a cycle through itself
    " \"6\" \"1\"",       // leftover operands: a message per computed cell
    " \"6\"/\"3\"-\"3\"", // one column read twice, texts the formula reads its own way
    " \"-1\"+\"0\"",      // a column below 0, as only a hand-edited file holds
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
    // Texts the formula and the comparisons read differently, and a
    // magnitude whose products no longer fit in cents.
    static const char* const kOdd[] = {"nan", "-inf", "---",      "",    "1e3", " 5",  "5abc",
                                       "-0",  "0x1A", "1,000.50", "-.5", "+7",  "5e17"};
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

std::string RandomFilter(std::mt19937& rng) {
  static const char* const kFilters[] = {">5",  "<0",  ">1~<-1", "a",   "*b*", "*B",   "1",
                                         "~",   ">x",  "",       "0x",  "-",   ">1e3", "<.5",
                                         "*0*", "Div", "0.00",   ">-1", "01",  "10:"};
  return kFilters[std::uniform_int_distribution<size_t>(0, std::size(kFilters) - 1)(rng)];
}

void RunScenario(uint32_t seed, bool viewSource, bool reverse, size_t cacheLimit) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 rng(seed);
  std::vector<int32_t> types = {1, 2, 3, 4, 5, 6, 1, 3, 2, 2, 3, 1, 2, 2, 2, 2};
  Twin twin(WithCustom(types, {std::begin(kExpressions), std::end(kExpressions)}), kDataColumns,
            cacheLimit);
  for (int r = 0; r < 120; ++r)
    twin.table.rows.push_back(RandomRow(rng));
  twin.Both([&](RowEngine& e) {
    if (viewSource)
      e.SetViewDataSource(&TextTable::View, &twin.table);
    e.SetReverseDisplay(reverse);
    test::LoadRows(e, twin.table);
  });
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
      twin.Same([&](RowEngine& e) { return e.LargestRows(column, n); }, "largest rows");
    } else if (what == 12) {
      twin.Same([&](RowEngine& e) { return e.DistinctValues(column); }, "distinct values");
    } else if (what == 13) {
      twin.Same(
          [&](RowEngine& e) {
            std::vector<uint64_t> bits; // so that NaN cells compare too
            std::vector<double> values;
            if (e.DisplayedCustomNumbers(column, values))
              for (const double v : values)
                bits.push_back(std::bit_cast<uint64_t>(v));
            return bits;
          },
          "custom numbers");
    } else {
      twin.Same(
          [&](RowEngine& e) {
            std::vector<std::pair<int, std::string>> texts;
            e.VisitColumnTexts(column,
                               [&](int d, std::string_view t) { texts.emplace_back(d, t); });
            return texts;
          },
          "column texts");
    }
    twin.SameRows("after step " + std::to_string(step) + " kind " + std::to_string(what) +
                  " column " + std::to_string(column));
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
    std::string laterText; // written into row 0 after the first round
  } cases[] = {
      {"hexadecimal prefix without digits", 2, {"0x", "0x1A", "1"}, "0x"},
      {"long column near its limits",
       4,
       {"9223372036854775807", "-9223372036854775808", "1"},
       "1e19"},
      {"integers", 1, {"-3", "-2", "0", "2", "3", "2147483647", "-2147483648"}, "2.5"},
      {"decimals", 2, {"-0.0", "0", "1.5", "-1.5", "2.5", "inf", "-inf", "nan", "1e300"}, "abc"},
      {"eight bytes at most", 3, {"abcdefgh", "abcdefg", "ABCDEFGH", "abc", "", "b"}, "zz"},
      {"one of nine bytes", 3, {"abcdefghi", "abcdefgh", "abcdefghj", "a", "abcdefgh"}, "a"},
      {"zero and high bytes", 3, {"a\0"s, "a", "a\0\0"s, "\x80", "\x7f", "a\x80"}, "\0"s},
      {"a longer text arrives later", 3, {"one", "two", "three", "t"}, "twenty-three"},
      {"a shorter text arrives later", 3, {"eleven char", "two", "t"}, "t"},
      {"case folding at the letter edges",
       3,
       {"@x", "Ax", "Zx", "[x", "`x", "ax", "zx", "{x", "\xC1x", "\xDAx", "\xE1x"},
       "ZX"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Twin twin(test::Columns({c.type}), 1);
    for (const std::string& cell : c.cells)
      twin.table.rows.push_back({cell});
    twin.Both([&](RowEngine& e) { test::LoadRows(e, twin.table); });
    for (int round = 0; round < 2; ++round) {
      twin.Both([](RowEngine& e) { e.SortOnColumn(0); });
      twin.SameRows("sorted");
      twin.Same([](RowEngine& e) { return e.DistinctValues(0); }, "distinct values");
      for (const std::string& filter : c.type == 3 ? kTextFilters : kBounds) {
        twin.Both([&](RowEngine& e) { e.SetFilter(0, filter, false); });
        twin.SameRows(filter);
      }
      twin.Both([](RowEngine& e) { e.ResetFilters(); });
      twin.table.rows[0][0] = c.laterText;
      twin.cached.RowChanged(0);
    }
  }
}

} // namespace
} // namespace vh
