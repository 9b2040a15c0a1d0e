// A tarn-riskd in-process on a free loopback port over a small generated
// store with frozen prices (four scrips moved, one doubled), the host's
// back-end control logged in as the desk's administrator RMS1, and the
// plug-in's link over it. Messages and status texts are recorded.
#pragma once

#include <QAbstractButton>
#include <QTest>
#include <gtest/gtest.h>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "link/backend_link.h"
#include "plugin/tarn_host_api.h"
#include "riskd/server.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace vh::test {

inline void Click(QWidget& dialog, int id) {
  QTest::mouseClick(qobject_cast<QAbstractButton*>(GetDlgItem(&dialog, id)), Qt::LeftButton);
}

class ReportsTest : public ::testing::Test {
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
    ASSERT_EQ(link_->control(), &control_);
    messages_.clear();
  }
  void TearDown() override {
    link_.reset();
    host::TheHost().control = nullptr;
    control_.Stop();
  }
  // Every cell of the shown rows, top to bottom.
  static std::vector<std::vector<std::string>> Shown(CFilterListCtrl& list) {
    list.Model().Flush();
    std::vector<std::vector<std::string>> out(size_t(list.Engine().DisplayedCount()));
    for (size_t row = 0; row < out.size(); ++row)
      for (int col = 0; col < list.Engine().HeaderItemCount(); ++col)
        out[row].push_back(list.Engine().GetItemText(int(row), col));
    return out;
  }
  static bool WaitRows(CFilterListCtrl& list, int rows) {
    return QTest::qWaitFor([&] { return list.Engine().DisplayedCount() >= rows; }, 10000) &&
           list.Engine().DisplayedCount() == rows;
  }
  int64_t Int(const std::string& sql) { return db_.QueryInt(sql, -1); }

  TempDir dir_;
  ScopedSettingsPaths paths_{{dir_.path().string(), dir_.path().string()}};
  riskd::Db db_; // the test's own connection to the store
  std::unique_ptr<riskd::RiskServer> server_;
  host::BackendControl control_;
  std::unique_ptr<CBackendLink> link_;
  ScopedMessageRecorder messages_;
};

} // namespace vh::test
