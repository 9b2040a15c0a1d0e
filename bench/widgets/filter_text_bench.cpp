// Opening the distinct-value pop-up with a million values: fill, sort, show
// and the first paint, offscreen.
//
//   filter_text_bench [benchmark flags]
//
// The values reach Popup by move, as the grid hands them over; making the
// copy for each iteration is not timed.
#include "widgets/filter_text.h"

#include <QApplication>
#include <QListView>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "grid/filter_join.h"
#include "grid/filter_match.h"
#include "plugin/tarn_host_api.h"
#include "widgets/sorted_values.h"

namespace vh::bench {
namespace {

constexpr int kValues = 1'000'000;

// Distinct client ids in a shuffled order; `prefix` makes them longer than
// the sort's eight-byte key.
std::vector<std::string> ClientIds(const char* prefix) {
  std::vector<std::string> ids;
  ids.reserve(kValues);
  char buf[48];
  for (int i = 0; i < kValues; ++i) {
    std::snprintf(buf, sizeof buf, "%s%07d", prefix, i * 7 + 3);
    ids.emplace_back(buf);
  }
  std::shuffle(ids.begin(), ids.end(), std::mt19937(11));
  return ids;
}

void OpenPopup(benchmark::State& state, const std::vector<std::string>& values) {
  CFilterText popup;
  for (auto _ : state) {
    state.PauseTiming();
    popup.hide();
    QCoreApplication::processEvents();
    std::vector<std::string> copy = values;
    state.ResumeTiming();
    popup.Popup(std::move(copy), 0, QPoint(10, 10));
    QCoreApplication::processEvents();
    popup.repaint(); // the first frame, list rows included
  }
  const auto* list = qobject_cast<QListView*>(GetDlgItem(&popup, kFilterTextListId));
  state.counters["rows"] = list ? list->model()->rowCount() : -1;
}

void Popup_1m_short_ids(benchmark::State& state) {
  static const auto values = ClientIds("C");
  OpenPopup(state, values);
}

void Popup_1m_long_ids(benchmark::State& state) {
  static const auto values = ClientIds("CLIENT-NSE-");
  OpenPopup(state, values);
}

void Popup_1m_presorted(benchmark::State& state) {
  static const auto values = [] {
    auto v = ClientIds("C");
    std::sort(v.begin(), v.end());
    return v;
  }();
  OpenPopup(state, values);
}

// The sort alone, for comparison with the whole opening.
void Sort_1m(benchmark::State& state, const char* prefix) {
  const auto values = ClientIds(prefix);
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::string> copy = values;
    state.ResumeTiming();
    std::vector<std::string> sorted = SortedDistinctValues(std::move(copy));
    benchmark::DoNotOptimize(sorted.data());
    state.PauseTiming(); // freeing the result is not the sort's
    sorted = {};
    state.ResumeTiming();
  }
}

// Applying a selection of every value (Ctrl+A, Enter): the linear join over
// n picks, and the plain substring rule for comparison.
template <std::string (*Join)(const std::vector<std::string>&)>
void Join_all(benchmark::State& state) {
  auto picked = SortedDistinctValues(ClientIds("C"));
  picked.resize(static_cast<size_t>(state.range(0)));
  for (auto _ : state)
    benchmark::DoNotOptimize(Join(picked).size());
}

BENCHMARK_TEMPLATE(Join_all, JoinFilterTexts)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(Join_all, JoinFilterSelection)
    ->Arg(20'000)
    ->Arg(40'000)
    ->Unit(benchmark::kMillisecond);

BENCHMARK_CAPTURE(Sort_1m, short_ids, "C")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Sort_1m, long_ids, "CLIENT-NSE-")->Unit(benchmark::kMillisecond);
BENCHMARK(Popup_1m_short_ids)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(Popup_1m_long_ids)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(Popup_1m_presorted)->Unit(benchmark::kMillisecond)->MinTime(2);

} // namespace
} // namespace vh::bench

int main(int argc, char** argv) {
  if (std::getenv("QT_QPA_PLATFORM") == nullptr)
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
