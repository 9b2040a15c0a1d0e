// Mark and unmark: limits, prefills, Submit's messages and the request as
// the link puts it on the wire (through the fake control this executable
// exports as host).
#include <gtest/gtest.h>

#include "common/message.h"
#include "holdings/mark_unmark.h"
#include "link/backend_link.h"
#include "tests/link/fake_backend.h"
#include "tests/link/recording_owner.h"

namespace vh {
namespace {

using Strings = std::vector<std::string>;

MarkHolding Holding(const char* held, const char* update, const char* used, const char* withheld,
                    const char* t1) {
  MarkHolding h;
  h.clientId = "C1";
  h.product = "CNC";
  h.isin = "INE001A01036";
  h.nseSymbol = "ABC";
  h.series = "EQ";
  h.nseToken = "2885";
  h.bseSymbol = "ABCB";
  h.bseScripCode = "500325";
  h.holdingsQty = held;
  h.holdingsUpdateQty = update;
  h.usedQty = used;
  h.withheldHoldingQty = withheld;
  h.t1Qty = t1;
  h.haircut = "12.50";
  h.collateralType = "CL";
  h.closePrice = 123456;
  return h;
}

TEST(MarkUnmark, OperationsLimitsAndPrefills) {
  const struct {
    const char* name;
    int command;
    MarkHolding holding;
    const char* caption;
    const char* action;
    int32_t limit;
    const char* prefill;
  } cases[] = {
      {"unmark FO: the update qty as it stands", kCmdUnmarkFo,
       Holding("100", " 40x", "0", "7", "0"), "FO UnMarking", "UF", 40, " 40x"},
      {"mark FO: holdings when T1 covers used", kCmdMarkFo, Holding("100", "0", "10", "0", "30"),
       "FO Marking", "MF", 100, "100"},
      {"mark FO: free part when used exceeds T1", kCmdMarkFo, Holding("100", "0", "90", "0", "30"),
       "FO Marking", "MF", 40, "40"},
      {"mark CUR: negative free part", kCmdMarkCur, Holding("10", "0", "90", "0", "30"),
       "Currency Marking", "MC", -50, "-50"},
      {"unmark CUR: withheld qty text", kCmdUnmarkCur, Holding("1", "2", "3", "abc", "5"),
       "Currency UnMarking", "UC", 0, "abc"},
      {"mark: the 32-bit sum wraps", kCmdMarkFo, Holding("2147483647", "0", "0", "0", "2147483647"),
       "FO Marking", "MF", -2, "-2"},
      {"mark: text past 32 bits is clamped", kCmdMarkCur,
       Holding("99999999999", "0", "0", "0", "0"), "Currency Marking", "MC", 2147483647,
       "2147483647"},
  };
  for (const auto& c : cases) {
    const auto op = MarkOperationForCommand(c.command);
    ASSERT_TRUE(op) << c.name;
    EXPECT_STREQ(op->caption, c.caption) << c.name;
    EXPECT_STREQ(op->action, c.action) << c.name;
    EXPECT_EQ(MarkLimit(op->operation, c.holding), c.limit) << c.name;
    EXPECT_EQ(QuantityPrefill(op->operation, c.holding), c.prefill) << c.name;
    EXPECT_EQ(MarkOperationOf(op->operation)->command, c.command) << c.name;
  }
  EXPECT_FALSE(MarkOperationForCommand(4015));
  EXPECT_FALSE(MarkOperationOf(0));
}

TEST(MarkUnmark, SubmitRefusesZeroAndTooMuch) {
  const MarkHolding h = Holding("1000", "100", "300", "40", "50"); // mark limit 750
  const struct {
    const char* name;
    MarkOperation op;
    const char* quantity;
    const char* message; // "" when accepted
  } cases[] = {
      {"zero", kMarkFo, "0", kQuantityZeroMessage},
      {"letters only", kMarkFo, "abc", kQuantityZeroMessage},
      {"empty", kUnmarkFo, "", kQuantityZeroMessage},
      {"at the limit", kMarkFo, "750", ""},
      {"plus sign", kMarkCur, "+750", ""},
      {"leading digits", kMarkCur, "12abc", ""},
      {"negative passes the limit check", kMarkFo, "-3", ""},
      {"one past", kMarkFo, "751", "Entered Quantity 751 cannot exceed 750"},
      {"unmark FO over", kUnmarkFo, "101", "Entered Quantity 101 cannot exceed 100"},
      {"unmark CUR over", kUnmarkCur, " 41", "Entered Quantity 41 cannot exceed 40"},
      {"past 32 bits", kMarkFo, "99999999999", "Entered Quantity 2147483647 cannot exceed 750"},
  };
  for (const auto& c : cases) {
    ScopedMessageRecorder recorder;
    EXPECT_EQ(CheckMarkQuantity(c.op, h, c.quantity), !*c.message) << c.name;
    EXPECT_EQ(recorder.messages(), *c.message ? Strings{c.message} : Strings{}) << c.name;
  }
}

class TransferRequestTest : public testing::Test {
protected:
  void SetUp() override { linktest::g_control = &control; }
  void TearDown() override { linktest::g_control = nullptr; }
  linktest::FakeBackendControl control;
  linktest::RecordingOwner owner;
  ScopedMessageRecorder recorder;
};

TEST_F(TransferRequestTest, FieldsInOrderAndTheirConditions) {
  using linktest::Fields;
  const MarkOperationInfo mark = *MarkOperationOf(kMarkFo);
  MarkHolding both = Holding("1", "1", "1", "1", "1");
  both.value63003 = "500325";
  MarkHolding noCollateral = Holding("1", "1", "1", "1", "1");
  noCollateral.collateralType = "---";
  noCollateral.bseSymbol.clear();
  MarkHolding noSymbols = noCollateral;
  noSymbols.nseSymbol.clear();
  noSymbols.collateralType = "";
  noSymbols.haircut = "---";
  const struct {
    const char* name;
    MarkHolding holding;
    Fields expected;
  } cases[] = {
      {"both exchanges, with collateral",
       both,
       {{0, {"om_stock_margin_transfer"}},
        {54001, {"C1"}},
        {64030, {"CNC"}},
        {63003, {"500325"}},
        {61002, {"INE001A01036"}},
        {64297, {"+25"}},
        {64172, {"0.125000"}},
        {59351, {"123456"}},
        {63001, {"nse_cm", "bse_cm"}},
        {10100, {"2885", "500325"}},
        {63100, {"ABC-EQ", "ABCB"}},
        {64044, {"+25"}},
        {20008, {"MF"}},
        {54247, {"RMS1"}}}},
      {"collateral type ---, NSE only",
       noCollateral,
       {{0, {"om_stock_margin_transfer"}},
        {54001, {"C1"}},
        {64030, {"CNC"}},
        {61002, {"INE001A01036"}},
        {63001, {"nse_cm"}},
        {10100, {"2885"}},
        {63100, {"ABC-EQ"}},
        {64044, {"+25"}},
        {20008, {"MF"}},
        {54247, {"RMS1"}}}},
      {"no symbols, haircut ---",
       noSymbols,
       {{0, {"om_stock_margin_transfer"}},
        {54001, {"C1"}},
        {64030, {"CNC"}},
        {61002, {"INE001A01036"}},
        {64297, {"+25"}},
        {64172, {"0.000000"}},
        {59351, {"123456"}},
        {64044, {"+25"}},
        {20008, {"MF"}},
        {54247, {"RMS1"}}}},
  };
  CBackendLink link(&owner);
  for (const auto& c : cases) {
    control.sent.clear();
    recorder.clear();
    ASSERT_EQ(link.Send(MarginTransferRequest(c.holding, "+25", mark, "RMS1")), 1) << c.name;
    ASSERT_EQ(control.sent.size(), 1u) << c.name;
    EXPECT_EQ(control.sent[0], c.expected) << c.name;
    EXPECT_EQ(recorder.statuses(), Strings{"om_stock_margin_transfer request sent successfully"})
        << c.name;
  }
  // The exchange groups go in the order NSE then BSE field by field.
  const auto fields = MarginTransferRequest(both, "5", mark, "U").fields();
  std::vector<uint32_t> tags;
  for (const auto& f : fields)
    tags.push_back(f.tag);
  EXPECT_EQ(tags, (std::vector<uint32_t>{54001, 64030, 63003, 61002, 64297, 64172, 59351, 63001,
                                         10100, 63100, 63001, 10100, 63100, 64044, 20008, 54247}));
}

TEST_F(TransferRequestTest, AFailedSendIsShownAndLeftAsStatus) {
  control.failSends = true;
  CBackendLink link(&owner);
  EXPECT_EQ(link.Send(MarginTransferRequest(Holding("1", "1", "1", "1", "1"), "1",
                                            *MarkOperationOf(kUnmarkCur), "RMS1")),
            0);
  EXPECT_EQ(recorder.messages(), Strings{"om_stock_margin_transfer Request Failure"});
  EXPECT_EQ(LastStatusText(), "om_stock_margin_transfer Request Failure");
}

TEST_F(TransferRequestTest, AFieldThatDoesNotFitLeavesOnlyTheStatus) {
  CBackendLink link(&owner, 200);
  MarkHolding h = Holding("1", "1", "1", "1", "1");
  h.isin = std::string(300, 'I');
  EXPECT_EQ(link.Send(MarginTransferRequest(h, "1", *MarkOperationOf(kMarkCur), "RMS1")), 0);
  EXPECT_TRUE(control.sent.empty());
  EXPECT_TRUE(recorder.messages().empty());
  EXPECT_EQ(LastStatusText(), " Request Failure");
}

} // namespace
} // namespace vh
