// This executable exports no host services: the link must say so and still
// come up, unable to send.
#include <gtest/gtest.h>

#include "common/message.h"
#include "link/backend_link.h"
#include "tests/link/recording_owner.h"

namespace {

TEST(LinkWithoutHost, ReportsTheMissingControlAndCannotSend) {
  vh::ScopedMessageRecorder recorder;
  linktest::RecordingOwner owner;
  CBackendLink link(&owner);
  EXPECT_EQ(recorder.messages(), std::vector<std::string>{"From ZUL Connection to brio failed"});
  EXPECT_EQ(link.control(), nullptr);
  ASSERT_NE(link.receiver(), nullptr);
  recorder.clear();
  EXPECT_EQ(link.Send(vh::UserPeerRequest("U1")), 0);
  EXPECT_EQ(recorder.messages(), std::vector<std::string>{"om_get_user_peer_data Request Failure"});
  EXPECT_TRUE(recorder.statuses().empty());
}

} // namespace
