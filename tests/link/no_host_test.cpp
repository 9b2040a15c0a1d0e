// This executable exports no host services: the link must say so and still
// come up. What a link without a control does with a request is the link
// test's.
#include <gtest/gtest.h>

#include "common/message.h"
#include "link/backend_link.h"

namespace {

TEST(LinkWithoutHost, ReportsTheMissingControl) {
  vh::ScopedMessageRecorder recorder;
  CBackendLink link(nullptr);
  EXPECT_EQ(recorder.messages(), std::vector<std::string>{"From ZUL Connection to brio failed"});
  EXPECT_EQ(link.control(), nullptr);
}

} // namespace
