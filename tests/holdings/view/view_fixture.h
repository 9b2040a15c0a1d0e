// One real tarn-riskd on a loopback port with a small sample database, the
// host services loaded from it, and helpers that drive a CViewHold through
// its controls and read the database the answers come from.
#pragma once

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/backend_control.h"
#include "riskd/server.h"
#include "settings/settings_paths.h"

class QWidget;

namespace vh {
class CViewHold;
}

namespace vh::test {

using Row = std::vector<std::string>; // the 18 cell texts

// The database's rows for `where` (a condition over holding h and scrip s),
// as the holdings grid must show them, sorted.
std::vector<Row> DatabaseRows(const std::string& dbPath, const std::string& where);
// The first value of `sql` as text ("" when none).
std::string DatabaseText(const std::string& dbPath, const std::string& sql);

// The grid's displayed rows, sorted.
std::vector<Row> GridRows(CViewHold& view);

// A user's pick in combo `id` (the view reacts to activation); false when
// the text is not offered.
bool Pick(QWidget* view, int id, const std::string& text);
bool Click(QWidget* view, int id);
// Waits until every answer the view asked for has ended.
bool WaitForAnswers(CViewHold& view, int ms = 20000);

class BackendFixture : public ::testing::Test {
protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  // A new view, initialised as the plug-in does for user RMS1.
  std::unique_ptr<CViewHold> MakeView();

  static std::string dbPath() { return suite_->dbPath; }

  std::vector<std::string> messages; // message boxes shown, in order
  std::unique_ptr<QTemporaryDir> settingsDir;
  std::unique_ptr<ScopedSettingsPaths> paths;

private:
  struct Suite {
    QTemporaryDir dir;
    std::string dbPath;
    std::unique_ptr<riskd::RiskServer> server;
    host::BackendControl control;
  };
  static Suite* suite_;
};

} // namespace vh::test
