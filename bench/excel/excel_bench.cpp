// Export of a holdings-sized grid: 1,000,000 rows of 19 columns written to a
// real .xlsx file, with the process's peak resident memory.
//
//   excel_bench [benchmark flags]
//
// Cells are made on the fly from the row number, as a grid's cell callback
// would, so the peak memory is the exporter's own. The file goes to the
// system's temporary folder and is removed afterwards.
#include "excel/excel_interface.h"

#include <sys/resource.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>

namespace vh::bench {
namespace {

constexpr int kRows = 1'000'000;
constexpr int kColumns = 19;

// Heading and types of the holdings grid's columns: ids and symbols as text,
// quantities as integers, prices and haircuts as decimals.
constexpr struct {
  const char* name;
  int type;
} kHeading[kColumns] = {
    {"Client Id", 3},
    {"Product", 3},
    {"Series", 3},
    {"NSE Symbol", 3},
    {"BSE Scrip Code", 3},
    {"BSE Symbol", 3},
    {"Holdings Qty", 1},
    {"Holdings Update Qty", 1},
    {"Used Qty", 1},
    {"Collateral Qty", 1},
    {"Collateral Update Qty", 1},
    {"Withheld Holding Qty", 1},
    {"Withheld Collateral Qty", 1},
    {"T1 Qty", 1},
    {"T1 Collateral Qty", 1},
    {"Haircut", 2},
    {"Collateral Type", 3},
    {"Close Price", 2},
    {"Value", 5},
};

int Cell(void*, int row, int column, std::string& text, int& type) {
  if (row == 0) {
    text = kHeading[column].name;
    type = kHeading[column].type;
    return 1;
  }
  type = -1;
  char buf[32];
  const unsigned r = static_cast<unsigned>(row) * 2654435761u;
  switch (kHeading[column].type) {
  case 1:
    std::snprintf(buf, sizeof buf, "%u", (r >> (column % 8)) % 100000);
    break;
  case 2:
  case 5:
    std::snprintf(buf, sizeof buf, "%u.%02u", (r >> 7) % 5000, r % 100);
    break;
  default:
    std::snprintf(buf, sizeof buf, "C%07u", (r >> (column % 5)) % 10000000);
    break;
  }
  text = buf;
  return 1;
}

// When the last cell was written (the first idle call) and the longest wait
// between idle calls: how long a caller's window would go unserved.
struct IdleClock {
  using Clock = std::chrono::steady_clock;
  Clock::time_point start = Clock::now(), firstIdle, lastIdle;
  double longestGapMs = 0;
  static void Tick(void* context) {
    auto* c = static_cast<IdleClock*>(context);
    const auto now = Clock::now();
    if (c->firstIdle == Clock::time_point())
      c->firstIdle = now;
    else
      c->longestGapMs = std::max(
          c->longestGapMs, std::chrono::duration<double, std::milli>(now - c->lastIdle).count());
    c->lastIdle = now;
  }
};

long PeakRssKib() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

void Export_1m_rows_19_columns(benchmark::State& state) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("vh-excel-bench-" + std::to_string(getpid()) + ".xlsx"))
                               .string();
  const long before = PeakRssKib();
  IdleClock clock;
  for (auto _ : state) {
    clock = IdleClock();
    CExcelInterface excel(kRows + 1, kColumns);
    excel.SetContext(&clock, &Cell);
    excel.SetIdleCallback(&IdleClock::Tick);
    excel.SetFilePath(path);
    if (!excel.WriteToExcel())
      state.SkipWithError("export failed");
  }
  const auto end = IdleClock::Clock::now();
  state.counters["cells_s"] = std::chrono::duration<double>(clock.firstIdle - clock.start).count();
  state.counters["compress_s"] = std::chrono::duration<double>(end - clock.firstIdle).count();
  state.counters["longest_idle_gap_ms"] = clock.longestGapMs;
  std::error_code ec;
  state.counters["file_MiB"] =
      static_cast<double>(std::filesystem::file_size(path, ec)) / (1024.0 * 1024.0);
  state.counters["peak_rss_MiB"] = static_cast<double>(PeakRssKib()) / 1024.0;
  state.counters["rss_growth_MiB"] = static_cast<double>(PeakRssKib() - before) / 1024.0;
  std::filesystem::remove(path, ec);
}

BENCHMARK(Export_1m_rows_19_columns)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
} // namespace vh::bench

BENCHMARK_MAIN();
