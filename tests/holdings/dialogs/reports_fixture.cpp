#include "tests/holdings/dialogs/reports_fixture.h"

#include <QTest>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "host/host_context.h"
#include "riskd/setup.h"

namespace vh::test {

void ReportsTest::SetUp() {
  riskd::RiskServerOptions o;
  o.store.dbPath = (dir_.path() / "risk.db").string();
  o.store.sample.holdings = 3000;
  o.frozenPrices = true;
  o.log = [](const std::string&) {};
  std::string error;
  ASSERT_TRUE(riskd::SetUpStore(o.store, o.log, &db_, &error)) << error;
  // +9%, +7%, -8%, -6% and +100% on the first five scrips with both legs.
  ASSERT_TRUE(db_.Exec("INSERT INTO frozen_price SELECT id, close_paise*(100+CASE rn"
                       " WHEN 1 THEN 9 WHEN 2 THEN 7 WHEN 3 THEN -8 WHEN 4 THEN -6 ELSE 100 END)"
                       "/100 FROM (SELECT id, close_paise, row_number() OVER (ORDER BY id) rn"
                       " FROM scrip WHERE nse_symbol IS NOT NULL AND bse_code IS NOT NULL"
                       " AND close_paise>1000) WHERE rn<=5",
                       &error))
      << error;
  server_ = riskd::RiskServer::Start(o, &error);
  ASSERT_TRUE(server_) << error;
  control_.SetLogin("RMS1", {});
  control_.Start("127.0.0.1", server_->port());
  ASSERT_TRUE(QTest::qWaitFor([&] { return control_.IsConnected() != 0; }, 10000));
  host::TheHost().control = &control_;
  link_ = std::make_unique<CBackendLink>(nullptr);
  ASSERT_EQ(link_->control(), &control_);
  messages_.clear();
}

void ReportsTest::TearDown() {
  link_.reset();
  host::TheHost().control = nullptr;
  control_.Stop();
  if (server_)
    server_->Stop();
}

std::vector<std::vector<std::string>> ReportsTest::Shown(CFilterListCtrl& list) {
  list.Model().Flush();
  std::vector<std::vector<std::string>> out;
  for (int row = 0; row < list.Engine().DisplayedCount(); ++row) {
    out.emplace_back();
    for (int col = 0; col < list.Engine().HeaderItemCount(); ++col)
      out.back().push_back(list.Engine().GetItemText(row, col));
  }
  return out;
}

bool ReportsTest::WaitRows(CFilterListCtrl& list, int rows, int ms) {
  return QTest::qWaitFor([&] { return list.Engine().DisplayedCount() >= rows; }, ms) &&
         list.Engine().DisplayedCount() == rows;
}

int64_t ReportsTest::Int(const std::string& sql) {
  return db_.QueryInt(sql, -1);
}

} // namespace vh::test
