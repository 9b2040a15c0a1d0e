// "View TOPN" through its controls against a tarn-riskd in-process over a
// small generated store with frozen prices (four scrips moved, one
// doubled): every value shown is checked against the store. And the lien
// report's refusal of a user id too long.
#include <QAbstractButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "holdings/dialogs/lien_report_dlg.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "link/backend_link.h"
#include "plugin/tarn_host_api.h"
#include "riskd/server.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"
#include "tests/widgets/screenshot.h"

namespace vh::test {
namespace {

const std::string kLtp =
    "COALESCE((SELECT ltp_paise FROM frozen_price f WHERE f.scrip_id=s.id), s.close_paise)";
const std::string kChange =
    "CASE WHEN s.close_paise=0 THEN 0 ELSE (" + kLtp + "-s.close_paise)*10000/s.close_paise END";
const std::string kFrom = " FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE ";

std::string Symbol(bool nse) {
  return nse ? "s.nse_symbol||'-'||s.nse_series" : "s.bse_symbol";
}

void Click(QWidget& dialog, int id) {
  QTest::mouseClick(qobject_cast<QAbstractButton*>(GetDlgItem(&dialog, id)), Qt::LeftButton);
}

// The host's back-end control logged in as the desk's administrator RMS1,
// and the plug-in's link over it. Messages and status texts are recorded.
class TopNTest : public ::testing::Test {
protected:
  void SetUp() override {
    riskd::RiskServerOptions o;
    o.store.dbPath = (dir_.path() / "risk.db").string();
    o.store.sample.holdings = 3000;
    o.frozenPrices = true;
    o.log = [](const std::string&) {};
    std::string error;
    ASSERT_TRUE(riskd::SetUpStore(o.store, o.log, &db_, &error)) << error;
    // +9%, +7%, -8%, -6% and +100% on the first five scrips with both legs.
    ASSERT_TRUE(
        db_.Exec("INSERT INTO frozen_price SELECT id, close_paise*(100+CASE rn WHEN 1"
                 " THEN 9 WHEN 2 THEN 7 WHEN 3 THEN -8 WHEN 4 THEN -6 ELSE 100 END)/100"
                 " FROM (SELECT id, close_paise, row_number() OVER (ORDER BY id) rn FROM"
                 " scrip WHERE nse_symbol NOTNULL AND bse_code NOTNULL AND close_paise>1000)"
                 " WHERE rn<=5",
                 &error))
        << error;
    server_ = riskd::RiskServer::Start(o, &error);
    ASSERT_TRUE(server_) << error;
    control_.SetLogin("RMS1", {});
    control_.Start("127.0.0.1", server_->port());
    ASSERT_TRUE(QTest::qWaitFor([&] { return control_.IsConnected() != 0; }, 10000));
    host::TheHost().control = &control_; // what the link's GetBrioRxControl hands out
    link_ = std::make_unique<CBackendLink>(nullptr);
  }
  // The members go in reverse: the link before the control it uses.
  void TearDown() override { host::TheHost().control = nullptr; }
  // Every cell of the shown rows, top to bottom, once `rows` rows show.
  static std::vector<std::vector<std::string>> Shown(CFilterListCtrl& list, int rows) {
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.Engine().DisplayedCount() >= rows; }, 10000));
    list.Model().Flush();
    std::vector<std::vector<std::string>> out(size_t(list.Engine().DisplayedCount()));
    for (size_t row = 0; row < out.size(); ++row)
      for (int col = 0; col < list.Engine().HeaderItemCount(); ++col)
        out[row].push_back(list.Engine().GetItemText(int(row), col));
    return out;
  }
  // True when `client` holds the row's scrip worth the value shown, the
  // value scaled by `scale` ("/100.0" for a listed client, "*100.0" for NA).
  bool InStore(bool nse, const std::vector<std::string>& row, const std::string& client,
               const char* scale = "/100.0") {
    return db_.QueryInt("SELECT count(*)" + kFrom + "h.client_id='" + client + "' AND " +
                            Symbol(nse) + "='" + row[2] + "' AND printf('%.2f', h.holdings_qty*" +
                            kLtp + scale + ")='" + row[3] + "'",
                        -1) > 0;
  }

  TempDir dir_;
  ScopedSettingsPaths paths_{{dir_.path().string(), dir_.path().string()}};
  riskd::Db db_; // the test's own connection to the store
  std::unique_ptr<riskd::RiskServer> server_;
  host::BackendControl control_;
  std::unique_ptr<CBackendLink> link_;
  ScopedMessageRecorder messages_;
};

