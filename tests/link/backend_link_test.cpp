// This executable plays host: it exports GetBrioRxControl (fake_backend.cpp),
// which the link finds through vh::HostProc.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "common/message.h"
#include "kdl/message.h"
#include "link/backend_link.h"
#include "link/envelope.h"
#include "tests/link/fake_backend.h"
#include "tests/link/recording_owner.h"

using namespace linktest;
using namespace vh;

// kdl allocates its handles with nothrow new; this lets a test make that fail.
static bool g_failNothrowNew = false;
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (g_failNothrowNew)
    return nullptr;
  try {
    return ::operator new(size);
  } catch (...) {
    return nullptr;
  }
}

namespace {

using Strings = std::vector<std::string>;

class LinkTest : public testing::Test {
protected:
  void SetUp() override {
    g_control = &control;
    g_getControlCalls.clear();
  }
  void TearDown() override { g_control = nullptr; }

  FakeBackendControl control;
  RecordingOwner owner;
  ScopedMessageRecorder recorder;
};

TEST_F(LinkTest, CreationTakesTheControlFromTheHostAndReleaseGivesItBack) {
  CAlwGrpReqRx* receiver = nullptr;
  {
    CBackendLink link(&owner);
    receiver = link.receiver();
    EXPECT_EQ(link.control(), &control);
    EXPECT_EQ(g_getControlCalls, std::vector<int>{0});
    EXPECT_EQ(control.attached, std::vector<CBrioRxNotifierBase*>{receiver});
    EXPECT_TRUE(recorder.messages().empty());
    // Answers through the control reach the owner.
    kdl::Message answer;
    answer.Add(kTagAnsweredName, "display_holding_detail");
    control.attached[0]->OnResponse(nullptr, answer.get(), nullptr);
    EXPECT_EQ(owner.log, Strings{"holding"});
    // The back-end's send takes 0 as its third argument, always.
    ASSERT_EQ(link.Send(UserPeerRequest("U9")), 1);
    EXPECT_EQ(control.zeros, std::vector<int>{0});
  }
  EXPECT_EQ(control.detached, std::vector<CBrioRxNotifierBase*>{receiver});
  EXPECT_EQ(control.released, 1);
}

TEST_F(LinkTest, FailuresReportTheirTextsAndSendNothing) {
  const std::string longText(200, 'x');
  const auto fails = [&](uint32_t scratch, bool failSend, const CLinkRequest& request,
                         const Strings& shown, const Strings& statuses, const char* name) {
    CBackendLink link(&owner, scratch);
    recorder.clear();
    control.sent.clear();
    control.zeros.clear();
    control.failSends = failSend;
    EXPECT_EQ(link.Send(request), 0) << name;
    EXPECT_TRUE(control.sent.empty()) << name;
    EXPECT_EQ(control.zeros.size(), failSend ? 1u : 0u) << name << ": send attempted";
    EXPECT_EQ(recorder.messages(), shown) << name;
    EXPECT_EQ(recorder.statuses(), statuses) << name;
  };
  // 4 bytes of message plus 12 + length per single-value field. A field
  // failure kept to the status line, and a refused send, are the holdings
  // request tests'.
  fails(20, false, CLinkRequest("display_holding_detail"),
        {"display_holding_detail Request Failure"}, {}, "name does not fit");
  fails(40, false, CLinkRequest("mrv_cj").Add(63003, longText), {"mrv_cj Request Failure"}, {},
        "field does not fit");
  fails(40, false, UserPeerRequest("U1"), {"add source user id Request Failure"}, {},
        "user id does not fit");
  fails(4096, true,
        CLinkRequest("om_stock_margin_transfer")
            .OnSendFailure("om_stock_margin_transfer Request Failure", Report::ShowAndStatus),
        {"om_stock_margin_transfer Request Failure"}, {"om_stock_margin_transfer Request Failure"},
        "send refused, status and box");
}

TEST_F(LinkTest, HostWithoutAControlLeavesNothingToSendThrough) {
  g_control = nullptr;
  CBackendLink link(&owner);
  EXPECT_EQ(g_getControlCalls, std::vector<int>{0});
  EXPECT_EQ(link.control(), nullptr);
  EXPECT_TRUE(recorder.messages().empty()) << "the service exists; it just had none";
  EXPECT_EQ(link.Send(CLinkRequest("mrv_cj")), 0);
  EXPECT_EQ(recorder.messages(), Strings{"mrv_cj Request Failure"});
}

TEST_F(LinkTest, LibraryFailuresAtCreationAreShownAndRequestsThenFail) {
  const struct {
    const char* name;
    bool failHandle;
    uint32_t scratch;
    Strings atCreation;
  } cases[] = {
      {"no message handle", true, 4096, {"MnmHndl Open failed in Algo Plugin"}},
      {"no scratch buffer", false, 0, {"BufHndl Open failed in Algo Plugin"}},
  };
  for (const auto& c : cases) {
    recorder.clear();
    g_failNothrowNew = c.failHandle;
    CBackendLink link(&owner, c.scratch);
    g_failNothrowNew = false;
    EXPECT_EQ(recorder.messages(), c.atCreation) << c.name;
    EXPECT_EQ(link.control(), &control) << c.name << ": creation goes on";
    recorder.clear();
    EXPECT_EQ(link.Send(CLinkRequest("mrv_cj")), 0) << c.name;
    EXPECT_EQ(recorder.messages(), Strings{" Request failure"}) << c.name;
  }
}

} // namespace
