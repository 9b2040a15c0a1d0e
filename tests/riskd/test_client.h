// A blocking client of the risk server for tests: frames out, records in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kdl/frame.h"
#include "kdl/message.h"

namespace riskd_test {

using Fields = std::vector<std::pair<uint32_t, std::string>>;

// A request: field 0 = `name`, then `fields` in order.
kdl::Message MakeRequest(std::string_view name, const Fields& fields = {});

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
  explicit TestClient(uint16_t port, const char* greetAs = "");
  ~TestClient();
  TestClient(const TestClient&) = delete;
  TestClient& operator=(const TestClient&) = delete;

  bool SendRaw(std::string_view bytes);
  bool Send(const kdl::Message& msg);
  // The next record, or nullopt on timeout or when the server closed.
  std::optional<kdl::Message> Next(int timeoutMs = 5000);
  // Records of `name` up to and including its status record; records of
  // other names (price ticks) are skipped.
  Stream Collect(std::string_view name, int timeoutMs = 10000);
  // Sends `request` and collects the answer to it.
  Stream Ask(const kdl::Message& request, int timeoutMs = 10000);
  // True when the server closed the connection within the timeout
  // (everything still arriving is read and dropped).
  bool WaitClosed(int timeoutMs = 5000);

private:
  int fd_ = -1;
  bool closed_ = false; // the server closed the connection
  kdl::FrameSplitter in_{64u << 20};
};

std::string Text(const kdl::Message& msg, uint32_t tag, uint32_t index = 0);

} // namespace riskd_test
