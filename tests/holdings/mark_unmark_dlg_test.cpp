// CMarkUnMark through its controls against a real tarn-riskd: the holding
// comes from a holdings answer, Submit sends the built request on a socket,
// and the next holdings answer shows the moved quantity. Refused quantities
// give their message and put the focus back on the quantity.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/message.h"
#include "holdings/dialogs/mark_unmark_dlg.h"
#include "kdl/tags.h"
#include "plugin/tarn_host_api.h"
#include "tests/riskd/riskd_fixture.h"
#include "tests/widgets/screenshot.h"

namespace vh {
namespace {

using riskd_test::Text;
using Strings = std::vector<std::string>;

// The holding as the holdings grid shows it, from one answer record.
MarkHolding FromRecord(const kdl::Message& r) {
  MarkHolding h;
  h.clientId = Text(r, kTagClientId);
  h.product = Text(r, kTagProduct);
  h.value63003 = Text(r, kTagBseCode);
  h.isin = Text(r, kTagIsin);
  for (uint32_t leg = 0; leg < 2; ++leg) {
    const std::string symbol = Text(r, kTagTradingSymbol, leg);
    if (Text(r, kTagSegment, leg) == "nse_cm") {
      const size_t dash = symbol.rfind('-');
      h.nseSymbol = symbol.substr(0, dash);
      h.series = dash == std::string::npos ? "" : symbol.substr(dash + 1);
      h.nseToken = Text(r, kTagScripCode, leg);
    } else if (Text(r, kTagSegment, leg) == "bse_cm") {
      h.bseSymbol = symbol;
      h.bseScripCode = Text(r, kTagScripCode, leg);
    }
  }
  h.holdingsQty = Text(r, kTagHoldingsQty);
  h.holdingsUpdateQty = Text(r, kTagHoldingsUpdateQty);
  h.usedQty = Text(r, kTagUsedQty);
  h.withheldHoldingQty = Text(r, kTagWithheldHoldingQty);
  h.t1Qty = Text(r, kTagT1Qty);
  h.haircut = Text(r, kTagHaircut);
  h.collateralType = Text(r, kTagCollateralType);
  h.closePrice = int32_t(std::atol(Text(r, kTagClosePrice).c_str()));
  return h;
}

class MarkDialogTest : public riskd_test::RiskdTest, public HoldingSelection {
protected:
  void SetUp() override {
    RiskdTest::SetUp();
    StartServer();
    client_ = Str("SELECT h.client_id FROM holding h JOIN scrip s ON s.id=h.scrip_id WHERE "
                  "s.nse_token IS NOT NULL AND s.bse_code IS NOT NULL AND h.client_id IN "
                  "(SELECT client_id FROM user_client WHERE user_id='RMS2') LIMIT 1");
    ASSERT_FALSE(client_.empty());
    ASSERT_TRUE(db_.Exec("UPDATE holding SET holdings_qty=1000,holdings_update_qty=100,"
                         "used_qty=300,withheld_holding_qty=40,t1_qty=50 WHERE client_id='" +
                             client_ + "'",
                         nullptr));
    selected_ = Refresh().front();
  }
  std::optional<MarkHolding> SelectedHolding() override { return selected_; }
  // The client's holdings as a fresh "display_holding_detail" answer.
  std::vector<MarkHolding> Refresh() {
    riskd_test::TestClient c(server_->port());
    const riskd_test::Stream s = c.Ask(
        riskd_test::MakeRequest("display_holding_detail", {{54001, client_}, {31003, "RMS2"}}));
    std::vector<MarkHolding> out;
    for (const auto& r : s.records)
      out.push_back(FromRecord(r));
    return out;
  }
  const MarkHolding* Find(const std::vector<MarkHolding>& all) {
    for (const MarkHolding& h : all)
      if (h.nseToken == selected_->nseToken && h.bseScripCode == selected_->bseScripCode &&
          h.product == selected_->product)
        return &h;
    return nullptr;
  }
  // Sends as the view's link would, then waits for a later answer on the
  // same connection, which the server gives only after the transfer.
  int Send(const CLinkRequest& request) {
    riskd_test::Fields fields;
    for (const auto& f : request.fields())
      fields.push_back({f.tag, f.text});
    riskd_test::TestClient c(server_->port());
    if (!c.Send(riskd_test::MakeRequest(request.name(), fields)))
      return 0;
    ++sent_;
    return c.Ask(riskd_test::MakeRequest("om_get_user_peer_data", {{31003, "RMS2"}})).ended;
  }
  QLineEdit* Quantity(CMarkUnMark& d) {
    return qobject_cast<QLineEdit*>(GetDlgItem(&d, kEditMarkQuantity));
  }
  void Submit(CMarkUnMark& d, const QString& quantity) {
    Quantity(d)->clear();
    QTest::keyClicks(Quantity(d), quantity);
    QTest::mouseClick(qobject_cast<QPushButton*>(GetDlgItem(&d, kButtonMarkSubmit)),
                      Qt::LeftButton);
  }

