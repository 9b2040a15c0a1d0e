#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/message.h"
#include "holdings/holding_request.h"
#include "link/backend_link.h"
#include "tests/link/fake_backend.h"

using namespace vh;
using linktest::Fields;

namespace {

// Scrip details of the host: only these scrips have a BSE code.
bool Details(std::string_view segment, std::string_view symbol, ScripDetailFields& out) {
  if (segment == "nse_cm" && symbol == "ABCD-BE")
    out[kScripBseCode] = "500001";
  else if (segment == "bse_cm" && symbol == "ABCD")
    out[kScripBseCode] = "500002";
  else
    return false;
  return true;
}

HoldSelection Scrip(const char* nse, const char* bse, uint32_t userType = 2,
                    const char* symbol = "ABCD-BE") {
  HoldSelection s{false, {}, {}, symbol, "ABCD", {}, "U1", userType, "P9"};
  if (nse)
    s.nseExchange = nse;
  if (bse)
    s.bseExchange = bse;
  return s;
}

HoldSelection Client(std::optional<std::string> id) {
  HoldSelection s = Scrip("NSE", "BSE", 0);
  s.clientMode = true;
  s.clientId = std::move(id);
  return s;
}

struct HoldingRequest : ::testing::Test {
  void SetUp() override { linktest::g_control = &control; }
  void TearDown() override { linktest::g_control = nullptr; }
  linktest::FakeBackendControl control;
};

const std::string kName = "display_holding_detail";

// The view's end-to-end tests compare the answers of each mode with the
// database and show the commonest messages; here are the exact fields.
TEST_F(HoldingRequest, FieldsAndMessagesPerSelection) {
  const struct {
    const char* name;
    HoldSelection sel;
    const char* message;
    Fields fields;
  } cases[] = {
      // clang-format off
      {"BothLegs", Scrip("NSE", "BSE"), "",
       {{0, {kName}}, {63001, {"nse_cm", "bse_cm"}}, {10100, {"ABCD-BE", "ABCD"}},
        {63003, {"500001", "500002"}}, {31003, {"U1"}}, {64056, {"P9"}}}},
      {"UnknownScripSendsNoCodeNorPeerAboveType2", Scrip("NSE", "--", 3, "ZZ-EQ"), "",
       {{0, {kName}}, {63001, {"nse_cm"}}, {10100, {"ZZ-EQ"}}, {31003, {"U1"}}}},
      {"CseAsksTwoBoards", Scrip("CSE", "--", 0, "CC"), "",
       {{0, {kName}}, {63001, {"cse_cm"}}, {10100, {"CC-BL", "CC-TM"}}, {31003, {"U1"}}, {64056, {"P9"}}}},
      {"ClientModeSendsNoPeer", Client("C7"), "", {{0, {kName}}, {54001, {"C7"}}, {31003, {"U1"}}}},
      {"NoBseExchange", Scrip("NSE", nullptr), "Please Specify the exchange", {}},
      // clang-format on
  };
  CBackendLink link(nullptr);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScopedMessageRecorder recorder;
    control.sent.clear();
    HoldRequestResult r = BuildHoldingRequest(c.sel, Details);
    EXPECT_EQ(r.message, c.message);
    ASSERT_EQ(r.request.has_value(), c.fields.size() > 0);
    if (!r.request)
      continue;
    EXPECT_EQ(link.Send(*r.request), 1);
    ASSERT_EQ(control.sent.size(), 1u);
    EXPECT_EQ(control.sent[0], c.fields);
    EXPECT_TRUE(recorder.messages().empty());
  }
}

TEST_F(HoldingRequest, FailuresAreStatusForFieldsAndBoxesForSends) {
  CBackendLink link(nullptr);
  ScopedMessageRecorder recorder;
  HoldSelection huge = Scrip("NSE", "--");
  huge.peerValue.assign(5000, 'p'); // beyond the 4096-byte scratch
  EXPECT_EQ(link.Send(*BuildHoldingRequest(huge, Details).request), 0);
  EXPECT_EQ(link.Send(*BuildMrvCjRequest(std::string(5000, 's'))), 0);
  control.failSends = true;
  EXPECT_EQ(link.Send(*BuildHoldingRequest(Client("C1"), Details).request), 0);
  EXPECT_EQ(link.Send(*BuildMrvCjRequest("ABCD-EQ")), 0);
  EXPECT_TRUE(control.sent.empty());
  EXPECT_EQ(recorder.statuses(),
            (std::vector<std::string>{" Request Failure", " Request Failure"}));
  EXPECT_EQ(recorder.messages(), (std::vector<std::string>{"display_holding_detail Request Failure",
                                                           "mrv_cj Request Failure"}));
}

// "Load BSE" (mrv_cj) is answered by the real back-end in the view's
// end-to-end test, with and without a selected scrip.
TEST(ComboPrefixFind, StartsAfterAndWraps) {
  const std::vector<std::string> items{"--", "abcd", "ABX", "zz", "Abcde"};
  const auto text = [&](int i) { return std::string_view(items[i]); };
  const struct {
    const char* prefix;
    int after;
    int found;
  } cases[] = {{"ABC", 0, 1}, {"abc", 1, 4}, {"abcde", 4, 4}, {"-", 0, 0},
               {"q", 0, -1},  {"ab", 9, 1},  {"", 2, 3}};
  for (const auto& c : cases)
    EXPECT_EQ(FindComboPrefix(int(items.size()), c.after, c.prefix, text), c.found)
        << c.prefix << " after " << c.after;
  EXPECT_EQ(FindComboPrefix(0, 0, "a", text), -1);
}

} // namespace
