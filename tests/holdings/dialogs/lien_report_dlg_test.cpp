// "Lien Reports" through its controls against tarn-riskd: rows and amounts
// checked against the store's lien figures.
#include <QComboBox>
#include <QPushButton>
#include <QTest>

#include <string>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/dialogs/lien_report_dlg.h"
#include "plugin/tarn_host_api.h"
#include "tests/holdings/dialogs/reports_fixture.h"
#include "tests/widgets/screenshot.h"

namespace vh::test {
namespace {

const char* kCompleted = "Lien Report Download Completed.";

class LienTest : public ReportsTest {
protected:
  void GetReport(CLienReport& dlg, const char* segment) {
    auto* combo = qobject_cast<QComboBox*>(GetDlgItem(&dlg, CLienReport::kIdSegment));
    ASSERT_TRUE(combo);
    combo->setCurrentIndex(combo->findText(segment));
    ASSERT_EQ(combo->currentText(), segment);
    messages_.clear();
    QTest::mouseClick(qobject_cast<QPushButton*>(GetDlgItem(&dlg, CLienReport::kIdGetReport)),
                      Qt::LeftButton);
  }
  bool WaitCompleted() {
    return QTest::qWaitFor([&] { return !messages_.messages().empty(); }, 10000);
  }
};

TEST_F(LienTest, AllSegmentsThenOneMatchTheStore) {
  CLienReport dlg(link_.get(), "RMS1");
  dlg.show();
  auto* combo = qobject_cast<QComboBox*>(GetDlgItem(&dlg, CLienReport::kIdSegment));
  ASSERT_TRUE(combo);
  QStringList shown;
  for (int i = 0; i < combo->count(); ++i)
    shown << combo->itemText(i);
  EXPECT_EQ(shown,
            (QStringList{"--ALL--", "CASH", "Derivatives", "Currency", "Commodities", "Spot"}));
  EXPECT_EQ(combo->currentText(), "--ALL--");
  const struct {
    const char* name;
    const char* segment;
    std::string where;
  } cases[] = {
      {"all", "--ALL--", "1"},
      {"derivatives", "Derivatives", "segment='FO'"},
      {"allAgainEmptiesTheList", "--ALL--", "1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GetReport(dlg, c.segment);
    EXPECT_EQ(messages_.statuses(),
              std::vector<std::string>{"om_get_client_reports request sent successfully"});
    ASSERT_TRUE(WaitCompleted());
    EXPECT_EQ(messages_.messages(), std::vector<std::string>{kCompleted});
    const int64_t want = Int("SELECT count(*) FROM lien WHERE " + c.where);
    ASSERT_GT(want, 0);
    const auto rows = Shown(dlg.List());
    ASSERT_EQ(int64_t(rows.size()), want);
    for (const auto& row : rows)
      EXPECT_EQ(Int("SELECT count(*) FROM lien WHERE " + c.where + " AND client_id='" + row[0] +
                    "' AND segment='" + row[1] + "' AND printf('%.2f', lien_paise/100.0)='" +
                    row[2] + "' AND printf('%.2f', payin_paise/100.0)='" + row[3] +
                    "' AND printf('%.2f', payout_paise/100.0)='" + row[4] + "'"),
                1)
          << row[0] << " " << row[1];
  }
  if (qEnvironmentVariableIsSet("VH_SCREENSHOTS"))
    EXPECT_TRUE(SaveScreenshot(dlg, "lien_report"));
}

TEST_F(LienTest, FailuresAreReportedAndNothingIsSent) {
  CLienReport dlg(link_.get(), std::string(5000, 'U')); // no room in the scratch buffer
  GetReport(dlg, "CASH");
  EXPECT_EQ(messages_.statuses(), std::vector<std::string>{"Add source user id Failure"});
  EXPECT_EQ(messages_.messages(), std::vector<std::string>{});

  CLienReport sane(link_.get(), "RMS1");
  control_.Stop();
  GetReport(sane, "Spot");
  EXPECT_EQ(messages_.messages(),
            std::vector<std::string>{"om_get_client_reports Request Failure"});
  EXPECT_EQ(messages_.statuses(),
            std::vector<std::string>{"om_get_client_reports Request Failure"});
}

TEST_F(LienTest, ResizingKeepsTheListAndCancelWithTheEdges) {
  CLienReport dlg(link_.get(), "RMS1");
  dlg.show();
  QWidget* list = GetDlgItem(&dlg, CLienReport::kIdList);
  QWidget* cancel = GetDlgItem(&dlg, CLienReport::kIdCancel);
  QWidget* get = GetDlgItem(&dlg, CLienReport::kIdGetReport);
  const QRect list0 = list->geometry(), cancel0 = cancel->geometry(), get0 = get->geometry();
  dlg.resize(dlg.size() + QSize(120, 60));
  QTest::qWait(50);
  EXPECT_EQ(list->geometry(), list0.adjusted(0, 0, 120, 60));
  EXPECT_EQ(cancel->geometry(), cancel0.translated(120, 0));
  EXPECT_EQ(get->geometry(), get0);
  QTest::mouseClick(qobject_cast<QPushButton*>(cancel), Qt::LeftButton);
  EXPECT_FALSE(dlg.isVisible());
}

} // namespace
} // namespace vh::test
