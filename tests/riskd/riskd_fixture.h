// A blocking test client of the risk server, and a server on a free port
// over a small generated database in a temp dir, with a second connection to
// that database to compute expectations.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kdl/frame.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"
#include "tests/settings/temp_dir.h"

namespace riskd_test {

using vh::test::TempDir;
using Fields = std::vector<std::pair<uint32_t, std::string>>;

// The scrip most clients hold, and how many holdings it has.
inline constexpr const char* kHotScripId =
    "SELECT scrip_id FROM holding GROUP BY 1 ORDER BY count(*) DESC LIMIT 1";
inline constexpr const char* kHotCount =
    "SELECT count(*) FROM holding GROUP BY scrip_id ORDER BY 1 DESC LIMIT 1";

// A request: field 0 = `name`, then `fields` in order.
inline kdl::Message MakeRequest(std::string_view name, const Fields& fields = {}) {
  kdl::Message m(64 * 1024);
  m.Add(vh::kTagRequestName, name);
  for (const auto& [tag, value] : fields)
    m.Add(tag, value);
  return m;
}

// Value `index` of `tag`, or "<absent>".
inline std::string Text(const kdl::Message& msg, uint32_t tag, uint32_t index = 0) {
  const auto v = msg.Text(tag, index);
  return v ? std::string(*v) : std::string("<absent>");
}

struct Stream {
  std::vector<kdl::Message> records; // data records of the name, in order
  bool ended = false;                // a status record arrived
  std::optional<std::string> status; // its value; nullopt when it had none
};

class TestClient {
public:
  // Connects and logs in as `greetAs` (empty: the desk's administrator), as
  // every connection must before its first request, and waits for the
  // answer; nullptr: no login.
  explicit TestClient(uint16_t port, const char* greetAs = "") {
    fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(port);
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd_ >= 0 && connect(fd_, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) {
      close(fd_);
      fd_ = -1;
    }
    if (fd_ >= 0 && greetAs)
      Ask(MakeRequest(vh::kLoginRequest, {{vh::kTagUserId, greetAs}}));
  }
  ~TestClient() {
    if (fd_ >= 0)
      close(fd_);
  }
  TestClient(const TestClient&) = delete;
  TestClient& operator=(const TestClient&) = delete;

  bool SendRaw(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t n = send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (n <= 0)
        return false;
      bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
  }
  bool Send(const kdl::Message& msg) {
    std::string frame;
    return kdl::AppendFrame(frame, msg.Serialise()) && SendRaw(frame);
  }
  // The next record, or nullopt when none comes within the timeout or the
  // server closed.
  std::optional<kdl::Message> Next(int timeoutMs = 5000) {
    const timeval wait{timeoutMs / 1000, timeoutMs % 1000 * 1000};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    std::string_view payload;
    while (!in_.Next(&payload)) {
      char buf[65536];
      const ssize_t n = closed_ ? -1 : recv(fd_, buf, sizeof buf, 0);
      if (n < 0 || (closed_ = n == 0))
        return std::nullopt;
      in_.Feed(buf, static_cast<size_t>(n));
    }
    return kdl::Message::Parse(payload);
  }
  // Records of `name` up to and including its status record; records of
  // other names (price ticks) are skipped.
  Stream Collect(std::string_view name, int timeoutMs = 10000) {
    Stream s;
    while (auto msg = Next(timeoutMs)) {
      if (msg->Text(vh::kTagAnsweredName) != name)
        continue;
      if (const auto count = msg->Count(vh::kTagStatus)) {
        s.ended = true;
        if (*count > 0)
          s.status = std::string(*msg->Text(vh::kTagStatus));
        break;
      }
      s.records.push_back(std::move(*msg));
    }
    return s;
  }
  Stream Ask(const kdl::Message& request, int timeoutMs = 10000) {
    return Send(request) ? Collect(*request.Text(vh::kTagRequestName), timeoutMs) : Stream();
  }
  // True when the server closed the connection within the timeout
  // (everything still arriving is read and dropped).
  bool WaitClosed(int timeoutMs = 5000) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!closed_ && std::chrono::steady_clock::now() < deadline)
      Next(100);
    return closed_;
  }

private:
  int fd_ = -1;
  bool closed_ = false;
  kdl::FrameSplitter in_{64u << 20};
};

class RiskdTest : public ::testing::Test {
  // Declared first, so that they outlive the server that logs to them.
  std::mutex logMutex_;
  std::vector<std::string> log_;

protected:
  void SetUp() override {
    options_.store.dbPath = dir_.file("risk.db");
    options_.store.sample.holdings = 3000;
    options_.log = [this](const std::string& line) {
      std::lock_guard<std::mutex> lock(logMutex_);
      log_.push_back(line);
    };
  }
  // Starts the server; tests may change options_ first and call it again.
  void StartServer() {
    server_.reset();
    std::string error;
    server_ = riskd::RiskServer::Start(options_, &error);
    ASSERT_TRUE(server_) << error;
    ASSERT_TRUE(db_.Open(options_.store.dbPath, &error)) << error;
  }
  // The first column of the first row of `sql`; "" (0) if none.
  std::string Str(const std::string& sql) {
    riskd::Stmt s = db_.Prepare(sql, nullptr);
    EXPECT_TRUE(s.ok()) << sql << ": " << db_.LastError();
    return s.ok() && s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
  }
  int64_t Count(const std::string& sql) { return std::atoll(Str(sql).c_str()); }
  bool LogHas(const std::string& text) {
    std::lock_guard<std::mutex> lock(logMutex_);
    for (const auto& line : log_)
      if (line.find(text) != std::string::npos)
        return true;
    return false;
  }
  // The administrator's holdings query for the NSE leg of the hot scrip.
  kdl::Message HotQuery() {
    const std::string symbol =
        Str(std::string("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE id=(") + kHotScripId +
            ")");
    return MakeRequest(
        "display_holding_detail",
        {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, symbol}, {vh::kTagUserId, "RMS1"}});
  }
  // A margin transfer of the holding (client, scrip id, product), sent as the
  // plug-in sends it.
  kdl::Message TransferRequest(const std::string& client, const std::string& scrip,
                               const std::string& product, const std::string& qty,
                               const std::string& action, const std::string& user = "RMS1") {
    return MakeRequest("om_stock_margin_transfer",
                       {{vh::kTagClientId, client},
                        {vh::kTagProduct, product},
                        {vh::kTagIsin, Str("SELECT isin FROM scrip WHERE id=" + scrip)},
                        {vh::kTagHoldingsQty, qty},
                        {vh::kTagAction, action},
                        {vh::kTagSourceUserId, user}});
  }
  // Sends `request` on `c`, then waits for an answer the server gives only
  // after handling it.
  void SendAndWait(TestClient& c, const kdl::Message& request) {
    ASSERT_TRUE(c.Send(request));
    ASSERT_TRUE(c.Ask(MakeRequest("om_get_user_peer_data")).ended);
  }

  TempDir dir_;
  riskd::RiskServerOptions options_;
  std::unique_ptr<riskd::RiskServer> server_;
  riskd::Db db_; // the test's own connection
};

} // namespace riskd_test
