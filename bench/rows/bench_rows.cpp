// The row engine over a million holdings rows: insert, custom column,
// filters, sorts, top ten and distinct values.
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
#include <memory>

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

void W2_custom_column_all_rows(benchmark::State& state) {
  RowEngine& engine = Loaded();
  std::string text;
  for (auto _ : state) {
    size_t length = 0;
    for (size_t i = 1; i <= engine.RowCount(); ++i) {
      text.clear();
      engine.GetCellText(engine.ItemDataOfIndex(int(i - 1)), kCustomColumn, text);
      length += text.size();
    }
    benchmark::DoNotOptimize(length);
  }
}

void FilterCase(benchmark::State& state, int column, const char* text) {
  RowEngine& engine = Loaded();
  for (auto _ : state) {
    engine.SetFilter(column, text, false);
    benchmark::DoNotOptimize(engine.DisplayedCount());
  }
  state.counters["shown"] = engine.DisplayedCount();
  engine.ResetFilters();
}

void W3_filter_prefix(benchmark::State& state) {
  FilterCase(state, kClientId, "C00012");
}
void W4_filter_greater(benchmark::State& state) {
  FilterCase(state, kHoldingsQty, ">500");
}
void W5_filter_contains(benchmark::State& state) {
  FilterCase(state, kNseSymbol, "*INF*");
}

void SortCase(benchmark::State& state, int column) {
  RowEngine& engine = Loaded();
  for (auto _ : state) {
    engine.SortOnColumn(column);
    benchmark::DoNotOptimize(engine.GetItemData(0));
  }
}

void W6_sort_quantity(benchmark::State& state) {
  SortCase(state, kHoldingsQty);
}
void W7_sort_symbol(benchmark::State& state) {
  SortCase(state, kNseSymbol);
}

void W8_top10_custom(benchmark::State& state) {
  RowEngine& engine = Loaded();
  for (auto _ : state)
    benchmark::DoNotOptimize(engine.LargestRows(kCustomColumn, 10));
}

void W9_distinct_symbol(benchmark::State& state) {
  RowEngine& engine = Loaded();
  size_t count = 0;
  for (auto _ : state) {
    count = engine.DistinctValues(kNseSymbol).size();
    benchmark::DoNotOptimize(count);
  }
  state.counters["distinct"] = double(count);
  state.counters["bytes_per_row"] = double(engine.ResidentBytes()) / double(engine.RowCount());
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
BENCHMARK(W2_custom_column_all_rows)->Unit(benchmark::kMillisecond);
BENCHMARK(W3_filter_prefix)->Unit(benchmark::kMillisecond);
BENCHMARK(W4_filter_greater)->Unit(benchmark::kMillisecond);
BENCHMARK(W5_filter_contains)->Unit(benchmark::kMillisecond);
BENCHMARK(W6_sort_quantity)->Unit(benchmark::kMillisecond);
BENCHMARK(W7_sort_symbol)->Unit(benchmark::kMillisecond);
BENCHMARK(W8_top10_custom)->Unit(benchmark::kMillisecond);
BENCHMARK(W9_distinct_symbol)->Unit(benchmark::kMillisecond);
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
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv))
    return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
