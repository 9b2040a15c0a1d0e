// The row engine over a million holdings rows: insert, custom column,
// filters, sorts, top ten and distinct values, each without key caches,
// cold (building them) and warm; then a 1% tick before a warm sort and
// filter.
//
//   bench_rows [--csv FILE] [benchmark flags]
//
// Without --csv the rows are generated (see holdings_table.h); gen_rows_csv
// writes the same rows to a file.
#include "bench/rows/holdings_table.h"
#include "grid/row_custom_formula.h"
#include "grid/row_engine.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>

namespace vh::bench {
namespace {

constexpr size_t kRows = 1'000'000;
std::string g_csvPath;

const HoldingsTable& Table() {
  static const HoldingsTable table = [] {
    if (g_csvPath.empty())
      return HoldingsTable::Generate(kRows, 20240601);
    HoldingsTable t;
    std::string error;
    if (!t.ReadCsv(g_csvPath, error)) {
      std::fprintf(stderr, "%s\n", error.c_str());
      std::exit(2);
    }
    return t;
  }();
  return table;
}

constexpr int kCustomColumn = kHoldingsColumns; // "Holdings Qty" * "Close Price"

void Configure(RowEngine& engine) {
  static const char* const kNames[kHoldingsColumns] = {"Client Id",
                                                       "Product",
                                                       "Series",
                                                       "NSE Symbol",
                                                       "BSE Scrip Code",
                                                       "BSE Symbol",
                                                       "Holdings Qty",
                                                       "Holdings Update Qty",
                                                       "Used Qty",
                                                       "Collateral Qty",
                                                       "Collateral Update Qty",
                                                       "Withheld Holding Qty",
                                                       "Withheld Collateral Qty",
                                                       "T1 Qty",
                                                       "T1 Collateral Qty",
                                                       "Haircut",
                                                       "Collateral Type",
                                                       "Close Price"};
  std::vector<sTarnColInfo> columns(kHoldingsColumns + 1);
  for (int c = 0; c < kHoldingsColumns; ++c) {
    columns[size_t(c)].SetName(kNames[c]);
    columns[size_t(c)].nType = c >= kHoldingsQty && c < 15 ? kCompareInteger : kCompareText;
  }
  columns[15].nType = kCompareDecimal;
  columns[kClosePrice].nType = kCompareDecimal;
  columns[kCustomColumn].SetName("Value");
  columns[kCustomColumn].nType = kCompareDecimal;
  columns[kCustomColumn].strExpression = " \"6\"*\"17\"";
  auto* owner = const_cast<HoldingsTable*>(&Table());
  engine.SetOwnerDataSource(&HoldingsTable::Fetch, owner);
  engine.SetViewDataSource(&HoldingsTable::View, owner);
  engine.SetColumns(std::move(columns), kHoldingsColumns);
  engine.SetCustomColumnCompiler(&CompileRowFormula);
  engine.SetReverseDisplay(true);
}

// Rows arrive as the view adds them: a row at position 0, then its item data.
void Load(RowEngine& engine) {
  const size_t rows = Table().Rows();
  for (size_t i = 0; i < rows; ++i) {
    const int at = engine.InsertItem(0, "");
    engine.SetItemData(at, i + 1);
  }
}

RowEngine& Loaded() {
  static RowEngine* engine = [] {
    auto* e = new RowEngine;
    Configure(*e);
    Load(*e);
    return e;
  }();
  return *engine;
}

void W1_insert_1m(benchmark::State& state) {
  Table();
  double bytesPerRow = 0;
  for (auto _ : state) {
    RowEngine engine;
    Configure(engine);
    Load(engine);
    bytesPerRow = double(engine.ResidentBytes()) / double(engine.RowCount());
    benchmark::DoNotOptimize(engine.DisplayedCount());
  }
  state.counters["bytes_per_row"] = bytesPerRow;
}

// Each pass runs three ways: uncached (the caches off: every cell fetched
// and converted), _cold (the first pass after every row changed: it builds
// the column's cache) and _warm (the pass after that).
enum class Cache { kOff, kCold, kWarm };

template <typename Pass> void Run(benchmark::State& state, Cache cache, Pass pass) {
  RowEngine& engine = Loaded();
  engine.SetKeyCacheLimit(cache == Cache::kOff ? 0 : RowEngine::kDefaultKeyCacheLimit);
  if (cache == Cache::kWarm)
    pass(engine);
  for (auto _ : state) {
    if (cache == Cache::kCold) {
      state.PauseTiming();
      engine.AllRowsChanged();
      state.ResumeTiming();
    }
    pass(engine);
  }
  state.counters["cache_bytes_per_row"] =
      double(engine.KeyCacheBytes()) / double(engine.RowCount());
  engine.SetKeyCacheLimit(RowEngine::kDefaultKeyCacheLimit);
}

// Every cell text of the custom column, as an export reads them.
void CustomColumnTexts(RowEngine& engine) {
  size_t length = 0;
  engine.VisitColumnTexts(kCustomColumn,
                          [&](int, std::string_view text) { length += text.size(); });
  benchmark::DoNotOptimize(length);
}

void Filtered(RowEngine& engine, int column, const char* text) {
  engine.SetFilter(column, text, false);
  benchmark::DoNotOptimize(engine.DisplayedCount());
}

void Sorted(RowEngine& engine, int column) {
  engine.SortOnColumn(column);
  benchmark::DoNotOptimize(engine.GetItemData(0));
}

void Top10(RowEngine& engine) {
  benchmark::DoNotOptimize(engine.LargestRows(kCustomColumn, 10));
}

void Distinct(RowEngine& engine) {
  benchmark::DoNotOptimize(engine.DistinctValues(kNseSymbol).size());
}

// A price tick: 1% of the rows, spread over the store, reported changed.
void Tick(RowEngine& engine) {
  static size_t offset = 0;
  offset = (offset + 1) % 100;
  for (size_t d = offset; d < engine.RowCount(); d += 100)
    engine.RowChanged(int(d));
}

void RegisterPasses() {
  struct Case {
    const char* name;
    std::function<void(RowEngine&)> pass;
    bool resetFilters;
  };
  const Case cases[] = {
      {"W2_custom_column_all_rows", CustomColumnTexts, false},
      {"W3_filter_prefix", [](RowEngine& e) { Filtered(e, kClientId, "C00012"); }, true},
      {"W4_filter_greater", [](RowEngine& e) { Filtered(e, kHoldingsQty, ">500"); }, true},
      {"W5_filter_contains", [](RowEngine& e) { Filtered(e, kNseSymbol, "*INF*"); }, true},
      {"W6_sort_quantity", [](RowEngine& e) { Sorted(e, kHoldingsQty); }, false},
      {"W7_sort_symbol", [](RowEngine& e) { Sorted(e, kNseSymbol); }, false},
      {"W8_top10_custom", Top10, false},
      {"W9_distinct_symbol", Distinct, false},
  };
  const struct {
    const char* suffix;
    Cache cache;
  } modes[] = {{"", Cache::kOff}, {"_cold", Cache::kCold}, {"_warm", Cache::kWarm}};
  for (const Case& c : cases) {
    for (const auto& mode : modes) {
      const std::function<void(RowEngine&)> pass = c.pass;
      const bool reset = c.resetFilters;
      const Cache cache = mode.cache;
      benchmark::RegisterBenchmark((std::string(c.name) + mode.suffix).c_str(),
                                   [pass, reset, cache](benchmark::State& state) {
                                     Run(state, cache, pass);
                                     if (reset)
                                       Loaded().ResetFilters();
                                   })
          ->Unit(benchmark::kMillisecond);
    }
  }
  benchmark::RegisterBenchmark("W10_tick_then_sort", [](benchmark::State& state) {
    Run(state, Cache::kWarm, [](RowEngine& e) {
      Tick(e);
      Sorted(e, kHoldingsQty);
    });
  })->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("W11_tick_then_filter", [](benchmark::State& state) {
    Run(state, Cache::kWarm, [](RowEngine& e) {
      Tick(e);
      Filtered(e, kHoldingsQty, ">500");
    });
    Loaded().ResetFilters();
  })->Unit(benchmark::kMillisecond);
}

// Every one of the 19 columns cached at once, for the memory figure.
void Cache_all_columns(benchmark::State& state) {
  RowEngine& engine = Loaded();
  for (auto _ : state)
    for (int column = 0; column <= kCustomColumn; ++column)
      engine.SortOnColumn(engine.ColumnPosition(column));
  state.counters["cache_bytes_per_row"] =
      double(engine.KeyCacheBytes()) / double(engine.RowCount());
  state.counters["engine_bytes_per_row"] =
      double(engine.ResidentBytes()) / double(engine.RowCount());
}

// The naive way, for comparison: convert both texts inside
// every comparison of a quick sort.
void LiteralSort(benchmark::State& state, int column, bool numeric) {
  RowEngine& engine = Loaded();
  std::vector<uint64_t> items(size_t(engine.DisplayedCount()));
  std::string a, b;
  for (auto _ : state) {
    for (size_t p = 0; p < items.size(); ++p)
      items[p] = engine.GetItemData(int(p));
    std::sort(items.begin(), items.end(), [&](uint64_t x, uint64_t y) {
      a.clear();
      b.clear();
      engine.GetCellText(x, column, a);
      engine.GetCellText(y, column, b);
      const int r = numeric ? -(std::atoi(b.c_str()) - std::atoi(a.c_str()))
                            : -std::strcmp(b.c_str(), a.c_str());
      return r < 0;
    });
    benchmark::DoNotOptimize(items.data());
  }
}

void Literal_sort_quantity(benchmark::State& state) {
  LiteralSort(state, kHoldingsQty, true);
}
void Literal_sort_symbol(benchmark::State& state) {
  LiteralSort(state, kNseSymbol, false);
}

BENCHMARK(W1_insert_1m)->Unit(benchmark::kMillisecond);
BENCHMARK(Cache_all_columns)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Literal_sort_quantity)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Literal_sort_symbol)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
} // namespace vh::bench

int main(int argc, char** argv) {
  // --csv is ours; benchmark::Initialize rejects flags it does not know.
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--csv") == 0 && i + 1 < argc) {
      vh::bench::g_csvPath = argv[++i];
    } else if (std::strncmp(argv[i], "--csv=", 6) == 0) {
      vh::bench::g_csvPath = argv[i] + 6;
    } else {
      argv[kept++] = argv[i];
    }
  }
  argc = kept;
  vh::bench::RegisterPasses();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
