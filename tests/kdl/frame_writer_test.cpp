// The direct frame writer gives exactly the bytes of a kdl message built
// value by value and framed, numbers included.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "kdl/frame.h"
#include "kdl/frame_writer.h"
#include "kdl/message.h"

namespace {

// One field: the texts a message is given, and how the writer writes them.
// Shared field blocks (FieldBytes handed to Raw) go into every holdings
// answer of the back-end, whose tests read those field by field.
struct Op {
  enum Kind { kText, kEmpty, kNumber, kHundredths };
  uint32_t tag;
  std::vector<std::string> texts; // one or two values; none for kEmpty
  Kind kind = kText;
  int64_t value = 0; // for kNumber and kHundredths
};

void Write(kdl::FrameWriter& w, const Op& op) {
  const std::vector<std::string>& t = op.texts;
  if (op.kind == Op::kEmpty)
    w.Empty(op.tag);
  else if (op.kind == Op::kNumber)
    w.Number(op.tag, op.value);
  else if (op.kind == Op::kHundredths)
    w.Hundredths(op.tag, op.value);
  else if (t.size() == 1)
    w.Field(op.tag, t[0]);
  else
    w.Field(op.tag, {t[0], t[1]});
}

TEST(FrameWriter, SameBytesAsAMessage) {
  const std::string big(3000, 'x');
  const struct {
    const char* name;
    std::vector<Op> ops;
  } cases[] = {
      {"noField", {}},
      {"numbers",
       {{1, {"0"}, Op::kNumber, 0},
        {2, {"-9223372036854775808"}, Op::kNumber, INT64_MIN},
        {4, {"0.05"}, Op::kHundredths, 5},
        {5, {"-1.00"}, Op::kHundredths, -100},
        {7, {"92233720368547758.07"}, Op::kHundredths, INT64_MAX},
        {8, {"-92233720368547758.08"}, Op::kHundredths, INT64_MIN}}},
      {"recordOutgrowsTheInlineBuffer",
       {{1, {""}}, {2, {big}}, {3, {"p", "q"}}, {4, {}, Op::kEmpty}, {5, {"7"}, Op::kNumber, 7}}},
      {"firstFieldAlreadyTooLarge",
       {{9, {std::string(1100, 'y')}}, {8, {"-0.05"}, Op::kHundredths, -5}}},
  };
  for (const auto& c : cases) {
    kdl::Message m;
    std::string out = "before"; // a frame is appended, never written over
    kdl::FrameWriter w(out);
    for (const Op& op : c.ops) {
      if (op.kind == Op::kEmpty)
        m.AddEmpty(op.tag);
      for (const std::string& text : op.texts)
        m.Add(op.tag, text);
      Write(w, op);
    }
    w.Finish();
    std::string framed = "before";
    ASSERT_TRUE(kdl::AppendFrame(framed, m.Serialise())) << c.name;
    EXPECT_EQ(out, framed) << c.name;
  }
}

} // namespace
