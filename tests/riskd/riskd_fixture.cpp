#include "tests/riskd/riskd_fixture.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace riskd_test {

kdl::Message MakeRequest(std::string_view name, const Fields& fields) {
  kdl::Message m(64 * 1024);
  m.Add(vh::kTagRequestName, name);
  for (const auto& [tag, value] : fields)
    m.Add(tag, value);
  return m;
}

std::string Text(const kdl::Message& msg, uint32_t tag, uint32_t index) {
  const auto v = msg.Text(tag, index);
  return v ? std::string(*v) : std::string("<absent>");
}

TestClient::TestClient(uint16_t port, const char* greetAs) {
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

TestClient::~TestClient() {
  if (fd_ >= 0)
    close(fd_);
}

bool TestClient::SendRaw(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t n = send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (n <= 0)
      return false;
    bytes.remove_prefix(static_cast<size_t>(n));
  }
  return true;
}

bool TestClient::Send(const kdl::Message& msg) {
  std::string frame;
  return kdl::AppendFrame(frame, msg.Serialise()) && SendRaw(frame);
}

std::optional<kdl::Message> TestClient::Next(int timeoutMs) {
  const timeval wait{timeoutMs / 1000, timeoutMs % 1000 * 1000};
  setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  std::string_view payload;
  while (!in_.Next(&payload)) {
    char buf[65536];
    const ssize_t n = closed_ ? -1 : recv(fd_, buf, sizeof buf, 0);
    if (n < 0 || (closed_ = n == 0)) // timed out, or the server closed
      return std::nullopt;
    in_.Feed(buf, static_cast<size_t>(n));
  }
  return kdl::Message::Parse(payload);
}

Stream TestClient::Collect(std::string_view name, int timeoutMs) {
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

Stream TestClient::Ask(const kdl::Message& request, int timeoutMs) {
  if (!Send(request))
    return {};
  return Collect(*request.Text(vh::kTagRequestName), timeoutMs);
}

bool TestClient::WaitClosed(int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!closed_ && std::chrono::steady_clock::now() < deadline)
    Next(100);
  return closed_;
}

void RiskdTest::SetUp() {
  options_.store.dbPath = (dir_.path() / "risk.db").string();
  options_.store.sample.holdings = 3000;
  options_.log = [this](const std::string& line) {
    std::lock_guard<std::mutex> lock(logMutex_);
    log_.push_back(line);
  };
}

void RiskdTest::StartServer() {
  server_.reset();
  std::string error;
  server_ = riskd::RiskServer::Start(options_, &error);
  ASSERT_TRUE(server_) << error;
  ASSERT_TRUE(db_.Open(options_.store.dbPath, &error)) << error;
}

int64_t RiskdTest::Count(const std::string& sql) {
  return std::atoll(Str(sql).c_str());
}

std::string RiskdTest::Str(const std::string& sql) {
  riskd::Stmt s = db_.Prepare(sql, nullptr);
  EXPECT_TRUE(s.ok()) << sql << ": " << db_.LastError();
  return s.ok() && s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
}

bool RiskdTest::LogHas(const std::string& text) {
  std::lock_guard<std::mutex> lock(logMutex_);
  for (const auto& line : log_)
    if (line.find(text) != std::string::npos)
      return true;
  return false;
}

kdl::Message RiskdTest::HotQuery() {
  const std::string symbol = Str(std::string("SELECT nse_symbol||'-'||nse_series FROM scrip WHERE "
                                             "id=(") +
                                 kHotScripId + ")");
  return MakeRequest(
      "display_holding_detail",
      {{vh::kTagSegment, "nse_cm"}, {vh::kTagScripCode, symbol}, {vh::kTagUserId, "RMS1"}});
}

kdl::Message RiskdTest::TransferRequest(const std::string& client, const std::string& scrip,
                                        const std::string& product, const std::string& qty,
                                        const std::string& action, const std::string& user) {
  return MakeRequest("om_stock_margin_transfer",
                     {{vh::kTagClientId, client},
                      {vh::kTagProduct, product},
                      {vh::kTagIsin, Str("SELECT isin FROM scrip WHERE id=" + scrip)},
                      {vh::kTagHoldingsQty, qty},
                      {vh::kTagAction, action},
                      {vh::kTagSourceUserId, user}});
}

void RiskdTest::SendAndWait(TestClient& c, const kdl::Message& request) {
  ASSERT_TRUE(c.Send(request));
  ASSERT_TRUE(c.Ask(MakeRequest("om_get_user_peer_data")).ended);
}

} // namespace riskd_test
