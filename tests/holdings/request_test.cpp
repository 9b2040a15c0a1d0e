#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "holdings/holding_request.h"

using namespace vh;

namespace {

// Scrip details of the host: only these scrips have a BSE code.
bool Details(std::string_view segment, std::string_view symbol, ScripDetailFields& out) {
  static const std::map<std::string, std::string> codes{{"nse_cm ABCD-BE", "500001"},
                                                        {"bse_cm ABCD", "500002"}};
  const auto it = codes.find(std::string(segment) + " " + std::string(symbol));
  if (it != codes.end())
    out[kScripBseCode] = it->second;
  return it != codes.end();
}

// The request's fields in the order they go out, "tag=text" joined by blanks.
TEST(HoldingRequest, FieldsInOrderOrTheMessagePerSelection) {
  const struct {
    const char* name;
    HoldSelection sel;
    const char* message;
    const char* fields;
  } cases[] = {
      // clang-format off
      {"bothLegsSendTheTradingSymbolAndBothCodes", {false, "NSE", "BSE", "ABCD-BE", "ABCD", {}, "U1", 2, "P9"}, "",
       "63001=nse_cm 10100=ABCD-BE 63003=500001 63001=bse_cm 10100=ABCD 63003=500002 31003=U1 64056=P9"},
      {"unknownScripSendsNoCodeNorPeerAboveType2", {false, "NSE", "--", "ZZ-EQ", "", {}, "U1", 3, "P9"}, "",
       "63001=nse_cm 10100=ZZ-EQ 31003=U1"},
      {"cseAsksTwoBoards", {false, "CSE", "--", "CC", "", {}, "U1", 0, "P9"}, "",
       "63001=cse_cm 10100=CC-BL 10100=CC-TM 31003=U1 64056=P9"},
      {"clientModeSendsNoPeer", {true, "NSE", "BSE", "", "", "C7", "U1", 0, "P9"}, "", "54001=C7 31003=U1"},
      {"noBseExchange", {false, "NSE", std::nullopt, "ABCD-BE", "", {}, "U1", 0, "P9"}, kMsgSpecifyExchange, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const HoldRequestResult r = BuildHoldingRequest(c.sel, Details);
    EXPECT_EQ(r.message, c.message);
    ASSERT_EQ(r.request.has_value(), !*c.message);
    if (!r.request)
      continue;
    std::string fields;
    for (const CLinkRequest::Field& f : r.request->fields())
      fields += (fields.empty() ? "" : " ") + std::to_string(f.tag) + "=" + f.text;
    EXPECT_EQ(fields, c.fields);
    // A field that cannot be added is a status text, never a box.
    EXPECT_EQ(r.request->fieldFailure().report, Report::Status);
  }
}

// "Load BSE" is answered by the real back-end in the view's end-to-end test;
// the combo walk's wrap-around is not reached there.
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
