// The holdings view against a real tarn-riskd, driven through its controls:
// every answer is compared field by field with the database it came from.
#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QTabBar>
#include <QTest>

#include <functional>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holding_request.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/host_context.h"
#include "plugin/tarn_host_api.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

QComboBox* Combo(QWidget* view, int id) {
  return qobject_cast<QComboBox*>(GetDlgItem(view, id));
}

bool SelectNse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboNseExchange, "NSE") && Pick(v, kComboNseSymbol, s.nseSymbol) &&
         Pick(v, kComboNseSeries, s.nseSymbol + "-" + s.nseSeries);
}

bool SelectBse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboBseExchange, "BSE") && Pick(v, kComboBseGroup, s.bseGroup) &&
         Pick(v, kComboBseSymbol, s.bseSymbol);
}

bool Press(QWidget* v) {
  return Click(v, kButtonViewHoldPos);
}

class ViewHoldE2E : public BackendFixture {};

TEST_F(ViewHoldE2E, AnswersEqualTheDatabaseRowsFieldByField) {
  const Scrip a = FindScrip(kBothLegs), b = FindScrip(kBothLegs, 1), bse = FindScrip(kBseOnly);
  const std::string client = BusiestClient();
  const struct {
    const char* name;
    std::function<bool(QWidget*)> select;
    std::string where;
    bool everyOtherClient = false; // combo 9013 offers every other client only
    bool drops = false;            // records are left out (other clients, older answer)
  } cases[] = {
      {"nseOnly", [&](QWidget* v) { return SelectNse(v, a) && Press(v); }, "s.id=" + a.id},
      {"bseOnly", [&](QWidget* v) { return SelectBse(v, bse) && Press(v); }, "s.id=" + bse.id},
      {"bothRows", [&](QWidget* v) { return SelectNse(v, a) && SelectBse(v, b) && Press(v); },
       "s.id IN (" + a.id + "," + b.id + ")"},
      {"client",
       [&](QWidget* v) {
         return Click(v, kRadioClient) && Pick(v, kComboClient, client) && Press(v);
       },
       "h.client_id='" + client + "'"},
      // The second press comes while the first answer may still stream.
      {"secondRequest",
       [&](QWidget* v) { return SelectNse(v, a) && Press(v) && SelectNse(v, b) && Press(v); },
       "s.id=" + b.id, false, true},
      {"unknownClientsDropped", [&](QWidget* v) { return SelectNse(v, a) && Press(v); },
       "s.id=" + a.id, true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto view = MakeView(c.everyOtherClient);
    ASSERT_TRUE(c.select(view.get()));
    ASSERT_TRUE(WaitForAnswers(*view));
    auto expected = DatabaseRows(c.where);
    std::erase_if(expected, [&](const Row& r) { return !offered.count(r[0]); });
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(GridRows(*view), expected);
    EXPECT_EQ(view->Core().store().RecordCount(), expected.size());
    EXPECT_EQ(view->Core().droppedRecords() > 0, c.drops);
    EXPECT_TRUE(messages.empty());
  }
}

TEST_F(ViewHoldE2E, MessagesAndLoadBse) {
  const Scrip both = FindScrip(kBothLegs, 2), nseOnly = FindScrip(kNseOnly);
  const struct {
    const char* name;
    std::function<void(QWidget*)> prepare;
    int button;
    const char* message;   // "" for none
    std::string bseSymbol; // what "Load BSE" must end on; "" for nothing
  } cases[] = {
      {"bothDashes", [](QWidget*) {}, kButtonViewHoldPos, kMsgSelectScrip},
      {"noNseExchange", [](QWidget* v) { Combo(v, kComboNseExchange)->setCurrentIndex(-1); },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noBseExchange", [](QWidget* v) { Combo(v, kComboBseExchange)->setCurrentIndex(-1); },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noClient", [](QWidget* v) { Click(v, kRadioClient); }, kButtonViewHoldPos,
       kMsgSelectClient},
      {"loadBseWithoutScrip", [](QWidget*) {}, kButtonLoadBse, ""},
      {"loadBseCounterpart", [&](QWidget* v) { SelectNse(v, both); }, kButtonLoadBse, "",
       both.bseSymbol},
      {"loadBseNone", [&](QWidget* v) { SelectNse(v, nseOnly); }, kButtonLoadBse,
       kMsgNoBseCounterpart},
  };
  auto view = MakeView();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->ResetSelection();
    // Resets never add items twice.
    ASSERT_EQ(Combo(view.get(), kComboNseExchange)->count(), 2);
    messages.clear();
    c.prepare(view.get());
    ASSERT_TRUE(Click(view.get(), c.button));
    EXPECT_EQ(view->Core().outstandingAnswers(), 0);
    // "Load BSE" empties the BSE row before any answer.
    if (c.button == kButtonLoadBse)
      EXPECT_EQ(Combo(view.get(), kComboBseSymbol)->count(), 0);
    QComboBox* bseSymbol = Combo(view.get(), kComboBseSymbol);
    EXPECT_TRUE(QTest::qWaitFor(
        [&] {
          return bseSymbol->currentText().toStdString() == c.bseSymbol &&
                 !(*c.message && messages.empty());
        },
        10000));
    EXPECT_EQ(messages,
              *c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{});
  }
}

