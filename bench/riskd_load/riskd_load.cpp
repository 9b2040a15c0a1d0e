// Load on tarn-riskd: many connections, each logged in and asking for
// holdings again and again for a bounded time. Every answer is checked
// against the store (its records as a multiset: client, scrip code,
// product, the nine quantities, haircut, collateral type), and the
// server's resident memory is sampled throughout.
//
//   riskd_load [--connections N] [--seconds S] [--rows R] [--max-rss-mb M]
//              [--riskd PATH]
//
// Starts its own tarn-riskd on a free loopback port over a fresh sample
// store in a temporary directory. Exit status 0 only when every answer was
// complete and correct and the peak resident memory stayed under M MiB.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "kdl/frame.h"
#include "kdl/message.h"
#include "kdl/tags.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  int connections = 50;
  int seconds = 20;
  int rows = 300000;
  int maxRssMb = 256;
  std::string riskd = VH_RISKD_BINARY;
};

constexpr std::string_view kHoldings = "display_holding_detail";

uint64_t Fnv(std::string_view s) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : s)
    h = (h ^ c) * 1099511628211ull;
  // A final mix, so that sums of record hashes do not cancel easily.
  h ^= h >> 33;
  h *= 0xff51afd7ed558ccdull;
  h ^= h >> 33;
  return h;
}

// What an answer must hold: how many records, and the sum of their hashes.
struct Digest {
  int64_t records = 0;
  uint64_t sum = 0;
  void Add(std::string_view canonical) {
    ++records;
    sum += Fnv(canonical);
  }
  bool operator==(const Digest&) const = default;
};

struct Query {
  std::string label;
  std::vector<std::pair<uint32_t, std::string>> fields;
  Digest expected;
};

std::string Canonical(std::string_view client, std::string_view code, std::string_view product,
                      const std::vector<std::string>& quantities, std::string_view haircut,
                      std::string_view collateralType) {
  std::string s;
  s.append(client).append("|").append(code).append("|").append(product);
  for (const std::string& q : quantities)
    s.append("|").append(q);
  s.append("|").append(haircut).append("|").append(collateralType);
  return s;
}

std::string Hundredths(int64_t v) {
  char buf[32];
  const uint64_t m = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
  std::snprintf(buf, sizeof buf, "%s%llu.%02llu", v < 0 ? "-" : "",
                static_cast<unsigned long long>(m / 100), static_cast<unsigned long long>(m % 100));
  return buf;
}

const char* Col(sqlite3_stmt* s, int i) {
  const unsigned char* t = sqlite3_column_text(s, i);
  return t ? reinterpret_cast<const char*>(t) : "";
}