  std::string client_;
  std::optional<MarkHolding> selected_;
  int sent_ = 0;
  ScopedMessageRecorder recorder_;
};

TEST_F(MarkDialogTest, OpeningFillsTheControlsPerOperation) {
  CMarkUnMark dialog(
      *this, [this](const CLinkRequest& r) { return Send(r); }, "RMS2");
  const struct {
    const char* name;
    int command;
    const char* caption;
    const char* prefill;
  } cases[] = {
      {"mark FO", kCmdMarkFo, "FO Marking", "750"},
      {"mark CUR", kCmdMarkCur, "Currency Marking", "750"},
      {"unmark FO", kCmdUnmarkFo, "FO UnMarking", "100"},
      {"unmark CUR", kCmdUnmarkCur, "Currency UnMarking", "40"},
  };
  for (const auto& c : cases) {
    ASSERT_TRUE(dialog.Open(c.command)) << c.name;
    EXPECT_TRUE(dialog.isVisible()) << c.name;
    EXPECT_EQ(dialog.windowTitle(), c.caption) << c.name;
    EXPECT_EQ(Quantity(dialog)->text(), c.prefill) << c.name;
  }
  auto text = [&](int id) { return qobject_cast<QLineEdit*>(GetDlgItem(&dialog, id))->text(); };
  EXPECT_EQ(text(kEditMarkNseExchange), "NSE");
  EXPECT_EQ(text(kEditMarkBseExchange), "BSE");
  EXPECT_EQ(text(kEditMarkNseSymbol).toStdString(), selected_->nseSymbol + "-" + selected_->series);
  EXPECT_EQ(text(kEditMarkBseSymbol).toStdString(), selected_->bseSymbol);
  EXPECT_EQ(text(kEditMarkClient).toStdString(), client_);
  EXPECT_EQ(text(kEditMarkProduct).toStdString(), selected_->product);
  EXPECT_TRUE(GetDlgItem(&dialog, kButtonMarkCancel)->isHidden());
  EXPECT_TRUE(test::SaveScreenshot(dialog, "mark_unmark"));
  selected_.reset();
  EXPECT_FALSE(dialog.Open(kCmdMarkFo)); // no selected row
  EXPECT_FALSE(dialog.Open(4015));
}

TEST_F(MarkDialogTest, RefusedQuantitiesKeepTheDialogAndFocusTheQuantity) {
  CMarkUnMark dialog(
      *this, [this](const CLinkRequest& r) { return Send(r); }, "RMS2");
  const struct {
    const char* name;
    int command;
    const char* quantity;
    const char* message;
  } cases[] = {
      {"zero", kCmdMarkFo, "0", "Entered Qty cannot be 0"},
      {"letters", kCmdMarkCur, "abc", "Entered Qty cannot be 0"},
      {"over the mark limit", kCmdMarkFo, "751", "Entered Quantity 751 cannot exceed 750"},
      {"over the FO unmark limit", kCmdUnmarkFo, "+101", "Entered Quantity 101 cannot exceed 100"},
      {"over the CUR unmark limit", kCmdUnmarkCur, "41x", "Entered Quantity 41 cannot exceed 40"},
  };
  for (const auto& c : cases) {
    recorder_.clear();
    ASSERT_TRUE(dialog.Open(c.command)) << c.name;
    QApplication::setActiveWindow(&dialog);
    dialog.setFocus();
    Submit(dialog, c.quantity);
    EXPECT_EQ(recorder_.messages(), Strings{c.message}) << c.name;
    EXPECT_TRUE(dialog.isVisible()) << c.name;
    EXPECT_EQ(QApplication::focusWidget(), Quantity(dialog)) << c.name;
  }
  EXPECT_EQ(sent_, 0);
}

TEST_F(MarkDialogTest, AMarkThenARefreshShowsTheMovedQuantity) {
  CMarkUnMark dialog(
      *this, [this](const CLinkRequest& r) { return Send(r); }, "RMS2");
  const struct {
    const char* name;
    int command;
    const char* quantity;
    int held, update, withheld; // after, as the next answer shows them
  } cases[] = {
      {"mark FO with a plus sign", kCmdMarkFo, "+20", 980, 120, 40},
      {"mark CUR at the limit", kCmdMarkCur, "710", 270, 120, 750},
      {"unmark FO with trailing letters", kCmdUnmarkFo, "120 shares", 390, 0, 750},
      {"unmark CUR", kCmdUnmarkCur, "50", 440, 0, 700},
  };
  for (const auto& c : cases) {
    recorder_.clear();
    ASSERT_TRUE(dialog.Open(c.command)) << c.name;
    Submit(dialog, c.quantity);
    EXPECT_TRUE(recorder_.messages().empty()) << c.name;
    EXPECT_FALSE(dialog.isVisible()) << c.name;
    const std::vector<MarkHolding> refreshed = Refresh();
    const MarkHolding* now = Find(refreshed);
    ASSERT_NE(now, nullptr) << c.name;
    EXPECT_EQ(now->holdingsQty, std::to_string(c.held)) << c.name;
    EXPECT_EQ(now->holdingsUpdateQty, std::to_string(c.update)) << c.name;
    EXPECT_EQ(now->withheldHoldingQty, std::to_string(c.withheld)) << c.name;
    selected_ = *now; // the user selects the refreshed row
  }
  EXPECT_EQ(sent_, 4);
}

} // namespace
} // namespace vh