TEST_F(TopNTest, TheStoresRankingsTheNaRowAndUnknownClients) {
  CTopNDlg dlg(link_.get(), {});
  dlg.show();
  messages_.clear(); // "File Open Failed" of a first run without settings
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdNse))->isChecked());
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdByLtp))->isChecked());
  // The exchange and the method reach the request apart: each is asked
  // for at least once.
  const struct {
    const char* name;
    int exchange, method;
    std::string top; // the store's order whose first row shows on top (ties by scrip)
  } cases[] = {
      {"nseByLtp", CTopNDlg::kIdNse, CTopNDlg::kIdByLtp, "value DESC"},
      {"bseRising", CTopNDlg::kIdBse, CTopNDlg::kIdTopChange, kChange + " DESC"},
      {"nseFalling", CTopNDlg::kIdNse, CTopNDlg::kIdBottomChange, kChange + " ASC"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const bool nse = c.exchange == CTopNDlg::kIdNse;
    Click(dlg, c.exchange);
    Click(dlg, c.method);
    Click(dlg, CTopNDlg::kIdRefresh);
    const auto rows = Shown(dlg.List(), 10);
    ASSERT_EQ(rows.size(), 10u);
    for (const auto& row : rows)
      EXPECT_TRUE(row[1] == (nse ? "nse_cm" : "bse_cm") && InStore(nse, row, row[0])) << row[0];
    riskd::Stmt top = db_.Prepare(
        "SELECT " + Symbol(nse) + "||' '||printf('%.2f', h.holdings_qty*" + kLtp + "/100.0), " +
            "h.holdings_qty*" + kLtp + " AS value" + kFrom + (nse ? "s.nse_symbol" : "s.bse_code") +
            " NOTNULL ORDER BY " + c.top + ", s.id, h.holdings_qty DESC",
        nullptr);
    ASSERT_EQ(top.Step(), SQLITE_ROW);
    EXPECT_EQ(rows[0][2] + " " + rows[0][3], top.Text(0));
  }
  EXPECT_TRUE(SaveScreenshot(dlg, "top_n_dlg"));

  // A holding of no client: its row goes last in the answer, so it shows
  // as NA on top, its value scaled the other way. Two presses before an
  // answer arrives: both answers, BSE's on top.
  ASSERT_TRUE(db_.Exec("INSERT INTO client(id) VALUES('');"
                       "INSERT INTO holding(client_id,scrip_id,product,holdings_qty) SELECT '',"
                       " id, 'CNC', 9999999 FROM scrip WHERE nse_symbol IS NOT NULL LIMIT 1",
                       nullptr));
  Click(dlg, CTopNDlg::kIdByLtp);
  Click(dlg, CTopNDlg::kIdRefresh);
  Click(dlg, CTopNDlg::kIdBse);
  Click(dlg, CTopNDlg::kIdRefresh);
  const auto rows = Shown(dlg.List(), 20);
  ASSERT_EQ(rows.size(), 20u);
  EXPECT_EQ(rows[0][1] + rows[10][1], "bse_cmnse_cm");
  EXPECT_TRUE(rows[10][0] + rows[10][1] == "NAnse_cm" && InStore(true, rows[10], "", "*100.0"));
  EXPECT_TRUE(InStore(true, rows[11], rows[11][0]));
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});
  // A view that lists none of the answer's clients shows nothing.
  CTopNDlg strange(link_.get(), [](std::string_view) { return false; });
  QSignalSpy answered(&control_, &host::BackendControl::idle);
  Click(strange, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(answered.wait(10000));
  EXPECT_EQ(strange.List().Engine().DisplayedCount(), 0);
}

// A user id past the request's scratch buffer: the status says so, and
// no message box shows.
TEST_F(TopNTest, ALienReportForAUserIdTooLong) {
  CLienReport tooLong(link_.get(), std::string(5000, 'U'));
  messages_.clear();
  Click(tooLong, CLienReport::kIdGetReport);
  EXPECT_EQ(messages_.statuses(), std::vector<std::string>{"Add source user id Failure"});
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});
}

} // namespace
} // namespace vh::test
