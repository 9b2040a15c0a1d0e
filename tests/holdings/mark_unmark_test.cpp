// Mark limits and prefills at the edges of 32-bit arithmetic (the dialog
// tests cover the ordinary ones).
#include <gtest/gtest.h>

#include "holdings/mark_unmark.h"

namespace vh {
namespace {

MarkHolding Quantities(const char* held, const char* update, const char* used, const char* withheld,
                       const char* t1) {
  MarkHolding h;
  h.holdingsQty = held;
  h.holdingsUpdateQty = update;
  h.usedQty = used;
  h.withheldHoldingQty = withheld;
  h.t1Qty = t1;
  return h;
}

TEST(MarkUnmark, OperationsLimitsAndPrefills) {
  const struct {
    const char* name;
    int command;
    MarkHolding holding;
    const char *caption, *action;
    int32_t limit;
    const char* prefill;
  } cases[] = {
      {"mark CUR: a negative free part", kCmdMarkCur, Quantities("10", "0", "90", "0", "30"),
       "Currency Marking", "MC", -50, "-50"},
      {"mark: the 32-bit sum wraps", kCmdMarkFo,
       Quantities("2147483647", "0", "0", "0", "2147483647"), "FO Marking", "MF", -2, "-2"},
      {"mark: text past 32 bits is clamped", kCmdMarkCur,
       Quantities("99999999999", "0", "0", "0", "0"), "Currency Marking", "MC", 2147483647,
       "2147483647"},
  };
  for (const auto& c : cases) {
    const auto op = MarkOperationForCommand(c.command);
    ASSERT_TRUE(op) << c.name;
    EXPECT_STREQ(op->caption, c.caption) << c.name;
    EXPECT_STREQ(op->action, c.action) << c.name;
    EXPECT_EQ(MarkLimit(op->operation, c.holding), c.limit) << c.name;
    EXPECT_EQ(QuantityPrefill(op->operation, c.holding), c.prefill) << c.name;
  }
  EXPECT_FALSE(MarkOperationForCommand(4015));
}

} // namespace
} // namespace vh
