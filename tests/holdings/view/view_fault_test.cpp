// The holdings view while its back-end fails: tarn-riskd (a process of its
// own, so it can be killed) dies in the middle of a 100,000-row answer, is
// restarted between requests, or is not there when the view opens. The view
// must show only rows the database holds and work again once it is back.
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/startup_loader.h"
#include "riskd/setup.h"
#include "riskd/sqlite.h"
#include "settings/settings_paths.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

constexpr int kClients = 50000; // each holds scrip 1 in two products
constexpr const char* kBigScrip = "h.scrip_id = 1";

bool MakeStore(const std::string& db) {
  riskd::StoreSetup setup;
  setup.dbPath = db;
  setup.sample.holdings = 2000;
  riskd::Db d;
  std::string error;
  const auto quiet = [](const std::string&) {};
  const bool made =
      riskd::SetUpStore(setup, quiet, &d, &error) &&
      d.Exec("BEGIN; CREATE TEMP TABLE n(i INTEGER PRIMARY KEY);"
             "WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM c WHERE i<" +
                 std::to_string(kClients) +
                 ") INSERT INTO n SELECT i FROM c; DELETE FROM holding WHERE scrip_id=1;"
                 "INSERT INTO client SELECT printf('F%07d',i),'' FROM n;"
                 "INSERT INTO holding SELECT printf('F%07d',i),1,p,1+i%1999,i%7,i%5,i%3,0,"
                 "i%11,i%11,i%13,i%13/2,1000+250*(i%30),CASE WHEN i%8=0 THEN NULL ELSE i%3 END"
                 " FROM n, (SELECT 'CNC' p UNION ALL SELECT 'MTF'); COMMIT;",
             &error);
  EXPECT_TRUE(made) << error;
  return made;
}

class Riskd {
public:
  // Listens on the port of the first start; false when it did not come up.
  bool Start(const std::string& db) {
    process_.start(TARN_RISKD_PATH, {"--listen", QString("127.0.0.1:%1").arg(port_), "--db",
                                     QString::fromStdString(db)});
    QByteArray log;
    const bool up = QTest::qWaitFor(
        [&] {
          log += process_.readAllStandardError();
          return log.contains("listening on") || process_.state() == QProcess::NotRunning;
        },
        60000);
    const qsizetype at = log.indexOf("127.0.0.1:");
    if (port_ == 0 && at >= 0)
      port_ = quint16(log.mid(at + 10, 5).trimmed().toUInt());
    return up && process_.state() == QProcess::Running && port_ != 0;
  }
  void Kill(int signal) {
    if (process_.state() != QProcess::NotRunning)
      ::kill(pid_t(process_.processId()), signal);
    process_.waitForFinished(10000);
  }
  quint16 port() const { return port_; }
  ~Riskd() { Kill(SIGKILL); }

private:
  QProcess process_;
  quint16 port_ = 0;
};

struct Suite {
  QTemporaryDir dir;
  std::string db = dir.filePath("risk.db").toStdString();
  Riskd riskd;
  host::BackendControl control;
  std::vector<Row> expected;
};
Suite* suite = nullptr;

class ViewFaultTest : public ::testing::Test {
protected:
  static void SetUpTestSuite() {
    suite = new Suite;
    ASSERT_TRUE(MakeStore(suite->db));
    ASSERT_TRUE(suite->riskd.Start(suite->db));
    suite->control.Start("127.0.0.1", suite->riskd.port());
    host::HostContext& h = host::TheHost();
    h.control = &suite->control;
    host::StartupLoader loader(suite->control, "RMS1", h.master, h.user);
    QSignalSpy ready(&loader, &host::StartupLoader::ready_);
    ASSERT_TRUE(ready.wait(60000));
    suite->expected = DatabaseRows(suite->db, kBigScrip);
    ASSERT_EQ(suite->expected.size(), size_t(2 * kClients));
  }
  static void TearDownTestSuite() {
    suite->control.Stop();
    host::TheHost().control = nullptr;
    delete suite;
  }
  void SetUp() override {
    ASSERT_TRUE(suite && !suite->expected.empty());
    const std::string dir = settings_.path().toStdString();
    paths_ = std::make_unique<ScopedSettingsPaths>(SettingsPaths{dir, dir});
    SetMessageSink([this](std::string_view text) { messages.emplace_back(text); });
  }
  void TearDown() override { SetMessageSink(nullptr); }

