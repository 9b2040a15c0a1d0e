#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "common/message.h"
#include "link/envelope.h"
#include "link/field_readers.h"
#include "link/response_status.h"
#include "tests/link/answers.h"

using namespace linktest;
using namespace vh;

namespace {

// Tag 7's digit lies past the long reader's 31 characters, tag 8's number
// past the double reader's 63.
kdl::Message Numbers() {
  // clang-format off
  return Answer({{1, "42"}, {2, "  -17xyz"}, {3, "abc"}, {4, ""}, {5, "99999999999"},
                 {6, "-99999999999"}, {7, std::string(31, ' ') + "7"},
                 {8, std::string(63, ' ') + "2.5"}, {9, std::string(40, ' ') + "2.5"},
                 {10, "3.25e2"}, {11, std::nullopt}, {12, "1"}, {12, "2"}});
  // clang-format on
}

TEST(FieldReaders, ConvertLikeTheCLibraryWithinTheirBuffers) {
  const kdl::Message m = Numbers();
  const struct {
    uint32_t tag, index;
    int32_t asLong, asInt;
    double asDouble;
  } cases[] = {
      // clang-format off
      {1, 0, 42, 42, 42.0}, {2, 0, -17, -17, -17.0}, {3, 0, 0, 0, 0.0}, {4, 0, 0, 0, 0.0},
      {5, 0, INT32_MAX, INT32_MAX, 99999999999.0}, {6, 0, INT32_MIN, INT32_MIN, -99999999999.0},
      {7, 0, 0, 7, 7.0}, {8, 0, 0, 2, 0.0}, {9, 0, 0, 2, 2.5}, {10, 0, 3, 3, 325.0},
      // clang-format on
  };
  for (const auto& c : cases) {
    int32_t l = -1, i = -1, kind = 0;
    double d = -1;
    EXPECT_EQ(ReadLongField(m.get(), c.tag, c.index, &l, &kind), 1) << c.tag;
    EXPECT_EQ(ReadIntField(m.get(), c.tag, c.index, &i, &kind), 1) << c.tag;
    EXPECT_EQ(ReadDoubleField(m.get(), c.tag, c.index, &d, &kind), 1) << c.tag;
    EXPECT_EQ(l, c.asLong) << c.tag;
    EXPECT_EQ(i, c.asInt) << c.tag;
    EXPECT_DOUBLE_EQ(d, c.asDouble) << c.tag;
    EXPECT_EQ(kind, 0) << c.tag;
  }
}

TEST(FieldReaders, FailuresSetTheKindAndKeepNumbers) {
  const kdl::Message m = Numbers();
  KdlMsg* unstarted = nullptr;
  ASSERT_TRUE(kdl_ctor_primecb(&unstarted, nullptr));
  const struct {
    const char* name;
    const KdlMsg* msg;
    uint32_t tag, index;
    int32_t kind;
  } cases[] = {
      {"absent field", m.get(), 99, 0, kReaderMissing},
      {"field without values", m.get(), 11, 0, kReaderMissing},
      {"index past the values", m.get(), 12, 2, kReaderMissing},
      {"library failure other than not-found", unstarted, 1, 0, kReaderFailed},
  };
  for (const auto& c : cases) {
    int32_t l = 11, i = 12;
    double d = 13.5;
    std::string text = "previous";
    const std::function<int(int32_t*)> readers[] = {
        [&](int32_t* kind) { return ReadLongField(c.msg, c.tag, c.index, &l, kind); },
        [&](int32_t* kind) { return ReadIntField(c.msg, c.tag, c.index, &i, kind); },
        [&](int32_t* kind) { return ReadDoubleField(c.msg, c.tag, c.index, &d, kind); },
        [&](int32_t* kind) { return ReadTextField(c.msg, c.tag, c.index, &text, kind); }};
    for (const auto& read : readers) {
      int32_t kind = 0;
      EXPECT_EQ(read(&kind), 0) << c.name;
      EXPECT_EQ(kind, c.kind) << c.name;
    }
    EXPECT_EQ(l, 11) << c.name;
    EXPECT_EQ(i, 12) << c.name;
    EXPECT_EQ(d, 13.5) << c.name;
    EXPECT_EQ(text, "") << c.name;
  }
  kdl_dtor_primecb(&unstarted, nullptr);
}

TEST(FieldReaders, TextIsExactlyTheValue) {
  const kdl::Message m =
      Answer({{1, std::string("a\0b", 3)}, {2, ""}, {3, std::string(5000, 'x')}});
  std::string text = "previous";
  int32_t kind = 0;
  EXPECT_EQ(ReadTextField(m.get(), 1, 0, &text, &kind), 1);
  EXPECT_EQ(text, std::string("a\0b", 3));
  EXPECT_EQ(ReadTextField(m.get(), 2, 0, &text, &kind), 1) << "an empty value is a value";
  EXPECT_EQ(text, "");
  EXPECT_EQ(ReadTextField(m.get(), 3, 0, &text, &kind), 1) << "text has no buffer limit";
  EXPECT_EQ(text.size(), 5000u);
}

TEST(ResponseStatus, DataRecordsEndsAndFailures) {
  const std::string fatal = "Fatal error.Please contact administrator.";
  const auto check = [](const char* request, AnswerFields fields, int status, int32_t kind,
                        std::vector<std::string> shown, const char* name) {
    ScopedMessageRecorder recorder;
    const kdl::Message m = Answer(fields);
    int32_t got = 0;
    EXPECT_EQ(CheckResponseStatus(m.get(), request, &got, 1), status) << name;
    EXPECT_EQ(got, kind) << name;
    EXPECT_EQ(recorder.messages(), shown) << name;
  };
  const std::optional<std::string> none;
  check("display_holding_detail", {{kTagAnsweredName, "x"}}, 5, 0, {}, "no status: a record");
  check("display_holding_detail", {{kTagStatus, "12"}}, 12, 0, {}, "status 12");
  check("display_holding_detail", {{kTagStatus, "0"}}, 1, 0, {fatal}, "status 0");
  check("mrv_cj", {{kTagStatus, "end"}}, 1, 0, {fatal}, "non-numeric status counts as 0");
  check("om_get_client_reports", {{kTagStatus, none}}, 1, kReaderMissing,
        {"Lien Report Download Completed."}, "status without value, lien reports");
  check("display_holding_detail", {{kTagStatus, none}}, 1, kReaderMissing, {},
        "status without value, other request");
  check("om_get_client_reports", {{kTagStatus, "0"}}, 1, 0, {fatal},
        "status 0 for lien reports is still fatal");
}

} // namespace
