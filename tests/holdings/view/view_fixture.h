// One real tarn-riskd, in the test's process, on a loopback port over a small
// sample database (or one a suite makes), the host services loaded from it,
// and helpers that drive a CViewHold through its controls and read the
// database the answers come from. Every holdings view test over real
// sockets shares it.
#pragma once

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "settings/settings_paths.h"

class QWidget;

namespace vh {
class CViewHold;
}

namespace vh::test {

using Row = std::vector<std::string>; // the 18 cell texts

// The rows of database `db` for `where` (over holding h and scrip s) as the
// holdings grid must show them, sorted; the first value of `sql` ("" when
// none).
std::vector<Row> DatabaseRows(const std::string& db, const std::string& where);
std::string DatabaseText(const std::string& db, const std::string& sql);

struct Scrip {
  std::string id, nseSymbol, nseSeries, bseSymbol, bseGroup;
};

// The grid's displayed rows, sorted.
std::vector<Row> GridRows(CViewHold& view);
// A user's pick in combo `id`; false when the text is not offered.
bool Pick(QWidget* view, int id, const std::string& text);
bool Click(QWidget* view, int id);
// The scrip picked in the NSE (exchange, symbol, series) or BSE (exchange,
// group, symbol) row; false when a pick is not offered.
bool SelectNse(QWidget* view, const Scrip& s);
bool SelectBse(QWidget* view, const Scrip& s);
// Client mode, `client` picked and "View Holdings" pressed; false as Pick.
bool AskForClient(QWidget* view, const std::string& client);
// Waits until every answer the view asked for has ended.
bool WaitForAnswers(CViewHold& view);

class BackendFixture : public ::testing::Test {
protected:
  // A tarn-riskd in this process over a sample database; user RMS1 logged in.
  static void SetUpTestSuite() { StartSuite({}); }
  static void TearDownTestSuite();
  void SetUp() override;
  void TearDown() override;

  // The same over a database `prepare` made first (false: not made).
  static void StartSuite(const std::function<bool(const std::string& db)>& prepare);
  // Stops the back-end (every connection closed; false when the host does not
  // see it go) or starts it again on its port (false when it does not come up).
  static bool StopBackend();
  static bool StartBackend();
  // Waits until the host's connection is up (or down); false on a timeout.
  static bool Connected(bool up);

  // A view initialised as the plug-in does for user RMS1.
  std::unique_ptr<CViewHold> MakeView();
  // The `skip`-th scrip with holdings meeting `condition`.
  static Scrip FindScrip(const std::string& condition, int skip = 0);

  static inline std::string db;            // the suite's database file
  static inline std::string busiestClient; // the client with the most holdings

  std::vector<std::string> messages; // message boxes shown, in order

private:
  QTemporaryDir settingsDir_;
  std::unique_ptr<ScopedSettingsPaths> paths_;
};

} // namespace vh::test