  // A view for user RMS1 with scrip 1 picked, as a user would.
  std::unique_ptr<CViewHold> OpenOnBigScrip() {
    auto view = std::make_unique<CViewHold>();
    view->Initialise("RMS1", 0);
    const std::string symbol = DatabaseText(suite->db, "SELECT nse_symbol FROM scrip WHERE id=1");
    const std::string series = DatabaseText(suite->db, "SELECT nse_series FROM scrip WHERE id=1");
    EXPECT_TRUE(Pick(view.get(), kComboNseExchange, "NSE") &&
                Pick(view.get(), kComboNseSymbol, symbol) &&
                Pick(view.get(), kComboNseSeries, symbol + "-" + series));
    return view;
  }
  static bool Connected(bool up) {
    return QTest::qWaitFor([&] { return (suite->control.IsConnected() != 0) == up; }, 20000);
  }
  // The whole answer of a fresh "View Hold/Pos".
  static void ExpectFullAnswer(CViewHold& view, const char* when) {
    ASSERT_TRUE(Click(&view, kButtonViewHoldPos)) << when;
    ASSERT_TRUE(WaitForAnswers(view)) << when << ": the answer never ended";
    const std::vector<Row> rows = GridRows(view);
    EXPECT_TRUE(rows == suite->expected)
        << when << ": " << rows.size() << " rows shown of " << suite->expected.size();
  }

  std::vector<std::string> messages;

private:
  QTemporaryDir settings_;
  std::unique_ptr<ScopedSettingsPaths> paths_;
};

TEST_F(ViewFaultTest, TheNextRequestWorksAfterTheBackEndComesBack) {
  const struct {
    const char* name;
    int signal;
    bool midAnswer;
  } cases[] = {{"killed in the middle of an answer", SIGKILL, true},
               {"restarted between requests", SIGTERM, false}};
  for (const auto& c : cases) {
    auto view = OpenOnBigScrip();
    messages.clear();
    if (c.midAnswer) {
      ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
      ASSERT_TRUE(QTest::qWaitFor([&] { return view->Core().acceptedRecords() > 0; }, 20000));
    } else {
      ExpectFullAnswer(*view, c.name);
    }
    suite->riskd.Kill(c.signal);
    ASSERT_TRUE(Connected(false)) << c.name;
    QTest::qWait(1000); // what had arrived is still being shown
    const std::vector<Row> kept = GridRows(*view);
    EXPECT_FALSE(kept.empty()) << c.name;
    EXPECT_TRUE(
        std::includes(suite->expected.begin(), suite->expected.end(), kept.begin(), kept.end()))
        << c.name << ": a row the database does not hold";
    if (c.midAnswer) {
      EXPECT_LT(kept.size(), suite->expected.size()) << "the kill came after the whole answer";
    }
    ASSERT_TRUE(suite->riskd.Start(suite->db)) << c.name;
    ASSERT_TRUE(Connected(true)) << c.name;
    ExpectFullAnswer(*view, c.name);
    EXPECT_EQ(messages, std::vector<std::string>{}) << c.name;
  }
}

TEST_F(ViewFaultTest, AViewOpenedWhileTheBackEndIsDownWorksOnceItIsUp) {
  suite->riskd.Kill(SIGTERM);
  ASSERT_TRUE(Connected(false));
  auto view = OpenOnBigScrip();
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  std::erase(messages, "File Open Failed"); // a first run without settings
  EXPECT_EQ(messages, (std::vector<std::string>{"om_get_user_peer_data Request Failure",
                                                "display_holding_detail Request Failure"}));
  EXPECT_EQ(view->HoldingsGrid()->DisplayedRowCount(), 0);
  ASSERT_TRUE(suite->riskd.Start(suite->db));
  ASSERT_TRUE(Connected(true));
  ExpectFullAnswer(*view, "after the back-end came up");
}

} // namespace
} // namespace vh::test
