// "View TOPN" through its controls against tarn-riskd with frozen prices:
// every value shown is checked against the store.
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <sqlite3.h>

#include <set>
#include <string>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/dialogs/reports_fixture.h"
#include "tests/widgets/screenshot.h"

namespace vh::test {
namespace {

const std::string kLtp =
    "COALESCE((SELECT ltp_paise FROM frozen_price f WHERE f.scrip_id=s.id), s.close_paise)";
const std::string kChange =
    "CASE WHEN s.close_paise=0 THEN 0 ELSE (" + kLtp + "-s.close_paise)*10000/s.close_paise END";

std::string SymbolSql(bool nse) {
  return nse ? "s.nse_symbol||'-'||s.nse_series" : "s.bse_symbol";
}
std::string LegSql(bool nse) {
  return nse ? "s.nse_symbol IS NOT NULL" : "s.bse_code IS NOT NULL";
}

class TopNTest : public ReportsTest {
protected:
  void Click(CTopNDlg& dlg, int id) {
    auto* button = qobject_cast<QAbstractButton*>(GetDlgItem(&dlg, id));
    ASSERT_TRUE(button) << id;
    QTest::mouseClick(button, Qt::LeftButton);
  }
  // The client ids the view would list for RMS1: every client.
  EntityLookup ViewClients() {
    riskd::Stmt s = db_.Prepare("SELECT id FROM client", nullptr);
    auto ids = std::make_shared<std::set<std::string, std::less<>>>();
    while (s.Step() == SQLITE_ROW)
      ids->emplace(s.Text(0));
    return [ids](std::string_view id) { return ids->count(id) > 0; };
  }
  // The store's holding behind a shown row: its client holds the scrip
  // with a value at the frozen price equal to the one shown.
  bool InStore(bool nse, const std::vector<std::string>& row) {
    return Int("SELECT count(*) FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE "
               "h.client_id='" +
               row[0] + "' AND " + SymbolSql(nse) + "='" + row[2] +
               "' AND printf('%.2f', h.holdings_qty*" + kLtp + "/100.0)='" + row[3] + "'") > 0;
  }
};

TEST_F(TopNTest, BothExchangesAndThreeMethodsShowTheStoresLargestOnTop) {
  CTopNDlg dlg(link_.get(), ViewClients());
  dlg.show();
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdNse))->isChecked());
  EXPECT_TRUE(qobject_cast<QRadioButton*>(GetDlgItem(&dlg, CTopNDlg::kIdByLtp))->isChecked());
  const struct {
    const char* name;
    int exchange, method;
    bool nse;
    std::string top; // SQL: symbol and value (hundredths) of the top row
  } cases[] = {
      {"nseByLtp", CTopNDlg::kIdNse, CTopNDlg::kIdByLtp, true, "value DESC"},
      {"bseByLtp", CTopNDlg::kIdBse, CTopNDlg::kIdByLtp, false, "value DESC"},
      {"nseTopChange", CTopNDlg::kIdNse, CTopNDlg::kIdTopChange, true,
       kChange + " DESC, s.id, h.holdings_qty DESC"},
      {"bseTopChange", CTopNDlg::kIdBse, CTopNDlg::kIdTopChange, false,
       kChange + " DESC, s.id, h.holdings_qty DESC"},
      {"nseBottomChange", CTopNDlg::kIdNse, CTopNDlg::kIdBottomChange, true,
       kChange + " ASC, s.id, h.holdings_qty DESC"},
      {"bseBottomChange", CTopNDlg::kIdBse, CTopNDlg::kIdBottomChange, false,
       kChange + " ASC, s.id, h.holdings_qty DESC"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Click(dlg, c.exchange);
    Click(dlg, c.method);
    messages_.clear();
    Click(dlg, CTopNDlg::kIdRefresh);
    EXPECT_EQ(messages_.statuses(),
              std::vector<std::string>{"rs_display_topten_holdings request sent successfully"});
    ASSERT_TRUE(WaitRows(dlg.List(), 10));
    const auto rows = Shown(dlg.List());
    for (const auto& row : rows) {
      EXPECT_EQ(row[1], c.nse ? "nse_cm" : "bse_cm");
      EXPECT_TRUE(InStore(c.nse, row)) << row[0] << " " << row[2] << " " << row[3];
    }
    riskd::Stmt top =
        db_.Prepare("SELECT " + SymbolSql(c.nse) + ", printf('%.2f', h.holdings_qty*" + kLtp +
                        "/100.0), h.holdings_qty*" + kLtp +
                        " AS value FROM holding h JOIN scrip s ON"
                        " s.id=h.scrip_id WHERE " +
                        LegSql(c.nse) + " ORDER BY " + c.top + " LIMIT 1",
                    nullptr);
    ASSERT_EQ(top.Step(), SQLITE_ROW);
    EXPECT_EQ(rows[0][2], top.Text(0));
    EXPECT_EQ(rows[0][3], top.Text(1));
    if (c.method == CTopNDlg::kIdByLtp)
      for (size_t i = 1; i < rows.size(); ++i)
        EXPECT_GE(std::stod(rows[i - 1][3]), std::stod(rows[i][3]));
  }
  if (qEnvironmentVariableIsSet("VH_SCREENSHOTS"))
    EXPECT_TRUE(SaveScreenshot(dlg, "top_n_dlg"));
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});
}

