// "Lien Reports" through its controls against tarn-riskd: every row checked
// against the store's lien figures; and both dialogs' failure texts.
#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include "holdings/dialogs/lien_report_dlg.h"
#include "holdings/dialogs/top_n_dlg.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/dialogs/reports_fixture.h"
#include "tests/widgets/screenshot.h"

namespace vh::test {
namespace {

void GetReport(CLienReport& dlg, const char* segment) {
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(&dlg, CLienReport::kIdSegment));
  combo->setCurrentIndex(combo->findText(segment));
  Click(dlg, CLienReport::kIdGetReport);
}

TEST_F(ReportsTest, LienReportOfAllSegmentsThenOneMatchesTheStore) {
  CLienReport dlg(link_.get(), "RMS1");
  dlg.show();
  EXPECT_EQ(qobject_cast<QComboBox*>(GetDlgItem(&dlg, CLienReport::kIdSegment))->currentText(),
            "--ALL--");
  const struct {
    const char* name;
    const char* segment;
    std::string where;
  } cases[] = {{"all", "--ALL--", "1"},
               {"derivatives", "Derivatives", "segment='FO'"},
               {"allAgainAfterEmptying", "--ALL--", "1"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    messages_.clear();
    GetReport(dlg, c.segment);
    EXPECT_EQ(messages_.statuses(),
              std::vector<std::string>{"om_get_client_reports request sent successfully"});
    ASSERT_TRUE(QTest::qWaitFor([&] { return !messages_.messages().empty(); }, 10000));
    EXPECT_EQ(messages_.messages(), std::vector<std::string>{"Lien Report Download Completed."});
    const auto rows = Shown(dlg.List());
    ASSERT_EQ(int64_t(rows.size()), Int("SELECT count(*) FROM lien WHERE " + c.where));
    for (const auto& r : rows)
      EXPECT_EQ(Int("SELECT count(*) FROM lien WHERE " + c.where + " AND client_id='" + r[0] +
                    "' AND segment='" + r[1] +
                    "' AND printf('%.2f|%.2f|%.2f', lien_paise/100.0,"
                    " payin_paise/100.0, payout_paise/100.0)='" +
                    r[2] + "|" + r[3] + "|" + r[4] + "'"),
                1)
          << r[0] << " " << r[1];
  }
  if (qEnvironmentVariableIsSet("VH_SCREENSHOTS")) {
    EXPECT_TRUE(SaveScreenshot(dlg, "lien_report"));
  }
  // Resizing: the list stretches, "Cancel" keeps to the right edge.
  QWidget* list = GetDlgItem(&dlg, CLienReport::kIdList);
  QWidget* cancel = GetDlgItem(&dlg, CLienReport::kIdCancel);
  const QRect list0 = list->geometry(), cancel0 = cancel->geometry();
  dlg.resize(dlg.size() + QSize(120, 60));
  EXPECT_EQ(list->geometry(), list0.adjusted(0, 0, 120, 60));
  EXPECT_EQ(cancel->geometry(), cancel0.translated(120, 0));
  Click(dlg, CLienReport::kIdCancel);
  EXPECT_FALSE(dlg.isVisible());
}

TEST_F(ReportsTest, FailuresAreReportedAndNothingIsSent) {
  CLienReport tooLong(link_.get(), std::string(5000, 'U')); // past the scratch buffer
  messages_.clear();
  GetReport(tooLong, "CASH");
  EXPECT_EQ(messages_.statuses(), std::vector<std::string>{"Add source user id Failure"});
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});

  CLienReport lien(link_.get(), "RMS1");
  CTopNDlg topN(link_.get(), {});
  control_.Stop();
  messages_.clear();
  GetReport(lien, "Spot");
  Click(topN, CTopNDlg::kIdRefresh);
  const std::vector<std::string> failed{"om_get_client_reports Request Failure",
                                        "rs_display_topten_holdings Request Failure"};
  EXPECT_EQ(messages_.messages(), failed);
  EXPECT_EQ(messages_.statuses(), failed);
}

} // namespace
} // namespace vh::test
