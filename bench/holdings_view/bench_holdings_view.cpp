// A risk user clicks "View Hold/Pos" for a scrip held 1,000,000 times and
// waits: from opening the view (combo 9013 filled with 500,000 clients)
// and the click to the last row counted in the grid and painted, against
// a real tarn-riskd on loopback. Reports the longest wait of the event loop
// (a 1 ms timer's worst lateness) and the view's resident bytes per row.
//
//   QT_QPA_PLATFORM=offscreen build/default/bench/holdings_view/bench_holdings_view
#include <benchmark/benchmark.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QTimer>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "bench/riskd/widely_held_store.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/startup_loader.h"
#include "plugin/tarn_host_api.h"
#include "riskd/server.h"
#include "settings/settings_paths.h"

namespace {

constexpr int64_t kRows = 1000000;
constexpr int64_t kClients = kRows / 2; // two products each

[[noreturn]] void Die(const std::string& why) {
  std::fprintf(stderr, "bench_holdings_view: %s\n", why.c_str());
  std::exit(1);
}

size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  size_t pages = 0, resident = 0;
  statm >> pages >> resident;
  return resident * size_t(sysconf(_SC_PAGESIZE));
}

bool WaitUntil(const std::function<bool()>& done, int ms) {
  QElapsedTimer t;
  t.start();
  while (!done()) {
    if (t.elapsed() > ms)
      return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  }
  return true;
}

struct Backend {
  std::filesystem::path dir;
  std::unique_ptr<riskd::RiskServer> server;
  host::BackendControl control;
  std::string symbol, trading;

  Backend() {
    dir = std::filesystem::temp_directory_path() /
          ("holdings_view_bench_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    riskd::StoreSetup setup;
    riskd::Db db;
    std::string error;
    // Scrip 1 held by every client in two products.
    if (!riskd::bench::MakeWidelyHeldStore((dir / "risk.db").string(), kClients, &setup, &db,
                                           &error))
      Die(error);
    riskd::Stmt s =
        db.Prepare("SELECT nse_symbol, nse_symbol||'-'||nse_series FROM scrip WHERE id=1", nullptr);
    if (s.Step() != 100 /* SQLITE_ROW */ || s.IsNull(0))
      Die("scrip 1 has no NSE leg");
    symbol = s.Text(0);
    trading = s.Text(1);
    riskd::RiskServerOptions o;
    o.store = setup;
    o.log = [](const std::string&) {};
    server = riskd::RiskServer::Start(o, &error);
    if (!server)
      Die(error);
    host::HostContext& h = host::TheHost();
    h.control = &control;
    control.Start("127.0.0.1", server->port());
    host::StartupLoader loader(control, "RMS1", h.master, h.user);
    if (!WaitUntil([&] { return loader.ready(); }, 120000))
      Die("the start-up load did not finish");
  }
  ~Backend() {
    control.Stop();
    server.reset();
    std::filesystem::remove_all(dir);
  }
};

Backend& TheBackend() {
  static Backend backend;
  return backend;
}

void Pick(QWidget* view, int id, const std::string& text) {
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(view, id));
  const int index = combo ? combo->findText(QString::fromStdString(text)) : -1;
  if (index < 0)
    Die("cannot pick " + text);
  combo->setCurrentIndex(index);
  emit combo->activated(index);
}

void BM_ClickToLastRow(benchmark::State& state) {
  Backend& b = TheBackend();
  const std::string settings = (b.dir / "settings").string();
  std::filesystem::create_directories(settings);
  vh::ScopedSettingsPaths paths({settings, settings});
  double stallMs = 0, openMs = 0, bytesPerRow = 0, countedPerRow = 0;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    auto view = std::make_unique<vh::CViewHold>();
    view->Initialise("RMS1", 0);
    view->ResetSelection();
    view->show();
    const auto opened = std::chrono::steady_clock::now();
    Pick(view.get(), vh::kComboNseExchange, "NSE");
    Pick(view.get(), vh::kComboNseSymbol, b.symbol);
    Pick(view.get(), vh::kComboNseSeries, b.trading);
    QCoreApplication::processEvents();
    const size_t before = ResidentBytes();

    // The event loop's worst lateness: a 1 ms timer's longest gap.
    QElapsedTimer tick;
    qint64 worst = 0;
    QTimer probe;
    probe.setInterval(1);
    QObject::connect(&probe, &QTimer::timeout, [&] { worst = std::max(worst, tick.restart()); });
    const auto clicked = std::chrono::steady_clock::now();
    tick.start();
    probe.start();
    qobject_cast<QAbstractButton*>(GetDlgItem(view.get(), vh::kButtonViewHoldPos))->click();
    vh::CFilterListCtrl* grid = view->HoldingsGrid();
    const bool done = WaitUntil(
        [&] {
          return view->Core().outstandingAnswers() == 0 && grid->DisplayedRowCount() == kRows;
        },
        120000);
    grid->viewport()->repaint();
    const auto painted = std::chrono::steady_clock::now();
    probe.stop();
    if (!done)
      Die("the grid counted " + std::to_string(grid->DisplayedRowCount()) + " rows");
    const size_t after = ResidentBytes();
    const std::chrono::duration<double> open = opened - start, click = painted - clicked;
    state.SetIterationTime(open.count() + click.count());
    stallMs = std::max(stallMs, double(worst));
    openMs = open.count() * 1e3;
    // The first pass shows growth; later ones reuse what the previous freed.
    bytesPerRow =
        std::max(bytesPerRow, double(after > before ? after - before : 0) / double(kRows));
    countedPerRow = double(view->Core().store().ResidentBytes() + grid->Engine().ResidentBytes()) /
                    double(kRows);
  }
  state.counters["open_ms"] = openMs;
  state.counters["longest_stall_ms"] = stallMs;
  state.counters["resident_bytes_per_row"] = bytesPerRow;
  state.counters["store_and_engine_bytes_per_row"] = countedPerRow;
}
BENCHMARK(BM_ClickToLastRow)->Iterations(2)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