// The expected answer of every query, read from the store directly.
bool ExpectedFromStore(const std::string& db, std::vector<Query>& queries) {
  sqlite3* h = nullptr;
  if (sqlite3_open_v2(db.c_str(), &h, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK)
    return false;
  const char* rowsSql =
      "SELECT h.client_id, CASE WHEN s.nse_symbol IS NOT NULL AND s.nse_symbol <> ''"
      " THEN s.nse_token ELSE s.bse_code END, h.product, h.holdings_qty,"
      " h.holdings_update_qty, h.used_qty, h.collateral_qty, h.collateral_update_qty,"
      " h.withheld_holding_qty, h.withheld_collateral_qty, h.t1_qty, h.t1_collateral_qty,"
      " h.haircut_bp, h.collateral_type FROM holding h JOIN scrip s ON s.id = h.scrip_id"
      " WHERE ";
  const auto failed = [&] {
    std::fprintf(stderr, "riskd_load: %s\n", sqlite3_errmsg(h));
    return false;
  };
  auto digestOf = [&](const std::string& where, const std::string& bind, Digest& d) {
    sqlite3_stmt* s = nullptr;
    if (sqlite3_prepare_v2(h, (rowsSql + where).c_str(), -1, &s, nullptr) != SQLITE_OK)
      return failed();
    sqlite3_bind_text(s, 1, bind.c_str(), -1, SQLITE_TRANSIENT);
    while (sqlite3_step(s) == SQLITE_ROW) {
      std::vector<std::string> q;
      for (int i = 3; i < 12; ++i)
        q.push_back(std::to_string(sqlite3_column_int64(s, i)));
      d.Add(Canonical(Col(s, 0), Col(s, 1), Col(s, 2), q, Hundredths(sqlite3_column_int64(s, 12)),
                      sqlite3_column_type(s, 13) == SQLITE_NULL
                          ? "-"
                          : std::to_string(sqlite3_column_int64(s, 13))));
    }
    sqlite3_finalize(s);
    return true;
  };
  bool ok = true;
  // Clients: the ten busiest and forty others spread over the table.
  sqlite3_stmt* s = nullptr;
  ok = ok && sqlite3_prepare_v2(h,
                                "SELECT client_id FROM (SELECT client_id, count(*) n FROM holding"
                                " GROUP BY client_id) ORDER BY n DESC, client_id LIMIT 10",
                                -1, &s, nullptr) == SQLITE_OK;
  std::vector<std::string> clients;
  while (ok && sqlite3_step(s) == SQLITE_ROW)
    clients.push_back(Col(s, 0));
  sqlite3_finalize(s);
  ok = ok && sqlite3_prepare_v2(
                 h,
                 "SELECT id FROM (SELECT id, row_number() OVER (ORDER BY id) r FROM client)"
                 " WHERE r % (SELECT max(1, count(*) / 40) FROM client) = 0"
                 " LIMIT 40",
                 -1, &s, nullptr) == SQLITE_OK;
  while (ok && sqlite3_step(s) == SQLITE_ROW)
    clients.push_back(Col(s, 0));
  sqlite3_finalize(s);
  for (const std::string& c : clients) {
    Query q{"client " + c, {{vh::kTagClientId, c}}, {}};
    ok = ok && digestOf("h.client_id = ?1", c, q.expected);
    queries.push_back(std::move(q));
  }
  // Scrips: the five with most holdings rows that trade on NSE.
  ok = ok && sqlite3_prepare_v2(h,
                                "SELECT s.nse_symbol || '-' || s.nse_series, s.id FROM scrip s"
                                " JOIN holding h ON h.scrip_id = s.id WHERE s.nse_symbol <> ''"
                                " GROUP BY s.id ORDER BY count(*) DESC, s.id LIMIT 5",
                                -1, &s, nullptr) == SQLITE_OK;
  while (ok && sqlite3_step(s) == SQLITE_ROW) {
    Query q{std::string("scrip ") + Col(s, 0),
            {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, Col(s, 0)}},
            {}};
    ok = ok && digestOf("h.scrip_id = CAST(?1 AS INTEGER)", Col(s, 1), q.expected);
    queries.push_back(std::move(q));
  }
  sqlite3_finalize(s);
  if (!ok)
    failed();
  sqlite3_close(h);
  return ok && queries.size() >= 2;
}

kdl::Message Request(std::string_view name,
                     const std::vector<std::pair<uint32_t, std::string>>& fields) {
  kdl::Message m(64 * 1024);
  (void)m.Add(vh::kTagRequestName, name);
  for (const auto& [tag, value] : fields)
    (void)m.Add(tag, value);
  return m;
}

