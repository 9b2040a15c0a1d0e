// A holdings answer taken in the way the plug-in takes it: frames parsed
// into messages, dispatched by the receiver, filled into records and
// inserted into the row engine of a reverse-display grid.
//
//   bench_holdings [benchmark flags]
//
// Reports records per second (items_per_second) for a 100,000-record slice,
// and, once, the resident bytes per row at 1,000,000 rows with the engine.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <string>
#include <vector>

#include "grid/row_engine.h"
#include "holdings/holdings_columns.h"
#include "holdings/view_hold_core.h"
#include "kdl/message.h"
#include "link/alw_grp_req_rx.h"
#include "link/backend_link.h"
#include "link/envelope.h"

extern "C" __attribute__((visibility("default"))) TarnBackendControl*
GetBrioRxControl(int, CBrioRxNotifierBase*) {
  return nullptr;
}

namespace vh {
namespace {

constexpr size_t kSlice = 100'000;
constexpr size_t kMillion = 1'000'000;

std::string ClientId(size_t i) {
  return "CL" + std::to_string(1000000 + i);
}

// One record as tarn-riskd writes it for a scrip with both legs, the scrip
// being one of `scrips` (1: a scrip-mode answer; more: a mix).
std::string Frame(size_t i, size_t scrips = 1) {
  const size_t k = i % scrips;
  kdl::Message m;
  const std::string q = std::to_string(i % 5000);
  m.Add(kTagAnsweredName, "display_holding_detail");
  m.Add(54001, ClientId(i));
  m.Add(63001, "nse_cm");
  m.Add(63100, "SCRIP" + std::to_string(k) + "-EQ");
  m.Add(10100, std::to_string(2885 + k));
  m.Add(63001, "bse_cm");
  m.Add(63100, "SCRIP" + std::to_string(k));
  m.Add(10100, std::to_string(500000 + k));
  m.Add(63003, std::to_string(500000 + k));
  m.Add(59351, std::to_string(123450 + k));
  m.Add(64030, i % 3 ? "CNC" : "MTF");
  for (uint32_t tag : {64044, 64300, 64205, 64297, 64301, 64461, 64462, 64204, 64435})
    m.Add(tag, q);
  m.Add(64172, i % 2 ? "12.50" : "20.00");
  m.Add(64171, std::to_string(i % 3));
  return std::string(m.Serialise());
}

struct Host : ViewHoldHost {
  bool ScripDetails(std::string_view, std::string_view symbol, ScripDetailFields& out) override {
    out[kScripIsin] = "INE" + std::string(symbol);
    return true;
  }
  void LookupNseTradingSymbol() override {}
  void OnBseCounterpart(const std::optional<std::string>&) override {}
};

// The holdings grid as the window sets it up: reverse display, the view's
// data sources over the core's store, the eighteen columns.
struct EngineGrid : HoldingsGridSink {
  void Attach(const HoldingsStore& store) {
    source = std::make_unique<HoldingsCellSource>(store);
    engine.SetOwnerDataSource(&HoldingsCellSource::CellText, source.get());
    engine.SetViewDataSource(&HoldingsCellSource::CellView, source.get());
    engine.SetColumns(HoldingsColumns(), kHoldingsColumnCount);
    engine.SetReverseDisplay(true);
  }
  void ClearRows() override { engine.DeleteAllItems(); }
  void InsertRecord(CViewHoldings* r) override {
    engine.InsertItem(0, {});
    engine.SetItemData(0, HoldingsCellSource::ItemData(r));
  }
  void FlushRecords() override {}
  void OnPriceSlotChanged(uint32_t) override {}
  std::unique_ptr<HoldingsCellSource> source;
  RowEngine engine;
};

struct View {
  explicit View(size_t clients) {
    grid.Attach(core.store());
    core.CreateLink();
    for (size_t i = 0; i < clients; ++i)
      core.clientIds().Add(ClientId(i));
  }
  Host host;
  EngineGrid grid;
  CViewHoldCore core{host, grid};
};

// Parses and dispatches frames [first, first + n) of `frames` (cycled),
// each into the one reused message, as the host's delivery does.
void Take(CViewHoldCore& core, const std::vector<std::string>& frames, size_t first, size_t n) {
  kdl::Message msg = kdl::Message::Reader();
  for (size_t i = 0; i < n; ++i) {
    if (!msg.ParseInto(frames[(first + i) % frames.size()]))
      std::abort();
    core.link()->receiver()->OnResponse(nullptr, msg.get(), nullptr);
  }
}

} // namespace
} // namespace vh

namespace vh {
namespace {

void BM_TakeHoldingsAnswer(benchmark::State& state) {
  std::vector<std::string> frames;
  for (size_t i = 0; i < kSlice; ++i)
    frames.push_back(Frame(i, size_t(state.range(0))));
  View view(kSlice);
  for (auto _ : state) {
    state.PauseTiming();
    view.core.ClearAnswer();
    state.ResumeTiming();
    Take(view.core, frames, 0, kSlice);
    view.grid.FlushRecords();
  }
  if (view.grid.engine.RowCount() != kSlice)
    state.SkipWithError("records were dropped");
  state.SetItemsProcessed(int64_t(state.iterations() * kSlice));
}
// Arg: the number of scrips the answer mixes (1 is the scrip-mode answer
// of the speed target).
BENCHMARK(BM_TakeHoldingsAnswer)->Arg(1)->Arg(50)->Unit(benchmark::kMillisecond);

// The floor under the figure above: parsing the frames alone, as the
// host does before the plug-in sees a record.
void BM_ParseFramesOnly(benchmark::State& state) {
  std::vector<std::string> frames;
  for (size_t i = 0; i < kSlice; ++i)
    frames.push_back(Frame(i));
  kdl::Message msg = kdl::Message::Reader();
  for (auto _ : state) {
    for (const std::string& f : frames)
      if (!msg.ParseInto(f))
        std::abort();
  }
  state.SetItemsProcessed(int64_t(state.iterations() * kSlice));
}
BENCHMARK(BM_ParseFramesOnly)->Unit(benchmark::kMillisecond);

size_t HeapInUse() {
  const struct mallinfo2 m = mallinfo2();
  return m.uordblks + m.hblkhd;
}

// A million records of distinct clients; heap growth per row, measured
// with and without the client index (which belongs to the combo's size,
// not to the answer's).
void BM_ResidentBytesPerRow(benchmark::State& state) {
  for (auto _ : state) {
    const size_t before = HeapInUse();
    View view(kMillion);
    const size_t withIndex = HeapInUse();
    for (size_t i = 0; i < kMillion; i += kSlice) {
      std::vector<std::string> frames;
      for (size_t j = i; j < i + kSlice; ++j)
        frames.push_back(Frame(j));
      Take(view.core, frames, 0, kSlice);
    }
    const size_t after = HeapInUse();
    if (view.grid.engine.RowCount() != kMillion)
      state.SkipWithError("records were dropped");
    state.counters["rows_and_engine_B"] = double(after - withIndex) / kMillion;
    state.counters["with_client_index_B"] = double(after - before) / kMillion;
    state.counters["engine_B"] = double(view.grid.engine.ResidentBytes()) / kMillion;
    state.counters["store_B"] = double(view.core.store().ResidentBytes()) / kMillion;
  }
}
BENCHMARK(BM_ResidentBytesPerRow)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace vh

BENCHMARK_MAIN();
