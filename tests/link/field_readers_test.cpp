#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "link/envelope.h"
#include "link/field_readers.h"
#include "tests/link/answers.h"

using namespace linktest;
using namespace vh;

namespace {

// Tag 7's digit lies past the long reader's 31 characters, tag 8's number
// past the double reader's 63. A failed read leaves the number as it was
// (-1 here) and says why.
TEST(FieldReaders, ConvertLikeTheCLibraryWithinTheirBuffers) {
  // clang-format off
  const kdl::Message m = Answer({{2, "  -17xyz"}, {4, ""}, {5, "99999999999"}, {6, "-99999999999"},
                                 {7, std::string(31, ' ') + "7"}, {8, std::string(63, ' ') + "2.5"},
                                 {9, std::string(40, ' ') + "2.5"}, {10, "3.25e2"}});
  // clang-format on
  KdlMsg* unstarted = nullptr;
  ASSERT_TRUE(kdl_ctor_primecb(&unstarted, nullptr));
  const struct {
    const KdlMsg* msg;
    uint32_t tag;
    int32_t asLong, asInt;
    double asDouble;
    int32_t kind = 0;
  } cases[] = {
      // clang-format off
      {m.get(), 2, -17, -17, -17.0}, {m.get(), 4, 0, 0, 0.0},
      {m.get(), 5, INT32_MAX, INT32_MAX, 99999999999.0},
      {m.get(), 6, INT32_MIN, INT32_MIN, -99999999999.0}, {m.get(), 7, 0, 7, 7.0},
      {m.get(), 8, 0, 2, 0.0}, {m.get(), 9, 0, 2, 2.5}, {m.get(), 10, 3, 3, 325.0},
      {m.get(), 99, -1, -1, -1.0, kReaderMissing}, {unstarted, 2, -1, -1, -1.0, kReaderFailed},
      // clang-format on
  };
  for (const auto& c : cases) {
    int32_t l = -1, i = -1, kinds[3] = {};
    double d = -1;
    const int ok = c.kind == 0;
    EXPECT_EQ(ReadLongField(c.msg, c.tag, 0, &l, &kinds[0]), ok) << c.tag;
    EXPECT_EQ(ReadIntField(c.msg, c.tag, 0, &i, &kinds[1]), ok) << c.tag;
    EXPECT_EQ(ReadDoubleField(c.msg, c.tag, 0, &d, &kinds[2]), ok) << c.tag;
    EXPECT_EQ(l, c.asLong) << c.tag;
    EXPECT_EQ(i, c.asInt) << c.tag;
    EXPECT_DOUBLE_EQ(d, c.asDouble) << c.tag;
    EXPECT_THAT(kinds, testing::Each(c.kind)) << c.tag;
  }
  kdl_dtor_primecb(&unstarted, nullptr);
}

} // namespace
