// This executable plays host: it exports GetBrioRxControl (fake_backend.cpp),
// which the link finds through vh::HostProc.
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "common/message.h"
#include "link/backend_link.h"
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

// What a link that could not be made whole shows when it is made, and what
// a request that cannot go out shows; nothing reaches the back-end. A link
// that had a control detaches its receiver and releases the control when it
// goes. 4 bytes of message plus 12 + length per single-value field.
TEST(BackendLink, FailuresReportTheirTextsAndSendNothing) {
  FakeBackendControl control;
  RecordingOwner owner;
  ScopedMessageRecorder recorder;
  const auto margin =
      CLinkRequest("om_stock_margin_transfer")
          .OnSendFailure("om_stock_margin_transfer Request Failure", Report::ShowAndStatus);
  const struct {
    const char* name;
    bool failHandle, hasControl, failSend;
    uint32_t scratch;
    CLinkRequest request;
    Strings atCreation, shown, statuses = {};
  } cases[] = {
      // clang-format off
      {"no message handle", true, true, false, 4096, CLinkRequest("mrv_cj"),
       {"MnmHndl Open failed in Algo Plugin"}, {" Request failure"}},
      {"no scratch buffer", false, true, false, 0, CLinkRequest("mrv_cj"),
       {"BufHndl Open failed in Algo Plugin"}, {" Request failure"}},
      {"name does not fit", false, true, false, 20, CLinkRequest("display_holding_detail"),
       {}, {"display_holding_detail Request Failure"}},
      {"user id does not fit", false, true, false, 40, UserPeerRequest("U1"),
       {}, {"add source user id Request Failure"}},
      // The service exists; it just had no control to give.
      {"no control from the host", false, false, false, 4096, CLinkRequest("mrv_cj"),
       {}, {"mrv_cj Request Failure"}},
      {"send refused, status and box", false, true, true, 4096, margin,
       {}, {"om_stock_margin_transfer Request Failure"}, {"om_stock_margin_transfer Request Failure"}},
      // clang-format on
  };
  for (const auto& c : cases) {
    recorder.clear();
    control.sent.clear();
    control.failSends = c.failSend;
    g_control = c.hasControl ? &control : nullptr;
    control.attached = control.detached = nullptr;
    control.released = 0;
    CAlwGrpReqRx* receiver = nullptr;
    {
      g_failNothrowNew = c.failHandle;
      CBackendLink link(&owner, c.scratch);
      g_failNothrowNew = false;
      receiver = link.receiver();
      EXPECT_EQ(recorder.messages(), c.atCreation) << c.name;
      recorder.clear();
      EXPECT_EQ(link.Send(c.request), 0) << c.name;
      EXPECT_TRUE(control.sent.empty()) << c.name;
      EXPECT_EQ(recorder.messages(), c.shown) << c.name;
      EXPECT_EQ(recorder.statuses(), c.statuses) << c.name;
      EXPECT_EQ(control.attached, c.hasControl ? receiver : nullptr) << c.name;
      EXPECT_EQ(control.detached, nullptr) << c.name;
    }
    EXPECT_EQ(control.detached, c.hasControl ? receiver : nullptr) << c.name;
    EXPECT_EQ(control.released, c.hasControl ? 1 : 0) << c.name;
  }
  g_control = nullptr;
}

} // namespace
