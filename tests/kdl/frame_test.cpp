#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kdl/frame.h"
#include "tests/kdl/wire_bytes.h"

using namespace kdltest;

namespace {

TEST(Frame, SplitsAStreamHoweverItArrives) {
  const std::vector<std::string> payloads = {"one", "", std::string(300, 'z'), "last"};
  std::string stream = "prefix"; // a frame is appended, never written over
  for (const std::string& p : payloads)
    ASSERT_TRUE(kdl::AppendFrame(stream, p));
  ASSERT_EQ(stream.substr(0, 17), "prefix" + U32(3) + "one" + U32(0));
  stream.erase(0, 6);
  for (size_t chunk : {size_t{1}, size_t{3}, size_t{5}, size_t{64}, stream.size()}) {
    kdl::FrameSplitter s(1024);
    std::vector<std::string> split;
    for (size_t at = 0; at < stream.size(); at += chunk) {
      EXPECT_TRUE(s.Feed(stream.data() + at, std::min(chunk, stream.size() - at)));
      for (std::string_view payload; s.Next(&payload);)
        split.emplace_back(payload);
    }
    EXPECT_EQ(split, payloads) << "chunks of " << chunk;
    EXPECT_EQ(s.pending(), 0u);
  }
}

TEST(Frame, OversizeLengthFailsTheStreamForGood) {
  const struct {
    const char* name;
    uint32_t max;
    uint32_t length;
    bool accepted;
  } cases[] = {
      {"at the maximum", 8, 8, true},
      {"one above", 8, 9, false},
      {"2^32-1", 1u << 24, 0xFFFFFFFF, false},
  };
  for (const auto& c : cases) {
    kdl::FrameSplitter s(c.max);
    const std::string stream = U32(c.length) + std::string(c.length <= c.max ? c.length : 0, 'q');
    ASSERT_TRUE(s.Feed(stream.data(), stream.size())) << c.name;
    std::string_view payload;
    EXPECT_EQ(s.Next(&payload), c.accepted) << c.name;
    EXPECT_EQ(s.failed(), !c.accepted) << c.name;
    if (!c.accepted) {
      EXPECT_EQ(s.oversizeLength(), c.length) << c.name;
      EXPECT_FALSE(s.Feed(stream.data(), 4)) << c.name;
      EXPECT_FALSE(s.Next(&payload)) << c.name;
    }
  }
}

} // namespace