TEST_F(TopNTest, RowWithoutEntityIdShowsNaScaledUpOnTop) {
  ASSERT_TRUE(db_.Exec("INSERT INTO client(id,name) VALUES('','no entity id');"
                       "INSERT INTO holding(client_id,scrip_id,product,holdings_qty)"
                       " SELECT '', id, 'CNC', 9999999 FROM scrip s WHERE nse_symbol IS NOT NULL"
                       " ORDER BY id LIMIT 1",
                       nullptr));
  CTopNDlg dlg(link_.get(), ViewClients());
  Click(dlg, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(WaitRows(dlg.List(), 10));
  const auto rows = Shown(dlg.List());
  riskd::Stmt na =
      db_.Prepare("SELECT " + SymbolSql(true) + ", printf('%.2f', 9999999*" + kLtp +
                      "*100.0) FROM scrip s WHERE " + LegSql(true) + " ORDER BY id LIMIT 1",
                  nullptr);
  ASSERT_EQ(na.Step(), SQLITE_ROW);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"NA", "nse_cm", std::string(na.Text(0)),
                                               std::string(na.Text(1))}));
  for (size_t i = 1; i < rows.size(); ++i)
    EXPECT_TRUE(InStore(true, rows[i])) << rows[i][0];
}

TEST_F(TopNTest, AnswersListedOnlyForKnownClientsLaterOnTop) {
  // A view listing no client of the answer ignores it.
  CTopNDlg strange(link_.get(), [](std::string_view) { return false; });
  Click(strange, CTopNDlg::kIdRefresh);
  QTest::qWait(1500);
  EXPECT_EQ(strange.List().Engine().DisplayedCount(), 0);

  // Two presses before an answer arrives: both answers listed, BSE's on top.
  CTopNDlg dlg(link_.get(), ViewClients());
  dlg.show();
  Click(dlg, CTopNDlg::kIdRefresh);
  Click(dlg, CTopNDlg::kIdBse);
  Click(dlg, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(WaitRows(dlg.List(), 20));
  const auto rows = Shown(dlg.List());
  EXPECT_EQ(rows.front()[1], "bse_cm");
  EXPECT_EQ(rows.back()[1], "nse_cm");
}

TEST_F(TopNTest, SendFailureIsShownAndListEmptied) {
  CTopNDlg dlg(link_.get(), ViewClients());
  Click(dlg, CTopNDlg::kIdRefresh);
  ASSERT_TRUE(WaitRows(dlg.List(), 10));
  control_.Stop();
  messages_.clear();
  Click(dlg, CTopNDlg::kIdRefresh);
  EXPECT_EQ(messages_.messages(),
            std::vector<std::string>{"rs_display_topten_holdings Request Failure"});
  EXPECT_EQ(messages_.statuses(),
            std::vector<std::string>{"rs_display_topten_holdings Request Failure"});
  EXPECT_EQ(dlg.List().Engine().DisplayedCount(), 0);
}

} // namespace
} // namespace vh::test
