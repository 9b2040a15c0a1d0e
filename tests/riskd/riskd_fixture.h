// A server on a free port over a small generated database in a temp dir,
// plus a second connection to that database to compute expectations.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "kdl/tags.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"
#include "tests/riskd/test_client.h"
#include "tests/settings/temp_dir.h"

namespace riskd_test {

using vh::test::TempDir;

// Holdings of the scrip most clients hold.
inline constexpr const char* kHotCount =
    "SELECT count(*) FROM holding GROUP BY scrip_id ORDER BY 1 DESC LIMIT 1";

class RiskdTest : public ::testing::Test {
protected:
  // Starts the server; tests may change options_ first and call it again.
  void StartServer();
  void SetUp() override;
  void TearDown() override;

  int64_t Count(const std::string& sql); // first column of the first row, 0 if none
  std::string Str(const std::string& sql);
  bool LogHas(const std::string& text);
  // The NSE trading symbol of the scrip most clients hold, and the
  // administrator's holdings query for it.
  std::string HotScrip();
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

private:
  std::mutex logMutex_;
  std::vector<std::string> log_;
};

} // namespace riskd_test
