#include "common/message.h"

#include <gtest/gtest.h>

namespace {

TEST(Message, RecorderSeesExactTextsAndRestoresPreviousSink) {
  std::vector<std::string> outer;
  vh::MessageSink previous = vh::SetMessageSink([&](std::string_view t) { outer.emplace_back(t); });
  {
    vh::ScopedMessageRecorder rec;
    vh::ShowMessage(" Request failure");
    vh::SetStatusText("display_holding_detail request sent successfully");
    ASSERT_EQ(rec.messages().size(), 1u);
    EXPECT_EQ(rec.messages()[0], " Request failure");
    ASSERT_EQ(rec.statuses().size(), 1u);
    EXPECT_EQ(vh::LastStatusText(), "display_holding_detail request sent successfully");
  }
  vh::ShowMessage("after");
  ASSERT_EQ(outer.size(), 1u);
  EXPECT_EQ(outer[0], "after");
  vh::SetMessageSink(std::move(previous));
}

// A program that installs no sink still tells its user: the text goes to
// standard error.
TEST(Message, WithoutASinkTheTextGoesToStandardError) {
  vh::MessageSink previous = vh::SetMessageSink({});
  testing::internal::CaptureStderr();
  vh::ShowMessage("File Open Failed");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "message: File Open Failed\n");
  vh::SetMessageSink(std::move(previous));
}

} // namespace
