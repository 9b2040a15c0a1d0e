#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kdl/kdl.h"
#include "kdl/message.h"
#include "tests/kdl/wire_bytes.h"

using namespace kdltest;

namespace {

struct Add {
  uint32_t tag;
  std::vector<std::string> values; // empty: add the field with count 0
};

// Adds through the C interface, one call per Add; the builder's own index
// must read every value back under its tag in the order it was added.
std::string Build(const std::vector<Add>& adds) {
  kdl::Message m;
  Reads added;
  for (const Add& a : adds) {
    std::vector<KdlValue> v;
    for (const std::string& s : a.values)
      v.push_back({s.data(), static_cast<uint32_t>(s.size())});
    KdlError err{};
    EXPECT_TRUE(kdl_add_data(m.get(), a.tag, static_cast<uint32_t>(v.size()), v.data(), &err))
        << err.text;
    added[a.tag].insert(added[a.tag].end(), a.values.begin(), a.values.end());
  }
  ExpectReads(m, added);
  return std::string(m.Serialise());
}

TEST(KdlBuild, EncodesFieldsInFirstAddedOrderWithRepeatsMerged) {
  const struct {
    const char* name;
    std::vector<Add> adds;
    std::string expected;
  } cases[] = {
      {"empty", {}, U32(0)},
      // A repeat after an empty last value, into a zero-value field, and of
      // the first field: each moves the fields after it.
      {"repeats grow their field in place",
       {{1, {"a"}}, {2, {}}, {3, {"ccc"}}, {1, {""}}, {2, {"bb"}}, {1, {"a2"}}},
       U32(3) + FieldBytes(1, {"a", "", "a2"}) + FieldBytes(2, {"bb"}) + FieldBytes(3, {"ccc"})},
      {"several values in one call, none in another",
       {{5, {"1", "22", "333"}}, {5, {}}, {5, {"4"}}},
       U32(1) + FieldBytes(5, {"1", "22", "333", "4"})},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Build(c.adds), c.expected) << c.name;
}

// 4 bytes of field count, 8 of field header, 4 + length per value: one
// byte short fails and changes nothing, exactly full fits.
TEST(KdlBuild, FullScratchFailsAndLeavesTheMessageAsItWas) {
  kdl::Message m(4 + 8 + 4 + 3 + 4);
  ASSERT_TRUE(m.Add(1, "abc"));
  const std::string before(m.Serialise());
  EXPECT_FALSE(m.Add(1, "b"));
  EXPECT_EQ(m.lastError().code, KDL_E_FULL);
  EXPECT_EQ(m.Serialise(), before);
  EXPECT_TRUE(m.Add(1, ""));
  EXPECT_FALSE(m.AddEmpty(2));
}

TEST(KdlBuild, MisuseFailsWithItsCode) {
  KdlMsg* msg = nullptr;
  void* scratch = nullptr;
  KdlError err{};
  ASSERT_TRUE(kdl_ctor_primecb(&msg, &err));
  const KdlValue v{"x", 1};
  const KdlValue noData{nullptr, 3};
  char foreign[64] = {};
  uint32_t n = 0;
  // Each call fails with its code and a text, and the record starts fresh.
  const auto fails = [&err](int32_t result, int32_t code, const char* name) {
    EXPECT_EQ(result, 0) << name;
    EXPECT_EQ(err.code, code) << name;
    EXPECT_NE(err.text[0], '\0') << name;
    err = KdlError{};
  };
  fails(kdl_add_data(msg, 1, 1, &v, &err), KDL_E_STATE, "add before start");
  fails(kdl_get_field(msg, 1, &n, &err), KDL_E_STATE, "read before start");
  fails(kdl_open_scratch(&scratch, 3, &err), KDL_E_ARG, "scratch too small");
  fails(kdl_open_scratch(&scratch, 0x80000000u, &err), KDL_E_TOOBIG, "scratch too large");
  fails(kdl_ctor_primecb(nullptr, &err), KDL_E_ARG, "null handle address");
  fails(kdl_close_scratch(&scratch, &err), KDL_E_ARG, "close a null scratch");
  fails(kdl_start_msg(msg, foreign + 16, &err), KDL_E_ARG, "a buffer that is not ours");
  fails(kdl_parse(nullptr, 4, &msg, &err), KDL_E_ARG, "parse without bytes");
  fails(kdl_parse("abcd", 4, nullptr, &err), KDL_E_ARG, "parse without a handle address");
  fails(kdl_parse_into(nullptr, "", 0, &err), KDL_E_ARG, "parse into no handle");

  ASSERT_TRUE(kdl_open_scratch(&scratch, 64, &err));
  ASSERT_TRUE(kdl_start_msg(msg, scratch, &err));
  fails(kdl_add_data(msg, 1, 1, &noData, &err), KDL_E_ARG, "value without data");
  fails(kdl_add_data(msg, 1, 2, nullptr, &err), KDL_E_ARG, "values without an array");
  EXPECT_TRUE(kdl_add_data(msg, 1, 1, &v, nullptr)) << "the error record is optional";

  // Closing and destroying empty the caller's pointers, so a second try fails.
  ASSERT_TRUE(kdl_close_scratch(&scratch, &err));
  ASSERT_TRUE(kdl_dtor_primecb(&msg, &err));
  fails(kdl_close_scratch(&scratch, &err), KDL_E_ARG, "close twice");
  fails(kdl_dtor_primecb(&msg, &err), KDL_E_ARG, "destroy twice");
}

TEST(KdlBuild, ParsedMessageIsReadOnlyAndMovesKeepOwnership) {
  auto parsed = kdl::Message::Parse(U32(1) + FieldBytes(4, {"v"}));
  ASSERT_TRUE(parsed);
  EXPECT_FALSE(parsed->Add(5, "w"));
  EXPECT_EQ(parsed->lastError().code, KDL_E_STATE);
  kdl::Message moved = std::move(*parsed);
  EXPECT_FALSE(parsed->valid());
  EXPECT_EQ(moved.Text(4), "v");
  kdl::Message other;
  other = std::move(moved);
  EXPECT_EQ(other.Text(4), "v");
}

} // namespace
