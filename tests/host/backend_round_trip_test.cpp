// The host's back-end control and start-up load against a real tarn-riskd
// running in-process on a free loopback port with a small sample database:
// answers, a back-end that goes away, the plug-in's round trip, and the
// control under load and under receivers that change the receiver list
// while a message is being delivered.
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <functional>

#include "host/backend_control.h"
#include "host/host_context.h"
#include "host/plugin_loader.h"
#include "host/startup_loader.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "plugin/tarn_host_api.h"
#include "tests/host/riskd_start.h"

namespace {

// Counts the messages and ended answers; keeps the last peer value.
struct Recorder : CBrioRxNotifierBase {
  void OnNotify() override {}
  void OnResponse(void*, KdlMsg* msg, void*) override {
    ++calls;
    KdlValue v{};
    uint32_t n = 0;
    ends += kdl_get_field(msg, vh::kTagStatus, &n, nullptr) ? 1 : 0;
    if (kdl_get_data(msg, 64056, 0, &v, nullptr))
      peer.assign(v.data, v.length);
    if (onMessage)
      onMessage();
  }
  std::string peer;
  int calls = 0;
  int ends = 0;
  std::function<void()> onMessage;
};

bool WaitConnected(host::BackendControl& c, bool up, int ms = 10000) {
  return QTest::qWaitFor([&] { return (c.IsConnected() != 0) == up; }, ms);
}

class BackendRoundTrip : public ::testing::Test {
protected:
  void SetUp() override { Connect(host::BackendControl::kMaxPending); }
  // A fresh tarn-riskd, and a control that keeps at most `maxPending`
  // messages waiting for the window.
  void Connect(size_t maxPending) {
    ASSERT_TRUE(dir.isValid());
    // A plug-in loaded here keeps its settings in the test's folder.
    host::TheHost().settingsDirectory = dir.path().toStdString();
    if (control)
      control->Stop();
    ASSERT_TRUE(server = host_test::StartRiskd(dir.path(), 3000));
    control = std::make_unique<host::BackendControl>(nullptr, maxPending);
    control->Start("127.0.0.1", server->port());
    ASSERT_TRUE(WaitConnected(*control, true));
  }
  void Ask(const char* name) {
    kdl::Message req;
    req.Add(vh::kTagRequestName, name);
    req.Add(vh::kTagSourceUserId, "RMS1");
    KdlError err{};
    ASSERT_EQ(control->Send(nullptr, req.get(), 0, &err), 1) << err.text;
  }
  void TearDown() override {
    if (control)
      control->Stop();
  }
  QTemporaryDir dir;
  std::unique_ptr<riskd::RiskServer> server;
  std::unique_ptr<host::BackendControl> control;
};

// Every test over the view's back-end fixtures waits for a load that
// succeeds; a user the back-end does not know fails it.
TEST_F(BackendRoundTrip, StartupLoadFailsForAnUnknownUser) {
  host::ScripMaster master;
  host::UserInfo user;
  host::StartupLoader unknown(*control, "NOBODY", master, user);
  QSignalSpy failed(&unknown, &host::StartupLoader::failed);
  ASSERT_TRUE(failed.wait(10000));
  EXPECT_TRUE(failed.at(0).at(0).toString().contains("NOBODY"));
}

TEST_F(BackendRoundTrip, VanishedBackEndFailsSendsThenReconnects) {
  const uint16_t port = server->port();
  QSignalSpy changes(control.get(), &host::BackendControl::connectedChanged);
  server->Stop();
  server.reset();
  ASSERT_TRUE(WaitConnected(*control, false));
  kdl::Message req;
  req.Add(0, "om_get_user_peer_data");
  KdlError err{};
  EXPECT_EQ(control->Send(nullptr, req.get(), 0, &err), 0);
  EXPECT_NE(err.code, 0);

  // The same port: the control comes back by itself.
  ASSERT_TRUE(server = host_test::StartRiskd(dir.path(), 3000, false, port));
  ASSERT_TRUE(WaitConnected(*control, true, 15000));
  ASSERT_GE(changes.size(), 2);
  EXPECT_FALSE(changes.first().at(0).toBool());
  EXPECT_TRUE(changes.last().at(0).toBool());
  EXPECT_EQ(control->Send(nullptr, req.get(), 0, &err), 1);
}

// The real plug-in, loaded as tarntrader loads it, asks the real back-end
// through this host's control and the answer comes back for the user it was
// opened with (the view's fixture sees RMS1's peer value; here it is RMS2's).
TEST_F(BackendRoundTrip, PluginAsksThroughTheHostForItsOwnUser) {
  Recorder rx;
  ASSERT_TRUE(control->Attach(&rx));
  host::TheHost().control = control.get();
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
  control->Detach(&rx);
  host::TheHost().control = nullptr;
}

TEST_F(BackendRoundTrip, ReceiverDetachedDuringADeliveryIsNotCalledAgain) {
  const struct {
    const char* name;
    bool detachSelf; // else the first receiver detaches the second
  } cases[] = {{"detachesAnother", false}, {"detachesItself", true}};
  for (const auto& c : cases) {
    Recorder first, second;
    int secondCallsAtDetach = -1;
    second.onMessage = [&] {
      if (secondCallsAtDetach >= 0)
        ADD_FAILURE() << c.name << ": called after it was detached";
    };
    control->Attach(&first);
    control->Attach(&second);
    // Every call of the second after the first's first call is too many.
    first.onMessage = [&, detach = c.detachSelf ? &first : &second] {
      if (first.calls == 1) {
        control->Detach(detach);
        if (detach == &second)
          secondCallsAtDetach = second.calls;
      }
    };
    Ask("tarn_user_info"); // a USER record, client records, a status
    Recorder* stays = c.detachSelf ? &second : &first;
    ASSERT_TRUE(QTest::qWaitFor([&] { return stays->ends > 0; }, 10000)) << c.name;
    if (c.detachSelf)
      EXPECT_EQ(first.calls, 1) << c.name;
    else
      EXPECT_EQ(second.calls, 0) << c.name << ": the second was called for the same message";
    control->Detach(&first);
    control->Detach(&second);
  }
}

TEST_F(BackendRoundTrip, WaitingMessagesStayBoundedWhileTheWindowIsBusy) {
  const size_t bound = 300;
  Connect(bound);
  Recorder rx;
  control->Attach(&rx);
  // A slow window: each message takes a while, so the socket outruns it.
  rx.onMessage = [] { QTest::qSleep(0); };
  Ask("tarn_scrip_master");
  Ask("om_get_client_reports"); // the administrator's: about a thousand records
  ASSERT_TRUE(QTest::qWaitFor([&] { return rx.ends == 2; }, 20000));
  EXPECT_LE(control->peakPending(), bound);
  EXPECT_GT(rx.calls, int(2 * bound)) << "the answers were meant to be larger than the bound";
  control->Detach(&rx);
}

} // namespace
