// CMarkUnMark through its controls: every refusal with the focus back on
// the quantity, and the request an accepted quantity sends, as the real
// link puts it on the wire (through the fake control this executable
// exports as host).
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/message.h"
#include "holdings/dialogs/mark_unmark_dlg.h"
#include "link/backend_link.h"
#include "plugin/tarn_host_api.h"
#include "tests/link/fake_backend.h"
#include "tests/link/recording_owner.h"
#include "tests/widgets/screenshot.h"

namespace vh {
namespace {

using Strings = std::vector<std::string>;
using linktest::Fields;

class MarkDialogTest : public testing::Test, public HoldingSelection {
protected:
  void SetUp() override {
    linktest::g_control = &control;
    link = std::make_unique<CBackendLink>(&owner);
    h.clientId = "C1", h.product = "CNC", h.isin = "INE001A01036", h.value63003 = "500325";
    h.nseSymbol = "ABC", h.series = "EQ", h.nseToken = "2885";
    h.bseSymbol = "ABCB", h.bseScripCode = "500325";
    h.holdingsQty = "1000", h.holdingsUpdateQty = "100", h.usedQty = "300";
    h.withheldHoldingQty = "40", h.t1Qty = "50"; // mark limit min(1000, 750)
    h.haircut = "12.50", h.collateralType = "CL", h.closePrice = 123456;
  }
  void TearDown() override { linktest::g_control = nullptr; }
  std::optional<MarkHolding> SelectedHolding() override {
    return selected ? h : std::optional<MarkHolding>();
  }
  QLineEdit* Edit(int id) { return qobject_cast<QLineEdit*>(GetDlgItem(&dialog, id)); }
  void Submit(const QString& quantity) {
    Edit(kEditMarkQuantity)->clear();
    QTest::keyClicks(Edit(kEditMarkQuantity), quantity);
    QTest::mouseClick(qobject_cast<QPushButton*>(GetDlgItem(&dialog, kButtonMarkSubmit)),
                      Qt::LeftButton);
  }

  MarkHolding h;
  bool selected = true;
  linktest::FakeBackendControl control;
  linktest::RecordingOwner owner;
  std::unique_ptr<CBackendLink> link;
  ScopedMessageRecorder recorder;
  CMarkUnMark dialog{*this, [this](const CLinkRequest& r) { return link->Send(r); }, "RMS1"};
};

TEST_F(MarkDialogTest, RefusalsAndWhatAnAcceptedQuantitySends) {
  const Fields head = {{0, {"om_stock_margin_transfer"}},
                       {54001, {"C1"}},
                       {64030, {"CNC"}},
                       {63003, {"500325"}},
                       {61002, {"INE001A01036"}}};
  const Fields legs = {
      {63001, {"nse_cm", "bse_cm"}}, {10100, {"2885", "500325"}}, {63100, {"ABC-EQ", "ABCB"}}};
  auto sent = [&](const char* qty, const char* action, bool collateral) {
    Fields f = head;
    if (collateral)
      f.insert(f.end(), {{64297, {qty}}, {64172, {"0.125000"}}, {59351, {"123456"}}});
    f.insert(f.end(), legs.begin(), legs.end());
    f.insert(f.end(), {{64044, {qty}}, {20008, {action}}, {54247, {"RMS1"}}});
    return f;
  };
  const struct {
    const char* name;
    int command;
    const char *quantity, *message; // message "" when sent
    Fields expected = {};
    bool collateral = true;
  } cases[] = {
      {"letters", kCmdMarkCur, "abc", kQuantityZeroMessage},
      {"one past the mark limit", kCmdMarkFo, "751", "Entered Quantity 751 cannot exceed 750"},
      {"over the FO unmark limit", kCmdUnmarkFo, "+101", "Entered Quantity 101 cannot exceed 100"},
      {"over the CUR unmark limit", kCmdUnmarkCur, "41x", "Entered Quantity 41 cannot exceed 40"},
      {"mark at the limit with a sign", kCmdMarkFo, "+750", "", sent("+750", "MF", true)},
      {"no collateral type", kCmdUnmarkCur, "40 shares", "", sent("40 shares", "UC", false), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    recorder.clear();
    control.sent.clear();
    h.collateralType = c.collateral ? "CL" : "---";
    ASSERT_TRUE(dialog.Open(c.command));
    QApplication::setActiveWindow(&dialog);
    Submit(c.quantity);
    const bool refused = *c.message != 0;
    EXPECT_EQ(recorder.messages(), refused ? Strings{c.message} : Strings{});
    EXPECT_EQ(dialog.isVisible(), refused);
    if (refused) {
      EXPECT_EQ(QApplication::focusWidget(), Edit(kEditMarkQuantity));
    }
    EXPECT_EQ(control.sent, refused ? std::vector<Fields>{} : std::vector<Fields>{c.expected});
  }
  ASSERT_TRUE(dialog.Open(kCmdMarkFo));
  const QString shown =
      Edit(kEditMarkNseExchange)->text() + "|" + Edit(kEditMarkNseSymbol)->text() + "|" +
      Edit(kEditMarkBseExchange)->text() + "|" + Edit(kEditMarkBseSymbol)->text() + "|" +
      Edit(kEditMarkClient)->text() + "|" + Edit(kEditMarkProduct)->text();
  EXPECT_EQ(shown, "NSE|ABC-EQ|BSE|ABCB|C1|CNC");
  EXPECT_TRUE(GetDlgItem(&dialog, kButtonMarkCancel)->isHidden());
  EXPECT_TRUE(test::SaveScreenshot(dialog, "mark_unmark"));
  // The mark limit in 32-bit arithmetic: the sum wraps; text past 32 bits
  // is clamped, in the limit and in the quantity typed alike (one reading).
  h.holdingsQty = h.t1Qty = "2147483647", h.usedQty = "0";
  ASSERT_TRUE(dialog.Open(kCmdMarkCur));
  EXPECT_EQ(Edit(kEditMarkQuantity)->text(), "-2");
  h.holdingsQty = "99999999999", h.t1Qty = "0";
  ASSERT_TRUE(dialog.Open(kCmdMarkFo));
  EXPECT_EQ(Edit(kEditMarkQuantity)->text(), "2147483647");
  selected = false;
  dialog.hide();
  EXPECT_FALSE(dialog.Open(kCmdMarkFo)); // no selected row: nothing happens
  EXPECT_FALSE(dialog.isVisible());
}

} // namespace
} // namespace vh
