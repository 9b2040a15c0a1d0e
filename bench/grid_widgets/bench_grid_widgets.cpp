// The filtering grid at a million rows, offscreen: painting one viewport,
// a filter keystroke up to the repaint, the distinct-values pop-up of a
// column with a million values, and the passes over every row (Ctrl+A then
// Ctrl+C, Fit to Data, export) with the longest time the event loop did not
// run during each ("stall_ms", must stay at or below 100).
//
//   QT_QPA_PLATFORM=offscreen bench_grid_widgets [benchmark flags]
#include "bench/rows/holdings_table.h"
#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "grid/widgets/grid_commands.h"
#include "widgets/filter_header.h"
#include "widgets/filter_text.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTimer>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>

namespace vh::bench {
namespace {

constexpr size_t kRows = 1'000'000;

const HoldingsTable& Table() {
  static const HoldingsTable table = HoldingsTable::Generate(kRows, 20240601);
  return table;
}

std::vector<sTarnColInfo> Columns() {
  std::vector<sTarnColInfo> columns(kHoldingsColumns);
  for (int c = 0; c < kHoldingsColumns; ++c) {
    columns[size_t(c)].SetName("Column " + std::to_string(c));
    columns[size_t(c)].nWidth = 70;
    columns[size_t(c)].nType = c >= kHoldingsQty && c < 15 ? kCompareInteger : kCompareText;
    columns[size_t(c)].nFormat = c >= kHoldingsQty ? kFormatRight : kFormatLeft;
  }
  columns[kClosePrice].nType = kCompareDecimal;
  return columns;
}

// A dialog holding a grid of a million holdings, newest on top.
struct Grid {
  QDialog dialog;
  CFilterListCtrl* grid = new CFilterListCtrl(&dialog);
  Grid() {
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(grid);
    auto* owner = const_cast<HoldingsTable*>(&Table());
    grid->Engine().SetOwnerDataSource(&HoldingsTable::Fetch, owner);
    grid->Engine().SetViewDataSource(&HoldingsTable::View, owner);
    grid->Engine().SetReverseDisplay(true);
    grid->SetProfileName("bench");
    grid->SetUpColumns(Columns());
    grid->Engine().Reserve(kRows);
    for (size_t i = 0; i < Table().Rows(); ++i)
      grid->SetItemData(grid->InsertItem(0), i + 1);
    grid->Model().Flush();
    dialog.resize(1200, 800);
    dialog.show();
    QCoreApplication::processEvents();
  }
};

// The longest gap between two runs of the event loop while it is alive.
class StallProbe {
public:
  StallProbe() {
    timer_.setInterval(1);
    QObject::connect(&timer_, &QTimer::timeout,
                     [this] { longest_ = std::max(longest_, clock_.restart()); });
    clock_.start();
    timer_.start();
  }
  qint64 LongestMs() {
    longest_ = std::max(longest_, clock_.restart());
    return longest_;
  }

private:
  QTimer timer_;
  QElapsedTimer clock_;
  qint64 longest_ = 0;
};

void Paint_viewport_1m(benchmark::State& state) {
  Grid g;
  std::mt19937 rng(5);
  for (auto _ : state) {
    state.PauseTiming();
    g.grid->scrollTo(g.grid->model()->index(int(rng() % kRows), 0));
    state.ResumeTiming();
    g.grid->viewport()->repaint();
  }
}

// A keystroke in the client id filter field up to the repaint of the new
// rows, next to the engine's own pass over the same rows.
void Filter_keystroke_1m(benchmark::State& state) {
  Grid g;
  const bool engineOnly = state.range(0) == 1;
  const char* texts[] = {"1", "12", "123", "12"};
  size_t i = 0;
  for (auto _ : state) {
    const std::string text = texts[i++ % 4];
    if (engineOnly) {
      RowEngine& engine = g.grid->Engine();
      engine.SetObserver(nullptr);
      engine.OnHeaderFilterChanged(0, text);
      state.PauseTiming();
      engine.SetObserver(&g.grid->Model());
      g.grid->Model().OnFiltered(engine.DisplayedCount());
      state.ResumeTiming();
    } else {
      emit g.grid->FilterHeader()->FilterChanged(0, QString::fromStdString(text));
      g.grid->viewport()->repaint();
    }
  }
  state.SetLabel(engineOnly ? "engine pass only" : "keystroke to repaint");
}

// A million different client ids, held as the owner holds its texts.
const std::vector<std::string>& Clients() {
  static const std::vector<std::string> clients = [] {
    std::vector<std::string> v(kRows);
    char buf[16];
    for (size_t i = 0; i < kRows; ++i) {
      std::snprintf(buf, sizeof buf, "C%07zu", (i * 7919) % kRows);
      v[i] = buf;
    }
    return v;
  }();
  return clients;
}

int UniqueClient(void*, uint64_t item, int, std::string& text, CellStyle&) {
  text = Clients()[(item - 1) % kRows];
  return 1;
}

int UniqueClientView(void*, uint64_t item, int, std::string_view& text) {
  text = Clients()[(item - 1) % kRows];
  return 1;
}

void Popup_million_distinct(benchmark::State& state) {
  Grid g;
  g.grid->Engine().SetOwnerDataSource(&UniqueClient, nullptr);
  g.grid->Engine().SetViewDataSource(&UniqueClientView, nullptr);
  for (auto _ : state) {
    g.grid->PopupDistinctValues(0, QPoint(10, 10));
    QCoreApplication::processEvents();
    state.PauseTiming();
    CFilterListCtrl::SharedFilterPopup()->hide();
    state.ResumeTiming();
  }
}

// Runs `pass` once, counting the longest event-loop stall and the progress
// reports the user sees.
template <typename Pass> void RunWholePass(benchmark::State& state, Grid& g, Pass&& pass) {
  int reports = 0;
  QObject::connect(g.grid, &CCommonListCtrl::ProgressChanged, [&reports] { ++reports; });
  qint64 stall = 0;
  for (auto _ : state) {
    StallProbe probe;
    pass();
    stall = probe.LongestMs();
  }
  state.counters["stall_ms"] = double(stall);
  state.counters["progress_reports"] = reports;
}

void Copy_all_1m(benchmark::State& state) {
  Grid g;
  g.grid->selectAll();
  RunWholePass(state, g, [&] { benchmark::DoNotOptimize(g.grid->CopyToClipboard().size()); });
}

void Fit_to_data_1m(benchmark::State& state) {
  Grid g;
  RunWholePass(state, g, [&] { g.grid->FitColumns(kFitData); });
}

void Export_1m(benchmark::State& state) {
  Grid g;
  ScopedMessageRecorder quiet;
  const std::string path =
      (std::filesystem::temp_directory_path() / "bench_grid_widgets.xlsx").string();
  RunWholePass(state, g, [&] {
    if (!g.grid->ExportToExcel(path))
      state.SkipWithError("export failed");
  });
  std::filesystem::remove(path);
}

BENCHMARK(Paint_viewport_1m)->Unit(benchmark::kMillisecond);
BENCHMARK(Filter_keystroke_1m)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
void Distinct_values_only(benchmark::State& state) {
  Grid g;
  g.grid->Engine().SetOwnerDataSource(&UniqueClient, nullptr);
  g.grid->Engine().SetViewDataSource(&UniqueClientView, nullptr);
  for (auto _ : state)
    benchmark::DoNotOptimize(g.grid->Engine().DistinctValues(0).size());
  state.SetLabel("the engine's part of the pop-up");
}

BENCHMARK(Distinct_values_only)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Popup_million_distinct)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(Copy_all_1m)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Fit_to_data_1m)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(Export_1m)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
} // namespace vh::bench

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  vh::CCommonListCtrl::SetHeaderImageList(vh::MakeHeaderImageList());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  vh::CFilterListCtrl::DestroySharedWindows();
  return 0;
}
