// A server on a free port over a small generated database in a temp dir,
// plus a second connection to that database to compute expectations.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "riskd/server.h"
#include "riskd/sqlite.h"
#include "tests/riskd/test_client.h"
#include "tests/settings/temp_dir.h"

namespace riskd_test {

using vh::test::TempDir;

class RiskdTest : public ::testing::Test {
protected:
  // Starts the server; tests may change options_ first and call it again.
  void StartServer();
  void SetUp() override;
  void TearDown() override;

  int64_t Count(const std::string& sql); // first column of the first row, 0 if none
  std::string Str(const std::string& sql);
  bool LogHas(const std::string& text);

  TempDir dir_;
  riskd::RiskServerOptions options_;
  std::unique_ptr<riskd::RiskServer> server_;
  riskd::Db db_; // the test's own connection

private:
  std::mutex logMutex_;
  std::vector<std::string> log_;
};

} // namespace riskd_test
