#include "tests/riskd/test_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

namespace riskd_test {

kdl::Message MakeRequest(std::string_view name, const Fields& fields) {
  kdl::Message m(64 * 1024);
  m.Add(0, name);
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
    Ask(MakeRequest("tarn_login", {{31003, greetAs}}));
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
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  std::string_view payload;
  while (!in_.Next(&payload)) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd p{fd_, POLLIN, 0};
    if (closed_ || left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0)
      return std::nullopt;
    char buf[65536];
    const ssize_t n = recv(fd_, buf, sizeof buf, 0);
    if ((closed_ = n <= 0))
      return std::nullopt;
    in_.Feed(buf, static_cast<size_t>(n));
  }
  return kdl::Message::Parse(payload);
}

Stream TestClient::Collect(std::string_view name, int timeoutMs) {
  Stream s;
  while (auto msg = Next(timeoutMs)) {
    if (msg->Text(32767) != name)
      continue;
    if (const auto count = msg->Count(32766)) {
      s.ended = true;
      if (*count > 0)
        s.status = std::string(*msg->Text(32766));
      break;
    }
    s.records.push_back(std::move(*msg));
  }
  return s;
}

Stream TestClient::Ask(const kdl::Message& request, int timeoutMs) {
  if (!Send(request))
    return {};
  return Collect(*request.Text(0), timeoutMs);
}

bool TestClient::WaitClosed(int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  while (!closed_ && std::chrono::steady_clock::now() < deadline)
    Next(100);
  return closed_;
}

} // namespace riskd_test
