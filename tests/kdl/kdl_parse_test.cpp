#include <gtest/gtest.h>

#include <string>

#include "kdl/kdl.h"
#include "kdl/message.h"
#include "tests/kdl/wire_bytes.h"

using namespace kdltest;

namespace {

// A message with a repeated field, a zero-value field and an empty value.
std::string Sample() {
  return U32(3) + FieldBytes(32767, {"display_holding_detail"}) + FieldBytes(10, {"A", "", "CC"}) +
         FieldBytes(32766, {});
}

int32_t ParseCode(const std::string& bytes) {
  KdlMsg* msg = nullptr;
  KdlError err{};
  if (kdl_parse(bytes.data(), static_cast<uint32_t>(bytes.size()), &msg, &err)) {
    kdl_dtor_primecb(&msg, nullptr);
    return KDL_OK;
  }
  EXPECT_EQ(msg, nullptr);
  return err.code;
}

// Every truncation of a good message, and each way a count or length can lie.
TEST(KdlParse, MalformedBytesAreRejected) {
  const std::string whole = Sample();
  for (size_t n = 0; n < whole.size(); ++n)
    EXPECT_EQ(ParseCode(whole.substr(0, n)), KDL_E_FORMAT) << "first " << n << " bytes";
  const struct {
    const char* name;
    std::string bytes;
  } cases[] = {
      {"trailing garbage", Sample() + "x"},
      {"field count beyond the buffer", U32(2) + FieldBytes(1, {"a"})},
      {"field count whose 8x overflows 32 bits", U32(0x20000001) + FieldBytes(1, {})},
      {"value count beyond the buffer", U32(1) + U32(1) + U32(2) + Value("a")},
      {"value count whose 4x overflows 32 bits", U32(1) + U32(1) + U32(0x40000001) + Value("a")},
      {"length one past the end", U32(1) + U32(1) + U32(1) + U32(3) + "ab"},
      {"length that wraps an offset", U32(1) + U32(1) + U32(2) + U32(0xFFFFFFF0) + Value("a")},
      {"tag in two distant fields",
       U32(3) + FieldBytes(7, {}) + FieldBytes(8, {}) + FieldBytes(7, {})},
      {"tag repeated among more fields than the table on the stack takes",
       [] {
         std::string bytes = U32(65) + FieldBytes(7, {});
         for (uint32_t tag = 8; tag < 72; ++tag)
           bytes += FieldBytes(tag == 71 ? 7 : tag, {});
         return bytes;
       }()},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ParseCode(c.bytes), KDL_E_FORMAT) << c.name;
}

// One handle parses message after message, each into its own copy: a large
// one's memory is let go, a failed parse leaves the handle empty.
TEST(KdlParse, AReusedHandleReadsEachMessageAloneFromItsOwnCopy) {
  std::string large = U32(1) + U32(9) + U32(5000);
  for (int i = 0; i < 5000; ++i)
    large += Value("v");
  kdl::Message reader = kdl::Message::Reader();
  ASSERT_TRUE(reader.ParseInto(large));
  EXPECT_EQ(reader.Count(9), 5000u);
  std::string bytes = Sample();
  ASSERT_TRUE(reader.ParseInto(bytes));
  bytes.assign(bytes.size(), '\xFF');
  ExpectReads(reader, {{32767, {"display_holding_detail"}}, {10, {"A", "", "CC"}}, {32766, {}}});
  EXPECT_EQ(reader.Count(9), std::nullopt);
  EXPECT_EQ(reader.Text(32766, 0), std::nullopt);
  EXPECT_EQ(reader.Serialise(), Sample());
  EXPECT_FALSE(reader.ParseInto(Sample() + "x"));
  EXPECT_EQ(reader.Text(32767), std::nullopt);
}

} // namespace
