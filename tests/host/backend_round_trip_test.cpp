// The host's back-end control and start-up load against a real tarn-riskd
// running in-process on a free loopback port with a small sample database:
// a refused start-up load, the plug-in's life under a real host, and the
// control under load and under receivers that change the receiver list
// while a message is being delivered. A back-end that goes away and comes
// back is the view's fault test.
#include <QApplication>
#include <QDialog>
#include <QPointer>
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
#include "tests/host/plugin_messages.h"
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
    ASSERT_TRUE(QTest::qWaitFor([&] { return control->IsConnected() != 0; }, 10000));
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

QWidget* ViewWindow(QWidget* frame) {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (w->parentWidget() == frame && qobject_cast<QDialog*>(w))
      return w;
  return nullptr;
}

// The real plug-in, loaded as tarntrader loads it: what it declares, one
// view window under the host's frame however often it is opened, and the
// peer value asked through this host's control for the user it was first
// opened with (the view's fixture sees RMS1's; here it is RMS2's).
TEST_F(BackendRoundTrip, PluginAsksThroughTheHostForItsOwnUser) {
  Recorder rx;
  ASSERT_TRUE(control->Attach(&rx));
  host::TheHost().control = control.get();
  host::TheHost().user.rights = {"RMS View Holdings: Mark/UnMark"};

  host::PluginLoader plugin;
  QString error, name, version;
  ASSERT_TRUE(plugin.Load(VIEWHOLDINGS_PATH, error)) << error.toStdString();
  uint32_t stamp = 0, code = 0;
  EXPECT_EQ(plugin.getInfo(&name, &version, nullptr, &stamp, &code), 1);
  EXPECT_EQ(QStringList({name, version, QString::number(stamp), QString::number(code)}),
            QStringList({"View Holdings", "5.3.1.0", "29032010", "126"}));
  EXPECT_EQ(plugin.Title(), "RMS View Holdings");
  EXPECT_EQ(plugin.ActionRights(), QStringList{"RMS View Holdings: Mark/UnMark"});
  EXPECT_EQ(plugin.process(nullptr), 0);
  PluginMessages().clear();
  plugin.exit(); // before any open: nothing to save
  QWidget frame, otherFrame;
  TarnHostContext ctx{}, other{};
  ctx.parentWindow = &frame;
  other.parentWindow = &otherFrame;
  plugin.init(&ctx, "RMS2", 1, QString());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !rx.peer.empty(); }, 10000));
  EXPECT_EQ(rx.peer, "P002");
  // A first run has no settings file yet: the holdings grid says so once
  // (the alert grid reads no column profile).
  EXPECT_EQ(PluginMessages(), QStringList{"File Open Failed"});
  QPointer<QWidget> view = ViewWindow(&frame);
  ASSERT_TRUE(view && view->isVisible());
  EXPECT_EQ(view->windowTitle(), "View Holdings");
  view->hide();
  plugin.init(&other, "SOMEONE_ELSE", 0, QString());
  EXPECT_TRUE(view->isVisible());
  EXPECT_EQ(ViewWindow(&otherFrame), nullptr);
  plugin.exit();
  EXPECT_TRUE(view) << "exit does not destroy the window";
  plugin.Unload(); // while the control it is attached to still lives
  EXPECT_FALSE(view) << "the window goes with the module";
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
