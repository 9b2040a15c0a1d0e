// The direct frame writer gives exactly the bytes of a kdl message built
// value by value and framed, numbers included.
#include <gtest/gtest.h>

#include <functional>

#include "kdl/frame.h"
#include "kdl/frame_writer.h"
#include "kdl/message.h"

namespace {

std::string Framed(const kdl::Message& m) {
  std::string out;
  EXPECT_TRUE(kdl::AppendFrame(out, m.Serialise()));
  return out;
}

TEST(FrameWriter, SameBytesAsAMessage) {
  const struct {
    const char* name;
    std::function<void(kdl::Message&)> build;
    std::function<void(kdl::FrameWriter&)> write;
  } cases[] = {
      {"noField", [](kdl::Message&) {}, [](kdl::FrameWriter&) {}},
      {"repeatedTagGroupedAsTheBuilderGroupsIt",
       [](kdl::Message& m) {
         m.Add(63001, "nse_cm");
         m.Add(63100, "ABC-EQ");
         m.Add(63001, "bse_cm");
         m.Add(63100, "ABC");
         m.Add(64030, "CNC");
       },
       [](kdl::FrameWriter& w) {
         w.Field(63001, {"nse_cm", "bse_cm"});
         w.Field(63100, {"ABC-EQ", "ABC"});
         w.Field(64030, "CNC");
       }},
      {"numbers",
       [](kdl::Message& m) {
         m.Add(1, "0");
         m.Add(2, "-9223372036854775808");
         m.Add(4, "0.05");
         m.Add(5, "-1.00");
         m.Add(7, "92233720368547758.07");
         m.Add(8, "-92233720368547758.08");
       },
       [](kdl::FrameWriter& w) {
         w.Number(1, 0);
         w.Number(2, INT64_MIN);
         w.Hundredths(4, 5);
         w.Hundredths(5, -100);
         w.Hundredths(7, INT64_MAX);
         w.Hundredths(8, INT64_MIN);
       }},
      {"recordOutgrowsTheInlineBuffer",
       [](kdl::Message& m) {
         m.Add(1, "");
         m.Add(2, std::string(3000, 'x'));
         m.Add(3, "p");
         m.Add(3, "q");
         m.AddEmpty(4);
         m.Add(5, "7");
       },
       [](kdl::FrameWriter& w) {
         w.Field(1, "");
         w.Field(2, std::string(3000, 'x'));
         w.Field(3, {"p", "q"});
         w.Empty(4);
         w.Number(5, 7);
       }},
      {"firstFieldAlreadyTooLarge",
       [](kdl::Message& m) {
         m.Add(9, std::string(1100, 'y'));
         m.Add(8, "-0.05");
       },
       [](kdl::FrameWriter& w) {
         w.Field(9, std::string(1100, 'y'));
         w.Hundredths(8, -5);
       }},
      {"sharedBlockBetweenFields",
       [](kdl::Message& m) {
         m.Add(54001, "C1");
         m.Add(63001, "nse_cm");
         m.Add(63003, "500001");
         m.Add(64030, "MTF");
       },
       [](kdl::FrameWriter& w) {
         kdl::FieldBytes block;
         block.Field(63001, {"nse_cm"});
         block.Field(63003, {"500001"});
         w.Field(54001, "C1");
         w.Raw(block.bytes(), block.count());
         w.Field(64030, "MTF");
       }},
  };
  for (const auto& c : cases) {
    kdl::Message m;
    c.build(m);
    std::string out = "before"; // a frame is appended, never written over
    kdl::FrameWriter w(out);
    c.write(w);
    w.Finish();
    EXPECT_EQ(out, "before" + Framed(m)) << c.name;
  }
}

} // namespace