class Client {
public:
  explicit Client(uint16_t port) {
    fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd_ >= 0 && connect(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
      close(fd_);
      fd_ = -1;
    }
  }
  ~Client() {
    if (fd_ >= 0)
      close(fd_);
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool Send(const kdl::Message& m) {
    std::string frame;
    if (fd_ < 0 || !kdl::AppendFrame(frame, m.Serialise()))
      return false;
    std::string_view rest = frame;
    while (!rest.empty()) {
      const ssize_t n = send(fd_, rest.data(), rest.size(), MSG_NOSIGNAL);
      if (n <= 0)
        return false;
      rest.remove_prefix(static_cast<size_t>(n));
    }
    return true;
  }

  // Reads the answer to `name` up to its status record: its records'
  // digest, or nullopt when the connection broke, timed out, or the
  // status was not "1". Records of other streams are skipped.
  std::optional<Digest> Answer(std::string_view name, int timeoutMs) {
    Digest d;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    while (true) {
      std::string_view payload;
      while (in_.Next(&payload)) {
        const auto m = kdl::Message::Parse(payload);
        if (!m)
          return std::nullopt;
        if (m->Text(vh::kTagAnsweredName) != name)
          continue;
        if (m->Count(vh::kTagStatus))
          return m->Text(vh::kTagStatus) == "1" ? std::optional<Digest>(d) : std::nullopt;
        std::vector<std::string> q;
        for (uint32_t tag : vh::kHoldingQuantityTags)
          q.emplace_back(m->Text(tag).value_or("?"));
        d.Add(Canonical(
            m->Text(vh::kTagClientId).value_or("?"), m->Text(vh::kTagScripCode).value_or(""),
            m->Text(vh::kTagProduct).value_or("?"), q, m->Text(vh::kTagHaircut).value_or("?"),
            m->Text(vh::kTagCollateralType).value_or("-")));
      }
      const auto left =
          std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
      pollfd p{fd_, POLLIN, 0};
      if (left <= 0 || poll(&p, 1, static_cast<int>(left)) <= 0)
        return std::nullopt;
      const ssize_t n = recv(fd_, buf_.data(), buf_.size(), 0);
      if (n <= 0)
        return std::nullopt;
      in_.Feed(buf_.data(), static_cast<size_t>(n));
    }
  }

private:
  int fd_ = -1;
  kdl::FrameSplitter in_{64u << 20};
  std::string buf_ = std::string(256 << 10, '\0');
};

// tarn-riskd as a child process; its stderr is drained by a thread.
class Server {
public:
  bool Start(const Options& o, const std::string& db) {
    int err[2];
    if (pipe(err) != 0)
      return false;
    pid_ = fork();
    if (pid_ == 0) {
      dup2(err[1], 2);
      close(err[0]);
      close(err[1]);
      const std::string rows = std::to_string(o.rows);
      execl(o.riskd.c_str(), o.riskd.c_str(), "--listen", "127.0.0.1:0", "--db", db.c_str(),
            "--rows", rows.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    close(err[1]);
    if (pid_ < 0)
      return false;
    reader_ = std::thread([this, fd = err[0]] {
      std::string line;
      char c;
      while (read(fd, &c, 1) == 1) {
        if (c != '\n') {
          line += c;
          continue;
        }
        std::lock_guard lock(mutex_);
        const size_t at = line.find("listening on 127.0.0.1:");
        if (at != std::string::npos)
          port_ = std::atoi(line.c_str() + at + 23);
        log_.push_back(line);
        line.clear();
      }
      close(fd);
    });
    for (int i = 0; i < 1200; ++i) { // a fresh store takes a while
      {
        std::lock_guard lock(mutex_);
        if (port_ > 0)
          return true;
      }
      if (waitpid(pid_, nullptr, WNOHANG) == pid_) {
        pid_ = -1;
        return false;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
  }
  ~Server() {
    if (pid_ > 0) {
      kill(pid_, SIGTERM);
      waitpid(pid_, nullptr, 0);
    }
    if (reader_.joinable())
      reader_.join();
  }
  uint16_t port() const { return static_cast<uint16_t>(port_); }
  pid_t pid() const { return pid_; }
  std::vector<std::string> Log() {
    std::lock_guard lock(mutex_);
    return log_;
  }

private:
  pid_t pid_ = -1;
  int port_ = 0;
  std::thread reader_;
  std::mutex mutex_;
  std::vector<std::string> log_;
};

// VmRSS of `pid` in KiB, 0 when it cannot be read.
long ResidentKib(pid_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/status";
  FILE* f = std::fopen(path.c_str(), "r");
  if (!f)
    return 0;
  char line[256];
  long kib = 0;
  while (std::fgets(line, sizeof line, f))
    if (std::sscanf(line, "VmRSS: %ld kB", &kib) == 1)
      break;
  std::fclose(f);
  return kib;
}

bool ParseArgs(int argc, char** argv, Options& o) {
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string a = argv[i], v = argv[i + 1];
    if (a == "--connections")
      o.connections = std::atoi(v.c_str());
    else if (a == "--seconds")
      o.seconds = std::atoi(v.c_str());
    else if (a == "--rows")
      o.rows = std::atoi(v.c_str());
    else if (a == "--max-rss-mb")
      o.maxRssMb = std::atoi(v.c_str());
    else if (a == "--riskd")
      o.riskd = v;
    else
      return false;
  }
  return argc % 2 == 1 && o.connections > 0 && o.connections <= 250 && o.seconds > 0 &&
         o.rows > 0 && o.maxRssMb > 0;
}

} // namespace

int main(int argc, char** argv) {
  Options o;
  if (!ParseArgs(argc, argv, o)) {
    std::fprintf(stderr, "usage: riskd_load [--connections N<=250] [--seconds S] [--rows R]"
                         " [--max-rss-mb M] [--riskd PATH]\n");
    return 2;
  }
  const auto dir =
      std::filesystem::temp_directory_path() / ("riskd_load_" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  const std::string db = (dir / "risk.db").string();
  int status = 1;
  {
    Server server;
    std::vector<Query> queries;
    if (!server.Start(o, db)) {
      std::fprintf(stderr, "riskd_load: tarn-riskd did not start\n");
      for (const std::string& l : server.Log())
        std::fprintf(stderr, "  %s\n", l.c_str());
    } else if (!ExpectedFromStore(db, queries)) {
      std::fprintf(stderr, "riskd_load: cannot read the store\n");
    } else {
      const long startKib = ResidentKib(server.pid());
      std::atomic<bool> stop{false};
      std::atomic<long> peakKib{startKib};
      std::atomic<int64_t> answers{0}, records{0}, wrong{0}, broken{0};
      std::atomic<int64_t> slowestMs{0};
      std::mutex reportMutex;
      std::vector<std::string> reports;
      std::thread sampler([&] {
        while (!stop) {
          peakKib = std::max(peakKib.load(), ResidentKib(server.pid()));
          std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
      });
      const auto until = Clock::now() + std::chrono::seconds(o.seconds);
      std::vector<std::thread> workers;
      for (int w = 0; w < o.connections; ++w) {
        workers.emplace_back([&, w] {
          Client c(server.port());
          if (!c.Send(Request("tarn_login", {{vh::kTagUserId, ""}})) ||
              !c.Answer("tarn_login", 30000)) {
            ++broken;
            return;
          }
          for (size_t i = static_cast<size_t>(w); Clock::now() < until; ++i) {
            const Query& q = queries[i % queries.size()];
            const auto asked = Clock::now();
            const auto got =
                c.Send(Request(kHoldings, q.fields)) ? c.Answer(kHoldings, 60000) : std::nullopt;
            const int64_t ms =
                std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - asked).count();
            slowestMs = std::max(slowestMs.load(), ms);
            if (!got) {
              ++broken;
              return;
            }
            ++answers;
            records += got->records;
            if (!(*got == q.expected)) {
              ++wrong;
              std::lock_guard lock(reportMutex);
              reports.push_back(q.label + ": " + std::to_string(got->records) + " records, " +
                                std::to_string(q.expected.records) + " expected");
            }
          }
        });
      }
      for (std::thread& t : workers)
        t.join();
      stop = true;
      sampler.join();
      const long endKib = ResidentKib(server.pid());
      for (const std::string& r : reports)
        std::fprintf(stderr, "riskd_load: wrong answer, %s\n", r.c_str());
      std::printf("riskd_load: %d connections for %d s over %d sample rows, %zu queries\n",
                  o.connections, o.seconds, o.rows, queries.size());
      std::printf("  answers %lld (%.1f/s), records %lld, wrong %lld, broken %lld,"
                  " slowest answer %lld ms\n",
                  static_cast<long long>(answers.load()), double(answers) / o.seconds,
                  static_cast<long long>(records.load()), static_cast<long long>(wrong.load()),
                  static_cast<long long>(broken.load()), static_cast<long long>(slowestMs.load()));
      std::printf("  tarn-riskd resident: %.1f MiB at start, %.1f MiB peak, %.1f MiB at end"
                  " (bound %d MiB)\n",
                  startKib / 1024.0, peakKib / 1024.0, endKib / 1024.0, o.maxRssMb);
      const bool ok = wrong == 0 && broken == 0 && answers > 0 &&
                      peakKib.load() < long{o.maxRssMb} * 1024 && endKib > 0;
      status = ok ? 0 : 1;
      if (!ok)
        std::fprintf(stderr, "riskd_load: FAILED\n");
    }
  }
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  return status;
}
