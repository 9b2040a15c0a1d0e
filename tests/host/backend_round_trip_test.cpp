// The host's back-end control and start-up load against a real tarn-riskd
// running in-process on a free loopback port with a small sample database.
#include <QApplication>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include "common/host_proc.h"
#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/plugin_loader.h"
#include "host/startup_loader.h"
#include "kdl/message.h"
#include "plugin/tarn_host_api.h"
#include "tests/host/riskd_start.h"

namespace {

// The name of the first answer, whether a stream ended, the last peer value.
struct Recorder : CBrioRxNotifierBase {
  void OnNotify() override {}
  void OnResponse(void*, KdlMsg* msg, void*) override {
    KdlValue v{};
    if (first.empty() && kdl_get_data(msg, 32767, 0, &v, nullptr))
      first.assign(v.data, v.length);
    uint32_t n = 0;
    ended = ended || kdl_get_field(msg, 32766, &n, nullptr);
    if (kdl_get_data(msg, 64056, 0, &v, nullptr))
      peer.assign(v.data, v.length);
  }
  std::string first, peer;
  bool ended = false;
};

bool WaitConnected(host::BackendControl& c, bool up, int ms = 10000) {
  return QTest::qWaitFor([&] { return (c.IsConnected() != 0) == up; }, ms);
}

class BackendRoundTrip : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(dir.isValid());
    // A plug-in loaded here keeps its settings in the test's folder.
    host::TheHost().settingsDirectory = dir.path().toStdString();
    ASSERT_TRUE(server = host_test::StartRiskd(dir.path(), 3000));
    control.Start("127.0.0.1", server->port());
    ASSERT_TRUE(WaitConnected(control, true));
  }
  void TearDown() override { control.Stop(); }
  QTemporaryDir dir;
  std::unique_ptr<riskd::RiskServer> server;
  host::BackendControl control;
};

TEST_F(BackendRoundTrip, StartupLoadFeedsTheHostServices) {
  host::HostContext& h = host::TheHost();
  host::StartupLoader loader(control, "RMS1", h.master, h.user);
  QSignalSpy ready(&loader, &host::StartupLoader::ready_);
  ASSERT_TRUE(ready.wait(10000));
  EXPECT_EQ(h.user.id, "RMS1");
  EXPECT_TRUE(h.user.administrator);
  EXPECT_FALSE(h.user.clientIds.empty());
  ASSERT_FALSE(h.master.NseSymbols().empty());

  // Every NSE leg the back-end listed is found again by the exported service.
  auto details = vh::HostProcAs<pu_get_scrip_details_fn>("pu_get_scrip_details");
  const std::string symbol = h.master.NseSymbols().front();
  const auto trading = h.master.NseTradingSymbols(symbol);
  ASSERT_FALSE(trading.empty());
  TarnScripDetails d;
  details("NSE", QString::fromStdString(trading.front()), &d);
  EXPECT_EQ(d.field[TarnScripDetails::Symbol].toStdString(), symbol);
  EXPECT_TRUE(d.field[TarnScripDetails::Isin].startsWith("IN")) << d.field[7].toStdString();

  host::ScripMaster master;
  host::UserInfo user;
  host::StartupLoader unknown(control, "NOBODY", master, user);
  QSignalSpy failed(&unknown, &host::StartupLoader::failed);
  ASSERT_TRUE(failed.wait(10000));
  EXPECT_TRUE(failed.at(0).at(0).toString().contains("NOBODY"));
}

TEST_F(BackendRoundTrip, VanishedBackEndFailsSendsThenReconnects) {
  const uint16_t port = server->port();
  QSignalSpy changes(&control, &host::BackendControl::connectedChanged);
  server->Stop();
  server.reset();
  ASSERT_TRUE(WaitConnected(control, false));
  kdl::Message req;
  req.Add(0, "om_get_user_peer_data");
  KdlError err{};
  EXPECT_EQ(control.Send(nullptr, req.get(), 0, &err), 0);
  EXPECT_NE(err.code, 0);

  // The same port: the control comes back by itself.
  ASSERT_TRUE(server = host_test::StartRiskd(dir.path(), 3000, false, port));
  ASSERT_TRUE(WaitConnected(control, true, 15000));
  ASSERT_GE(changes.size(), 2);
  EXPECT_FALSE(changes.first().at(0).toBool());
  EXPECT_TRUE(changes.last().at(0).toBool());
  EXPECT_EQ(control.Send(nullptr, req.get(), 0, &err), 1);
}

// A request sent through the control is answered to the end; then the real
// plug-in, loaded as tarntrader loads it, asks the real back-end through this
// host's control and the answer comes back for the user it was opened with.
TEST_F(BackendRoundTrip, RequestsTravelThroughHostToBackEndAndBack) {
  Recorder rx;
  ASSERT_TRUE(control.Attach(&rx));
  kdl::Message req;
  req.Add(0, "om_get_user_peer_data");
  req.Add(31003, "RMS1");
  uint64_t slot = 0;
  KdlError err{};
  ASSERT_EQ(control.Send(&slot, req.get(), 0, &err), 1) << err.text;
  EXPECT_GT(slot, 0u);
  ASSERT_TRUE(QTest::qWaitFor([&] { return rx.ended; }, 10000));
  EXPECT_EQ(rx.peer, "P001");
  EXPECT_EQ(rx.first, "om_get_user_peer_data");

  rx.peer.clear();
  host::TheHost().control = &control;
  host::TheHost().user.rights = {"RMS View Holdings: Mark/UnMark"};

  host::PluginLoader plugin;
  QString error;
  ASSERT_TRUE(plugin.Load(VIEWHOLDINGS_PATH, error)) << error.toStdString();
  QWidget frame;
  TarnHostContext ctx{};
  ctx.parentWindow = &frame;
  plugin.init(&ctx, "RMS2", 1, QString());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !rx.peer.empty(); }, 10000));
  EXPECT_EQ(rx.peer, "P002");
  plugin.exit();
  plugin.Unload(); // while the control it is attached to still lives
  control.Detach(&rx);
  host::TheHost().control = nullptr;
}

} // namespace
