// The expression engine on typical texts, and one computed cell of the
// quantity-times-price kind with its two cell texts fetched as text: the
// text path, the compiled path and the compiled sort key.
#include "grid/custom_column.h"
#include "grid/expression.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

void BM_EvaluateExpression(benchmark::State& state, const char* text) {
  double value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(EvaluateExpression(text, value));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK_CAPTURE(BM_EvaluateExpression, product, " 1200*345.75");
BENCHMARK_CAPTURE(BM_EvaluateExpression, mixed, " (1200 + 35) * 345.75 / 100 - 2");
BENCHMARK_CAPTURE(BM_EvaluateExpression, signs, " 3 * -5 + 7 % 3 - (-2)");

// Rows of a holdings grid: column 7 the quantity, column 3 the close price.
class Holdings final : public vh::CellTextSource {
public:
  Holdings() {
    char text[32];
    for (int row = 0; row < 1024; ++row) {
      std::snprintf(text, sizeof text, "%d", (row * 7919) % 250000 - (row % 16 == 0 ? 500 : 0));
      quantity.emplace_back(text);
      std::snprintf(text, sizeof text, "%.2f", 10 + (row * 104729) % 500000 / 100.0);
      price.emplace_back(text);
    }
  }
  bool GetCellText(uint64_t item, int column, std::string& text, vh::CellStyle&) override {
    const size_t row = static_cast<size_t>(item % quantity.size());
    if (column == 7)
      text = quantity[row];
    else if (column == 3)
      text = price[row];
    else
      return false;
    return true;
  }
  std::vector<std::string> quantity;
  std::vector<std::string> price;
};

constexpr const char* kStored = R"( "7"*"3")";

void BM_CellTextPath(benchmark::State& state) {
  Holdings rows;
  std::string out;
  uint64_t item = 0;
  for (auto _ : state) {
    vh::CalculateCustomColumnValue(++item, 20, 18, kStored, rows, out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_CellTextPath);

void BM_CellCompiled(benchmark::State& state) {
  Holdings rows;
  vh::CompiledCustomColumn column(kStored);
  std::string out;
  uint64_t item = 0;
  for (auto _ : state) {
    column.Compute(++item, rows, out);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_CellCompiled);

void BM_CellCompiledSortKey(benchmark::State& state) {
  Holdings rows;
  vh::CompiledCustomColumn column(kStored);
  double key = 0;
  uint64_t item = 0;
  for (auto _ : state) {
    column.ComputeSortKey(++item, rows, key);
    benchmark::DoNotOptimize(key);
  }
}
BENCHMARK(BM_CellCompiledSortKey);

} // namespace

BENCHMARK_MAIN();
