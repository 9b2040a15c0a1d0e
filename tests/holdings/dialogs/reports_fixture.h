// A tarn-riskd in-process on a free loopback port over a small generated
// store with frozen prices (four scrips moved, one doubled), the host's
// back-end control logged in as the desk's administrator RMS1, and the
// plug-in's link over it. Messages and status texts are recorded.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "host/backend_control.h"
#include "link/backend_link.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace vh::test {

class ReportsTest : public ::testing::Test {
protected:
  void SetUp() override;
  void TearDown() override;

  // Texts of the shown rows, top to bottom, every column.
  static std::vector<std::vector<std::string>> Shown(vh::CFilterListCtrl& list);
  // Waits until `list` shows `rows` rows; false on timeout.
  static bool WaitRows(vh::CFilterListCtrl& list, int rows, int ms = 10000);
  int64_t Int(const std::string& sql);

  TempDir dir_;
  ScopedSettingsPaths paths_{{dir_.path().string(), dir_.path().string()}};
  riskd::Db db_; // the test's own connection to the store
  std::unique_ptr<riskd::RiskServer> server_;
  host::BackendControl control_;
  std::unique_ptr<CBackendLink> link_;
  ScopedMessageRecorder messages_;
};

} // namespace vh::test
