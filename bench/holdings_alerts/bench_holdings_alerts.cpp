// One alert pass over a million-row holdings grid (the row engine over the
// generated holdings table, two custom columns) for a few rule sets, from
// the rules that select almost nothing to one that selects every row.
#include <benchmark/benchmark.h>

#include "bench/rows/holdings_table.h"
#include "grid/custom_column.h"
#include "grid/row_engine.h"
#include "holdings/alert_pass.h"
#include "holdings/engine_alert_source.h"

namespace vh::bench {
namespace {

constexpr size_t kRows = 1000000;
constexpr int kValueColumn = kHoldingsColumns;    // holdings qty x close price
constexpr int kFreeColumn = kHoldingsColumns + 1; // holdings qty - used qty

struct Grid final : AlertRecordFields {
  HoldingsTable table = HoldingsTable::Generate(kRows, 7);
  RowEngine engine;
  Grid() {
    engine.SetOwnerDataSource(&HoldingsTable::Fetch, &table);
    engine.SetViewDataSource(&HoldingsTable::View, &table);
    engine.SetCustomColumnCompiler(CompileCustomColumn);
    std::vector<sTarnColInfo> columns(kHoldingsColumns);
    for (int c = 0; c < kHoldingsColumns; ++c)
      columns[size_t(c)].SetName("c" + std::to_string(c));
    auto custom = [&](const char* name, const char* stored) {
      sTarnColInfo info;
      info.SetName(name);
      info.nType = kCompareDecimal;
      info.strExpression = stored;
      columns.push_back(info);
    };
    custom("Value", R"( "6"*"17")");
    custom("Free", R"( "6"-"8")");
    engine.SetColumns(columns, kHoldingsColumns);
    engine.Reserve(kRows);
    for (size_t i = 0; i < kRows; ++i)
      engine.SetItemData(engine.InsertItem(int(i), ""), i + 1);
  }
  std::string_view Isin(uint64_t item) override { return table.Cell(item - 1, kNseSymbol); }
  std::string_view ClientId(uint64_t item) override { return table.Cell(item - 1, kClientId); }
};

Grid& SharedGrid() {
  static Grid grid;
  return grid;
}

struct NullList final : AlertListSink {
  void Empty() override {}
  int CountPerPage() override { return 30; }
  void ShowRows(size_t) override {}
  void Redraw() override {}
};

// `change` runs before every pass, timed with it: what the owner says
// changed since the last pass.
void Pass(benchmark::State& state, std::vector<CustomAlert> rules,
          void (*change)(RowEngine&) = nullptr) {
  Grid& grid = SharedGrid();
  CAlertRuleTable table;
  for (const CustomAlert& r : rules)
    table.Put(r);
  EngineAlertSource source(grid.engine, grid);
  AlertHits hits;
  NullList list;
  AlertPassCounts counts;
  for (auto _ : state) {
    if (change)
      change(grid.engine);
    counts = RunAlertPass(table, source, hits, list);
  }
  state.counters["rows"] = double(counts.rowsChecked);
  state.counters["hits"] = double(counts.hits);
}

const std::string kValue = std::to_string(kValueColumn);
const std::string kFree = std::to_string(kFreeColumn);

void BM_OneRuleFewHits(benchmark::State& state) {
  Pass(state, {{kGreaterOrEqual, "Value", "50000000", "Value", kValue}});
}
// Present-values records for 1% of the rows, then the pass.
void BM_OneRuleAfterTicks(benchmark::State& state) {
  Pass(state, {{kGreaterOrEqual, "Value", "50000000", "Value", kValue}}, [](RowEngine& e) {
    for (int d = 0; d < int(kRows); d += 100)
      e.RowChanged(d);
  });
}
// A new answer: every row changed, so the pass computes every cell.
void BM_OneRuleAfterEveryRowChanged(benchmark::State& state) {
  Pass(state, {{kGreaterOrEqual, "Value", "50000000", "Value", kValue}},
       [](RowEngine& e) { e.AllRowsChanged(); });
}
void BM_TwoRulesFewHits(benchmark::State& state) {
  Pass(state, {{kGreaterOrEqual, "Value", "50000000", "Value", kValue},
               {kLessOrEqual, "Free", "-1000", "Free", kFree}});
}
void BM_OneRuleEveryRow(benchmark::State& state) {
  Pass(state, {{kGreaterOrEqual, "Value", "-1", "Value", kValue}});
}

BENCHMARK(BM_OneRuleFewHits)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRuleAfterTicks)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRuleAfterEveryRowChanged)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_TwoRulesFewHits)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OneRuleEveryRow)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
} // namespace vh::bench

BENCHMARK_MAIN();
