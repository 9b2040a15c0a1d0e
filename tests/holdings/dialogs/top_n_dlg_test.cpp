// "View TOPN" through its controls against tarn-riskd with frozen prices:
// every value shown is checked against the store. And the view's buttons
// that open both report dialogs.
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <sqlite3.h>

#include "holdings/dialogs/lien_report_dlg.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "holdings/view/view_hold.h"
#include "host/startup_loader.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/dialogs/reports_fixture.h"
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

class TopNTest : public ReportsTest {
protected:
  // The view's client ids for RMS1: every client.
  EntityLookup ViewClients() {
    return [this](std::string_view id) {
      return Int("SELECT count(*) FROM client WHERE id='" + std::string(id) + "'") > 0;
    };
  }
  // True when the row's client holds the scrip worth the value shown.
  bool InStore(bool nse, const std::vector<std::string>& row) {
    return Int("SELECT count(*)" + kFrom + "h.client_id='" + row[0] + "' AND " + Symbol(nse) +
               "='" + row[2] + "' AND printf('%.2f', h.holdings_qty*" + kLtp + "/100.0)='" +
               row[3] + "'") > 0;
  }
};

TEST_F(TopNTest, BothExchangesAndThreeMethodsShowTheStoresLargestOnTop) {
  CTopNDlg dlg(link_.get(), ViewClients());
  dlg.show();
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdNse))->isChecked());
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdByLtp))->isChecked());
  const std::string rising = kChange + " DESC, s.id, h.holdings_qty DESC";
  const std::string falling = kChange + " ASC, s.id, h.holdings_qty DESC";
  // The exchange and the method reach the request apart: each is asked
  // for at least once.
  const struct {
    const char* name;
    int exchange, method;
    std::string top; // the store's order whose first row shows on top
  } cases[] = {
      {"nseByLtp", CTopNDlg::kIdNse, CTopNDlg::kIdByLtp, "value DESC"},
      {"bseRising", CTopNDlg::kIdBse, CTopNDlg::kIdTopChange, rising},
      {"nseFalling", CTopNDlg::kIdNse, CTopNDlg::kIdBottomChange, falling},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const bool nse = c.exchange == CTopNDlg::kIdNse;
    Click(dlg, c.exchange);
    Click(dlg, c.method);
    messages_.clear();
    Click(dlg, CTopNDlg::kIdRefresh);
    EXPECT_EQ(messages_.statuses(),
              std::vector<std::string>{"rs_display_topten_holdings request sent successfully"});
    ASSERT_TRUE(WaitRows(dlg.List(), 10));
    const auto rows = Shown(dlg.List());
    for (const auto& row : rows)
      EXPECT_TRUE(row[1] == (nse ? "nse_cm" : "bse_cm") && InStore(nse, row)) << row[0];
    riskd::Stmt top =
        db_.Prepare("SELECT " + Symbol(nse) + "||' '||printf('%.2f', h.holdings_qty*" + kLtp +
                        "/100.0), " + "h.holdings_qty*" + kLtp + " AS value" + kFrom +
                        (nse ? "s.nse_symbol" : "s.bse_code") + " NOTNULL ORDER BY " + c.top,
                    nullptr);
    ASSERT_EQ(top.Step(), SQLITE_ROW);
    EXPECT_EQ(rows[0][2] + " " + rows[0][3], top.Text(0));
  }
  if (qEnvironmentVariableIsSet("VH_SCREENSHOTS")) {
    EXPECT_TRUE(SaveScreenshot(dlg, "top_n_dlg"));
  }
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});
}

TEST_F(TopNTest, NaRowOnTopUnknownClientsIgnoredLaterAnswerOnTop) {
  ASSERT_TRUE(db_.Exec("INSERT INTO client(id) VALUES('');"
                       "INSERT INTO holding(client_id,scrip_id,product,holdings_qty) SELECT '',"
                       " id, 'CNC', 9999999 FROM scrip WHERE nse_symbol IS NOT NULL LIMIT 1",
                       nullptr));
  // Two presses before an answer arrives: both answers, BSE's on top.
  CTopNDlg dlg(link_.get(), ViewClients());
  dlg.show();
  Click(dlg, CTopNDlg::kIdRefresh);
  Click(dlg, CTopNDlg::kIdBse);
  Click(dlg, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(WaitRows(dlg.List(), 20));
  const auto rows = Shown(dlg.List());
  EXPECT_EQ(rows[0][1] + rows[10][1], "bse_cmnse_cm");
  riskd::Stmt na = db_.Prepare("SELECT " + Symbol(true) + ", printf('%.2f', h.holdings_qty*" +
                                   kLtp + "*100.0)" + kFrom + "h.client_id=''",
                               nullptr);
  ASSERT_EQ(na.Step(), SQLITE_ROW);
  EXPECT_EQ(rows[10], (std::vector<std::string>{"NA", "nse_cm", std::string(na.Text(0)),
                                                std::string(na.Text(1))}));
  EXPECT_TRUE(InStore(true, rows[11]));
  // A view that lists none of the answer's clients shows nothing.
  CTopNDlg strange(link_.get(), [](std::string_view) { return false; });
  QSignalSpy answered(&control_, &host::BackendControl::idle);
  Click(strange, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(answered.wait(10000));
  EXPECT_EQ(strange.List().Engine().DisplayedCount(), 0);
}

TEST_F(TopNTest, ViewButtonsOpenTheReportDialogs) {
  host::StartupLoader loader(control_, "RMS1", host::TheHost().master, host::TheHost().user);
  ASSERT_TRUE(QSignalSpy(&loader, &host::StartupLoader::ready_).wait(10000));
  CViewHold view; // lists the clients of RMS1 in combo 9013
  view.Initialise("RMS1", 0);
  view.show();
  QWidget* topTen = GetDlgItem(&view, 21013);
  QWidget* lien = GetDlgItem(&view, 21028);
  ASSERT_TRUE(topTen && lien);
  EXPECT_TRUE(topTen->isVisible() && !topTen->geometry().intersects(lien->geometry()));
  Click(view, 21013);
  Click(view, 21013); // brings the same dialog back
  ASSERT_EQ(view.findChildren<CTopNDlg*>().size(), 1);
  CTopNDlg* topN = view.findChild<CTopNDlg*>();
  Click(*topN, CTopNDlg::kIdRefresh);
  // Listed only because the answer's first client is in the view's list.
  EXPECT_TRUE(topN->isVisible() && WaitRows(topN->List(), 10));
  Click(view, 21028);
  ASSERT_TRUE(view.findChild<CLienReport*>() && view.findChild<CLienReport*>()->isVisible());
}

} // namespace
} // namespace vh::test
