// A blocking test client of the risk server, and a server on a free port
// over a small generated database in a temp dir, with a second connection to
// that database to compute expectations.
#pragma once

#include <gtest/gtest.h>

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
kdl::Message MakeRequest(std::string_view name, const Fields& fields = {});
// Value `index` of `tag`, or "<absent>".
std::string Text(const kdl::Message& msg, uint32_t tag, uint32_t index = 0);

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
  Stream Ask(const kdl::Message& request, int timeoutMs = 10000);
  // True when the server closed the connection within the timeout
  // (everything still arriving is read and dropped).
  bool WaitClosed(int timeoutMs = 5000);

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
  // Starts the server; tests may change options_ first and call it again.
  void StartServer();
  void SetUp() override;

  int64_t Count(const std::string& sql); // first column of the first row, 0 if none
  std::string Str(const std::string& sql);
  bool LogHas(const std::string& text);
  // The administrator's holdings query for the NSE leg of the hot scrip.
  kdl::Message HotQuery();
  // A margin transfer of the holding (client, scrip id, product), sent as the
  // plug-in sends it.
  kdl::Message TransferRequest(const std::string& client, const std::string& scrip,
                               const std::string& product, const std::string& qty,
                               const std::string& action, const std::string& user = "RMS1");
  // Sends `request` on `c`, then waits for an answer the server gives only
  // after handling it.
  void SendAndWait(TestClient& c, const kdl::Message& request);

  TempDir dir_;
  riskd::RiskServerOptions options_;
  std::unique_ptr<riskd::RiskServer> server_;
  riskd::Db db_; // the test's own connection
};

} // namespace riskd_test