TEST_F(ViewHoldE2E, PriceTicksReachEveryRowWithItsOwnScripsClose) {
  auto view = MakeView();
  ASSERT_TRUE(Click(view.get(), kRadioClient) && Pick(view.get(), kComboClient, BusiestClient()));
  ASSERT_TRUE(Press(view.get()) && WaitForAnswers(*view));
  const HoldingsStore& store = view->Core().store();
  ASSERT_GT(store.RecordCount(), 1u);
  auto exchange = [&](const CViewHoldings& r) {
    return store.Slot(r.priceSlot[0]).tick > 0 ? 0 : 1;
  };
  // The back-end ticks every leg every second.
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        for (size_t i = 0; i < store.RecordCount(); ++i)
          if (store.Slot(store.Record(i)->priceSlot[exchange(*store.Record(i))]).tick == 0)
            return false;
        return true;
      },
      15000));
  for (size_t i = 0; i < store.RecordCount(); ++i) {
    const CViewHoldings& r = *store.Record(i);
    const int x = exchange(r);
    const std::string symbol(store.Text(x == 0 ? r.nseSymbol : r.bseSymbol));
    const std::string close =
        DatabaseText("SELECT close_paise FROM scrip WHERE " +
                     std::string(x == 0 ? "nse_symbol" : "bse_symbol") + "='" + symbol + "'");
    EXPECT_EQ(std::to_string(store.SecondPrice(r, x)), close) << symbol;
    EXPECT_GT(store.Price(r, x), 0) << symbol;
  }
}

TEST_F(ViewHoldE2E, LayoutsTabsMenuAndColumnsAfterARestart) {
  {
    CViewHold fresh;
    fresh.resize(1000, 620);
    fresh.Initialise("RMS1", 0);
    // Initialisation lays the tab out against the width less 430 ...
    EXPECT_EQ(fresh.HoldingsGrid()->geometry(), QRect(10, 110, 975, 450));
    EXPECT_EQ(fresh.Tabs()->geometry(), QRect(10, 560, 570, 30));
    // ... a resize against the width less 30, at the bottom edge.
    fresh.show();
    fresh.resize(1200, 800);
    ASSERT_TRUE(QTest::qWaitFor([&] { return fresh.size() == QSize(1200, 800); }, 5000));
    EXPECT_EQ(fresh.AlertGrid()->geometry(), QRect(10, 110, 1175, 630));
    EXPECT_EQ(fresh.Tabs()->geometry(), QRect(10, 775, 1170, 30));
    fresh.SelectTab(1);
    EXPECT_TRUE(fresh.HoldingsGrid()->isHidden() && !fresh.AlertGrid()->isHidden());
    // The administrator holds the mark right: the popups come first, then
    // the grid's items without "Read from Excel".
    const auto menu = fresh.MakeRowMenu();
    const auto actions = menu->actions();
    ASSERT_GE(actions.size(), 7);
    EXPECT_TRUE(actions[0]->menu() && actions[1]->menu() && actions[2]->isSeparator());
    for (int i = 3; i < 7; ++i)
      EXPECT_EQ(actions[i]->data().toInt(), std::vector<int>({4006, 4008, 4009, 4010})[i - 3]);
    ASSERT_EQ(fresh.AddCustomColumn("Value", "\"Holdings Qty\" * \"Close Price\""), QString());
    fresh.HoldingsGrid()->horizontalHeader()->moveSection(1, 18); // "Product" to the far right
  }                                                               // closing saves the profile
  auto view = MakeView();
  const QStringList names = view->HeaderNames();
  ASSERT_EQ(names.size(), 19);
  EXPECT_EQ(names.last(), "Product");
  EXPECT_TRUE(names.contains("Value"));
  EXPECT_EQ(view->AlertGrid()->HeaderItemCount(), kAlertColumnCount);
  EXPECT_EQ(view->AlertGrid()->HeaderItemText(2), "ISIN");
}

} // namespace
} // namespace vh::test
