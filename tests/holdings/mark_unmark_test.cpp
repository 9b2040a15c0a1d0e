// Mark and unmark below the dialog: Submit's refusals, the request an
// accepted quantity makes, and the limits in 32-bit arithmetic. The
// features test drives the dialog through the view against tarn-riskd.
#include <gtest/gtest.h>

#include "common/message.h"
#include "holdings/mark_unmark.h"

namespace vh {
namespace {

using Strings = std::vector<std::string>;

TEST(MarkUnmark, RefusalsTheRequestAndTheLimits) {
  MarkHolding h;
  h.clientId = "C1", h.product = "CNC", h.isin = "INE001A01036", h.value63003 = "500325";
  h.nseSymbol = "ABC", h.series = "EQ", h.nseToken = "2885";
  h.bseSymbol = "ABCB", h.bseScripCode = "500325";
  h.holdingsQty = "1000", h.holdingsUpdateQty = "100", h.usedQty = "300";
  h.withheldHoldingQty = "40", h.t1Qty = "50"; // mark limit min(1000, 750)
  h.haircut = "12.50", h.closePrice = 123456;
  // The request's fields as "tag=text", in order: the collateral fields
  // only when the holding has a collateral type.
  auto sent = [](std::string qty, std::string action, bool collateral) {
    Strings f = {"54001=C1", "64030=CNC", "63003=500325", "61002=INE001A01036"};
    if (collateral)
      f.insert(f.end(), {"64297=" + qty, "64172=0.125000", "59351=123456"});
    f.insert(f.end(), {"63001=nse_cm", "10100=2885", "63100=ABC-EQ", "63001=bse_cm", "10100=500325",
                       "63100=ABCB", "64044=" + qty, "20008=" + action, "54247=RMS1"});
    return f;
  };
  const struct {
    const char* name;
    MarkOperation operation;
    const char *quantity, *message; // message "" when accepted
    Strings fields = {};
    const char* collateralType = "CL";
  } cases[] = {
      {"letters", kMarkCur, "abc", kQuantityZeroMessage},
      {"one past the mark limit", kMarkFo, "751", "Entered Quantity 751 cannot exceed 750"},
      {"over the FO unmark limit", kUnmarkFo, "+101", "Entered Quantity 101 cannot exceed 100"},
      {"over the CUR unmark limit", kUnmarkCur, "41x", "Entered Quantity 41 cannot exceed 40"},
      {"mark at the limit with a sign", kMarkFo, "+750", "", sent("+750", "MF", true)},
      {"no collateral type", kUnmarkCur, "40 shares", "", sent("40 shares", "UC", false), "---"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    h.collateralType = c.collateralType;
    ScopedMessageRecorder recorder;
    const bool accepted = *c.message == 0;
    EXPECT_EQ(CheckMarkQuantity(c.operation, h, c.quantity), accepted);
    EXPECT_EQ(recorder.messages(), accepted ? Strings{} : Strings{c.message});
    if (accepted) {
      const CLinkRequest r =
          MarginTransferRequest(h, c.quantity, *MarkOperationOf(c.operation), "RMS1");
      Strings fields;
      for (const CLinkRequest::Field& f : r.fields())
        fields.push_back(std::to_string(f.tag) + "=" + f.text);
      EXPECT_EQ(fields, c.fields);
    }
  }
  // An unmark offers its field's text as it stands, a mark its limit.
  EXPECT_EQ(QuantityPrefill(kUnmarkFo, h) + " " + QuantityPrefill(kUnmarkCur, h), "100 40");
  // The mark limit in 32-bit arithmetic: the sum wraps; text past 32 bits
  // is clamped.
  h.holdingsQty = h.t1Qty = "2147483647", h.usedQty = "0";
  EXPECT_EQ(QuantityPrefill(kMarkCur, h), "-2");
  h.holdingsQty = "99999999999", h.t1Qty = "0";
  EXPECT_EQ(QuantityPrefill(kMarkFo, h), "2147483647");
}

} // namespace
} // namespace vh
