// The host's control under load and under receivers that change the
// receiver list while a message is being delivered.
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <functional>

#include "host/backend_control.h"
#include "kdl/message.h"
#include "kdl/tags.h"
#include "tests/host/riskd_start.h"

namespace {

struct Receiver : CBrioRxNotifierBase {
  void OnNotify() override {}
  void OnResponse(void*, KdlMsg* msg, void*) override {
    ++calls;
    uint32_t n = 0;
    if (kdl_get_field(msg, vh::kTagStatus, &n, nullptr))
      ++ends;
    if (onMessage)
      onMessage();
  }
  int calls = 0;
  int ends = 0;
  std::function<void()> onMessage;
};

class ControlTest : public ::testing::Test {
protected:
  void Start(size_t maxPending = host::BackendControl::kMaxPending) {
    ASSERT_TRUE(server_ = host_test::StartRiskd(dir_.path(), 3000));
    control_ = std::make_unique<host::BackendControl>(nullptr, maxPending);
    control_->Start("127.0.0.1", server_->port());
    ASSERT_TRUE(QTest::qWaitFor([&] { return control_->IsConnected() != 0; }, 10000));
  }
  void Ask(const char* name) {
    kdl::Message req;
    req.Add(vh::kTagRequestName, name);
    req.Add(vh::kTagSourceUserId, "RMS1");
    KdlError err{};
    ASSERT_EQ(control_->Send(nullptr, req.get(), 0, &err), 1) << err.text;
  }
  void TearDown() override {
    if (control_)
      control_->Stop();
  }

  QTemporaryDir dir_;
  std::unique_ptr<riskd::RiskServer> server_;
  std::unique_ptr<host::BackendControl> control_;
};

TEST_F(ControlTest, ReceiverDetachedDuringADeliveryIsNotCalledAgain) {
  Start();
  const struct {
    const char* name;
    bool detachSelf; // else the first receiver detaches the second
  } cases[] = {{"detachesAnother", false}, {"detachesItself", true}};
  for (const auto& c : cases) {
    Receiver first, second;
    int secondCallsAtDetach = -1;
    second.onMessage = [&] {
      if (secondCallsAtDetach >= 0)
        ADD_FAILURE() << c.name << ": called after it was detached";
    };
    control_->Attach(&first);
    control_->Attach(&second);
    // Every call of the second after the first's first call is too many.
    first.onMessage = [&, detach = c.detachSelf ? &first : &second] {
      if (first.calls == 1) {
        control_->Detach(detach);
        if (detach == &second)
          secondCallsAtDetach = second.calls;
      }
    };
    Ask("tarn_user_info"); // a USER record, client records, a status
    Receiver* stays = c.detachSelf ? &second : &first;
    ASSERT_TRUE(QTest::qWaitFor([&] { return stays->ends > 0; }, 10000)) << c.name;
    if (c.detachSelf)
      EXPECT_EQ(first.calls, 1) << c.name;
    else
      EXPECT_EQ(second.calls, 0) << c.name << ": the second was called for the same message";
    control_->Detach(&first);
    control_->Detach(&second);
  }
}

TEST_F(ControlTest, WaitingMessagesStayBoundedWhileTheWindowIsBusy) {
  const size_t bound = 300;
  Start(bound);
  Receiver rx;
  control_->Attach(&rx);
  // A slow window: each message takes a while, so the socket outruns it.
  rx.onMessage = [] { QTest::qSleep(0); };
  Ask("tarn_scrip_master");
  Ask("om_get_client_reports"); // the administrator's: about a thousand records
  ASSERT_TRUE(QTest::qWaitFor([&] { return rx.ends == 2; }, 20000));
  EXPECT_LE(control_->peakPending(), bound);
  EXPECT_GT(rx.calls, int(2 * bound)) << "the answers were meant to be larger than the bound";
  control_->Detach(&rx);
}

} // namespace
