#include "view_fixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cstdio>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holdings_columns.h"
#include "holdings/view/view_hold.h"
#include "host/host_context.h"
#include "host/startup_loader.h"
#include "plugin/tarn_host_api.h"
#include "riskd/sqlite.h"

#include <sqlite3.h>

namespace vh::test {

BackendFixture::Suite* BackendFixture::suite_ = nullptr;

namespace {

std::string Hundredths(int64_t v) {
  char text[64];
  std::snprintf(text, sizeof text, "%0.2lf", double(v) / 100.0);
  return text;
}

} // namespace

std::vector<Row> DatabaseRows(const std::string& dbPath, const std::string& where) {
  riskd::Db db;
  std::string error;
  EXPECT_TRUE(db.Open(dbPath, &error)) << error;
  riskd::Stmt s = db.Prepare(
      "SELECT h.client_id, h.product, s.nse_series, s.nse_symbol, s.bse_code, s.bse_symbol,"
      " h.holdings_qty, h.holdings_update_qty, h.used_qty, h.collateral_qty,"
      " h.collateral_update_qty, h.withheld_holding_qty, h.withheld_collateral_qty, h.t1_qty,"
      " h.t1_collateral_qty, h.haircut_bp, h.collateral_type, s.close_paise"
      " FROM holding h JOIN scrip s ON s.id = h.scrip_id WHERE " +
          where,
      &error);
  EXPECT_TRUE(s.ok()) << error;
  std::vector<Row> rows;
  static const char* const kTypes[] = {"CL", "LT", "WC"};
  while (s.ok() && s.Step() == SQLITE_ROW) {
    Row r;
    for (int c = 0; c < 6; ++c)
      r.emplace_back(s.Text(c));
    for (int c = 6; c < 15; ++c)
      r.push_back(std::to_string(s.Int(c)));
    r.push_back(Hundredths(s.Int(15)));
    r.push_back(s.IsNull(16) ? "---" : kTypes[s.Int(16)]);
    r.push_back(Hundredths(s.Int(17)));
    rows.push_back(std::move(r));
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::string DatabaseText(const std::string& dbPath, const std::string& sql) {
  riskd::Db db;
  std::string error;
  EXPECT_TRUE(db.Open(dbPath, &error)) << error;
  riskd::Stmt s = db.Prepare(sql, &error);
  EXPECT_TRUE(s.ok()) << error;
  return s.ok() && s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
}

std::vector<Row> GridRows(CViewHold& view) {
  CFilterListCtrl* grid = view.HoldingsGrid();
  std::vector<Row> rows;
  for (int r = 0; r < grid->DisplayedRowCount(); ++r) {
    Row row;
    for (int c = 0; c < kHoldingsColumnCount; ++c)
      row.push_back(grid->GetCellBytes(r, c));
    rows.push_back(std::move(row));
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

bool Pick(QWidget* view, int id, const std::string& text) {
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(view, id));
  const int index = combo ? combo->findText(QString::fromStdString(text), Qt::MatchExactly) : -1;
  if (index < 0)
    return false;
  combo->setCurrentIndex(index);
  emit combo->activated(index);
  return true;
}

bool Click(QWidget* view, int id) {
  auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(view, id));
  if (!button)
    return false;
  button->click();
  return true;
}

bool WaitForAnswers(CViewHold& view, int ms) {
  return QTest::qWaitFor([&] { return view.Core().outstandingAnswers() == 0; }, ms);
}

void BackendFixture::SetUpTestSuite() {
  suite_ = new Suite;
  ASSERT_TRUE(suite_->dir.isValid());
  riskd::RiskServerOptions o;
  suite_->dbPath = suite_->dir.filePath("risk.db").toStdString();
  o.store.dbPath = suite_->dbPath;
  o.store.sample.holdings = 4000;
  o.log = [](const std::string&) {};
  std::string error;
  suite_->server = riskd::RiskServer::Start(o, &error);
  ASSERT_TRUE(suite_->server) << error;
  suite_->control.Start("127.0.0.1", suite_->server->port());
  host::HostContext& h = host::TheHost();
  h.control = &suite_->control;
  host::StartupLoader loader(suite_->control, "RMS1", h.master, h.user);
  QSignalSpy ready(&loader, &host::StartupLoader::ready_);
  ASSERT_TRUE(ready.wait(20000));
}

void BackendFixture::TearDownTestSuite() {
  suite_->control.Stop();
  host::TheHost().control = nullptr;
  delete suite_;
  suite_ = nullptr;
}

void BackendFixture::SetUp() {
  ASSERT_TRUE(suite_ && suite_->server);
  settingsDir = std::make_unique<QTemporaryDir>();
  const std::string dir = settingsDir->path().toStdString();
  paths = std::make_unique<ScopedSettingsPaths>(SettingsPaths{dir, dir});
  SetMessageSink([this](std::string_view text) { messages.emplace_back(text); });
}

void BackendFixture::TearDown() {
  SetMessageSink(nullptr);
  paths.reset();
}

std::unique_ptr<CViewHold> BackendFixture::MakeView() {
  auto view = std::make_unique<CViewHold>();
  view->Initialise("RMS1", 0);
  view->ResetSelection();
  // The peer value's answer comes first, as it does for a user.
  EXPECT_TRUE(QTest::qWaitFor([&] { return view->Core().peerValue() == "P001"; }, 10000));
  messages.clear(); // "File Open Failed" of a first run without settings
  return view;
}

} // namespace vh::test
