// tarn-riskd's largest answer: a holdings query for one scrip held
// 1,053,394 times, from the request to the last frame read by a client on
// loopback. The server runs in-process on a free loopback port over a
// database generated once per run.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "bench/riskd/widely_held_store.h"
#include "kdl/frame.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "riskd/server.h"

namespace {

constexpr int64_t kAnswerRows = 1053394;
constexpr int64_t kClients = kAnswerRows / 2; // two products each

struct Fixture {
  std::filesystem::path dir;
  std::unique_ptr<riskd::RiskServer> server;
  std::string symbol; // the held scrip's NSE trading symbol

  Fixture() {
    dir = std::filesystem::temp_directory_path() / ("riskd_bench_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    riskd::StoreSetup setup;
    riskd::Db db;
    std::string error;
    if (!riskd::bench::MakeWidelyHeldStore((dir / "risk.db").string(), kClients, &setup, &db,
                                           &error)) {
      std::fprintf(stderr, "bench_riskd: %s\n", error.c_str());
      std::abort();
    }
    riskd::Stmt s = db.Prepare("SELECT nse_symbol||'-'||nse_series,"
                               "(SELECT count(*) FROM holding WHERE scrip_id=1)"
                               " FROM scrip WHERE id=1",
                               nullptr);
    if (s.Step() != 100 /* SQLITE_ROW */ || s.IsNull(0)) {
      std::fprintf(stderr, "bench_riskd: scrip 1 has no NSE leg\n");
      std::abort();
    }
    symbol = s.Text(0);
    rows = s.Int(1);
    riskd::RiskServerOptions o;
    o.store = setup;
    o.log = [](const std::string&) {};
    server = riskd::RiskServer::Start(o, &error);
    if (!server) {
      std::fprintf(stderr, "bench_riskd: %s\n", error.c_str());
      std::abort();
    }
  }
  ~Fixture() {
    server.reset();
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
  }
  int64_t rows = 0; // the scrip's holdings rows: the answer's records
};

Fixture& TheFixture() {
  static Fixture f;
  return f;
}

int Connect(uint16_t port) {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_port = htons(port);
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (fd < 0 || connect(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0)
    std::abort();
  return fd;
}

void Send(int fd, const kdl::Message& m) {
  std::string frame;
  if (!kdl::AppendFrame(frame, m.Serialise()) ||
      send(fd, frame.data(), frame.size(), MSG_NOSIGNAL) != ssize_t(frame.size()))
    std::abort();
}

// Resident memory of the process, server and client together, in bytes.
int64_t ResidentBytes() {
  FILE* f = std::fopen("/proc/self/statm", "r");
  long pages = 0, resident = 0;
  if (f) {
    if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2)
      resident = 0;
    std::fclose(f);
  }
  return int64_t{resident} * sysconf(_SC_PAGESIZE);
}

uint32_t U32(const char* p) {
  return kdl::LoadLength(p); // every u32 of the format is little-endian alike
}

// What a client must know of each frame to find the end of an answer:
// whether it answers `name` and whether it carries a status. Walks the
// fields in place (docs/wire-format.md) instead of parsing a message per
// record, so the bench times the server rather than its client. The
// server's frames are trusted here; tests check their content.
struct FrameKind {
  bool answersName = false;
  bool status = false;
};
FrameKind Kind(std::string_view p, std::string_view name) {
  FrameKind k;
  if (p.size() < 4)
    return k;
  const uint32_t fields = U32(p.data());
  size_t at = 4;
  for (uint32_t f = 0; f < fields && at + 8 <= p.size(); ++f) {
    const uint32_t tag = U32(p.data() + at), count = U32(p.data() + at + 4);
    at += 8;
    for (uint32_t v = 0; v < count && at + 4 <= p.size(); ++v) {
      const uint32_t length = U32(p.data() + at);
      if (tag == vh::kTagAnsweredName && v == 0)
        k.answersName = p.substr(at + 4, length) == name;
      at += 4 + length;
    }
    k.status = k.status || tag == vh::kTagStatus;
  }
  return k;
}

// CPU time of the whole process (server thread and client) in ms: on a
// shared machine the wall time also counts other people's work.
double ProcessCpuMs() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return (u.ru_utime.tv_sec + u.ru_stime.tv_sec) * 1e3 +
         (u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e3;
}

struct Reading {
  int64_t records = -1;
  int64_t residentPeak = 0; // sampled after every read
};

// Reads until the status record of `name`, pausing `pauseUs` after each
// read of at most 256 KiB (a slow reader).
Reading ReadAnswer(int fd, std::string_view name, int pauseUs = 0) {
  kdl::FrameSplitter in(1u << 20);
  std::string buf(256 << 10, '\0');
  Reading r;
  int64_t records = 0;
  while (true) {
    std::string_view payload;
    while (in.Next(&payload)) {
      const FrameKind kind = Kind(payload, name);
      if (!kind.answersName)
        continue;
      if (kind.status) {
        r.records = records;
        return r;
      }
      ++records;
    }
    const ssize_t n = recv(fd, buf.data(), buf.size(), 0);
    if (n <= 0)
      return r;
    in.Feed(buf.data(), static_cast<size_t>(n));
    if (pauseUs) {
      r.residentPeak = std::max(r.residentPeak, ResidentBytes());
      usleep(static_cast<useconds_t>(pauseUs));
    }
  }
}

// One answer per iteration on a fresh, logged-in connection. A slow reader
// (pauseUs > 0) also reports the most resident memory (server and client)
// while it lags, and how far that is above where it was before the request:
// the server must not buffer what the reader has not read.
void HoldingsAnswer(benchmark::State& state, int pauseUs) {
  Fixture& f = TheFixture();
  int64_t growth = 0, peak = 0;
  double cpuMs = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const int fd = Connect(f.server->port());
    kdl::Message login;
    login.Add(vh::kTagRequestName, vh::kLoginRequest);
    login.Add(vh::kTagUserId, "RMS1");
    Send(fd, login);
    if (ReadAnswer(fd, vh::kLoginRequest).records != 0)
      std::abort();
    kdl::Message query;
    query.Add(vh::kTagRequestName, "display_holding_detail");
    query.Add(vh::kTagSegment, "nse_cm");
    query.Add(vh::kTagScripCode, f.symbol);
    query.Add(vh::kTagUserId, "RMS1");
    const int64_t before = ResidentBytes();
    const double cpuBefore = ProcessCpuMs();
    state.ResumeTiming();
    Send(fd, query);
    const Reading r = ReadAnswer(fd, "display_holding_detail", pauseUs);
    state.PauseTiming();
    cpuMs += ProcessCpuMs() - cpuBefore;
    close(fd);
    growth = std::max(growth, r.residentPeak - before);
    peak = std::max(peak, r.residentPeak);
    if (r.records != f.rows) {
      state.SkipWithError("the answer lacks records");
      break;
    }
    state.ResumeTiming();
  }
  state.counters["records"] = static_cast<double>(f.rows);
  state.counters["process_cpu_ms"] = cpuMs / static_cast<double>(state.iterations());
  if (pauseUs) {
    state.counters["resident_MB"] = static_cast<double>(peak) / (1 << 20);
    state.counters["resident_growth_MB"] = static_cast<double>(growth) / (1 << 20);
  }
}

void BM_HoldingsAnswer_1053394(benchmark::State& state) {
  HoldingsAnswer(state, 0);
}
BENCHMARK(BM_HoldingsAnswer_1053394)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

// 2 ms after every 256 KiB read: about a second behind a full-speed reader.
void BM_HoldingsAnswer_1053394_SlowReader(benchmark::State& state) {
  HoldingsAnswer(state, 2000);
}
BENCHMARK(BM_HoldingsAnswer_1053394_SlowReader)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

} // namespace

BENCHMARK_MAIN();
