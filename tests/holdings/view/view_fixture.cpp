#include "view_fixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QSignalSpy>
#include <QTest>
#include <sqlite3.h>

#include <algorithm>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holdings_columns.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/startup_loader.h"
#include "plugin/tarn_host_api.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"

namespace vh::test {
namespace {

struct Suite {
  QTemporaryDir dir;
  std::unique_ptr<riskd::RiskServer> server;
  uint16_t port = 0; // the first start's, kept for the restarts
  host::BackendControl control;
};
Suite* suite = nullptr;

riskd::Stmt Query(riskd::Db& db, const std::string& path, const std::string& sql) {
  std::string error;
  EXPECT_TRUE(db.Open(path, &error)) << error;
  riskd::Stmt s = db.Prepare(sql, &error);
  EXPECT_TRUE(s.ok()) << error << "\n" << sql;
  return s;
}

} // namespace

std::vector<Row> DatabaseRows(const std::string& path, const std::string& where) {
  riskd::Db db;
  riskd::Stmt s = Query(db, path,
                        "SELECT h.client_id, h.product, s.nse_series, s.nse_symbol, s.bse_code,"
                        " s.bse_symbol, h.holdings_qty, h.holdings_update_qty, h.used_qty,"
                        " h.collateral_qty, h.collateral_update_qty, h.withheld_holding_qty,"
                        " h.withheld_collateral_qty, h.t1_qty, h.t1_collateral_qty,"
                        " printf('%.2f', h.haircut_bp / 100.0),"
                        " coalesce(substr('CLLTWC', 2 * h.collateral_type + 1, 2), '---'),"
                        " printf('%.2f', s.close_paise / 100.0) FROM holding h JOIN scrip s"
                        " ON s.id = h.scrip_id WHERE " +
                            where);
  std::vector<Row> rows;
  while (s.ok() && s.Step() == SQLITE_ROW) {
    rows.emplace_back();
    for (int c = 0; c < kHoldingsColumnCount; ++c)
      rows.back().emplace_back(s.Text(c));
  }
  std::sort(rows.begin(), rows.end());
  return rows;
}

std::string DatabaseText(const std::string& path, const std::string& sql) {
  riskd::Db db;
  riskd::Stmt s = Query(db, path, sql);
  return s.ok() && s.Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
}

std::vector<Row> GridRows(CViewHold& view) {
  CFilterListCtrl* grid = view.HoldingsGrid();
  std::vector<Row> rows(size_t(grid->DisplayedRowCount()));
  for (int r = 0; r < int(rows.size()); ++r)
    for (int c = 0; c < kHoldingsColumnCount; ++c)
      rows[size_t(r)].push_back(grid->GetCellBytes(r, c));
  std::sort(rows.begin(), rows.end());
  return rows;
}

bool Pick(QWidget* view, int id, const std::string& text) {
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(view, id));
  const int index = combo ? combo->findText(QString::fromStdString(text), Qt::MatchExactly) : -1;
  if (index >= 0) {
    combo->setCurrentIndex(index);
    emit combo->activated(index);
  }
  return index >= 0;
}

bool Click(QWidget* view, int id) {
  auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(view, id));
  if (button)
    button->click();
  return button != nullptr;
}

bool SelectNse(QWidget* view, const Scrip& s) {
  return Pick(view, kComboNseExchange, "NSE") && Pick(view, kComboNseSymbol, s.nseSymbol) &&
         Pick(view, kComboNseSeries, s.nseSymbol + "-" + s.nseSeries);
}

bool SelectBse(QWidget* view, const Scrip& s) {
  return Pick(view, kComboBseExchange, "BSE") && Pick(view, kComboBseGroup, s.bseGroup) &&
         Pick(view, kComboBseSymbol, s.bseSymbol);
}

bool AskForClient(QWidget* view, const std::string& client) {
  return Click(view, kRadioClient) && Pick(view, kComboClient, client) &&
         Click(view, kButtonViewHoldPos);
}

bool WaitForAnswers(CViewHold& view) {
  return QTest::qWaitFor([&] { return view.Core().outstandingAnswers() == 0; }, 20000);
}

void BackendFixture::StartSuite(const std::function<bool(const std::string& db)>& prepare) {
  suite = new Suite;
  db = suite->dir.filePath("risk.db").toStdString();
  ASSERT_TRUE((!prepare || prepare(db)) && StartBackend());
  suite->control.Start("127.0.0.1", suite->server->port());
  host::HostContext& h = host::TheHost();
  h.control = &suite->control;
  host::StartupLoader loader(suite->control, "RMS1", h.master, h.user);
  QSignalSpy ready(&loader, &host::StartupLoader::ready_);
  ASSERT_TRUE(ready.wait(60000));
  busiestClient =
      DatabaseText(db, "SELECT client_id FROM holding GROUP BY client_id ORDER BY count(*) DESC");
}

bool BackendFixture::StopBackend() {
  suite->server.reset();
  return Connected(false);
}

bool BackendFixture::StartBackend() {
  riskd::RiskServerOptions o;
  o.store.dbPath = db;
  o.store.sample.holdings = 4000;
  o.port = suite->port;
  o.log = [](const std::string&) {};
  std::string error;
  suite->server = riskd::RiskServer::Start(o, &error);
  EXPECT_TRUE(suite->server) << error;
  if (suite->server)
    suite->port = suite->server->port();
  return suite->server != nullptr;
}

bool BackendFixture::Connected(bool up) {
  return QTest::qWaitFor([&] { return (suite->control.IsConnected() != 0) == up; }, 20000);
}

void BackendFixture::TearDownTestSuite() {
  suite->control.Stop();
  host::TheHost().control = nullptr;
  delete suite;
}

void BackendFixture::SetUp() {
  ASSERT_TRUE(suite && Connected(true));
  const std::string dir = settingsDir_.path().toStdString();
  paths_ = std::make_unique<ScopedSettingsPaths>(SettingsPaths{dir, dir});
  SetMessageSink([this](std::string_view text) { messages.emplace_back(text); });
}

void BackendFixture::TearDown() {
  SetMessageSink(nullptr);
}

std::unique_ptr<CViewHold> BackendFixture::MakeView() {
  auto view = std::make_unique<CViewHold>();
  view->Initialise("RMS1", 0);
  // The peer value's answer comes first, as it does for a user.
  EXPECT_TRUE(QTest::qWaitFor([&] { return view->Core().peerValue() == "P001"; }, 10000));
  messages.clear(); // "File Open Failed" of a first run without settings
  return view;
}

Scrip BackendFixture::FindScrip(const std::string& condition, int skip) {
  riskd::Db opened;
  riskd::Stmt s = Query(opened, db,
                        "SELECT id, nse_symbol, nse_series, bse_symbol, bse_group FROM scrip s"
                        " WHERE " +
                            condition +
                            " AND EXISTS(SELECT 1 FROM holding h WHERE h.scrip_id = s.id)"
                            " ORDER BY id LIMIT 1 OFFSET " +
                            std::to_string(skip));
  const bool found = s.ok() && s.Step() == SQLITE_ROW;
  EXPECT_TRUE(found) << condition;
  return found ? Scrip{std::string(s.Text(0)), std::string(s.Text(1)), std::string(s.Text(2)),
                       std::string(s.Text(3)), std::string(s.Text(4))}
               : Scrip{};
}

} // namespace vh::test
