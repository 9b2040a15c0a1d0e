// The holdings view against a real tarn-riskd, driven through its controls:
// every answer is compared field by field with the database it came from.
#include <QComboBox>
#include <QHeaderView>
#include <QTabBar>
#include <QTest>

#include <set>

#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/holding_request.h"
#include "holdings/view/view_hold.h"
#include "holdings/view/view_hold_ids.h"
#include "host/host_context.h"
#include "plugin/tarn_host_api.h"
#include "view_fixture.h"

namespace vh::test {
namespace {

// A scrip of the sample with holdings: its NSE leg, BSE leg and id.
struct Scrip {
  std::string nseSymbol, nseSeries, bseSymbol, bseGroup, id;
  std::string trading() const { return nseSymbol + "-" + nseSeries; }
};

Scrip FindScrip(const std::string& dbPath, const std::string& condition, int skip = 0) {
  const std::string from = " FROM scrip s WHERE " + condition +
                           " AND EXISTS(SELECT 1 FROM holding h WHERE h.scrip_id = s.id)"
                           " ORDER BY s.id LIMIT 1 OFFSET " +
                           std::to_string(skip);
  Scrip s;
  s.id = DatabaseText(dbPath, "SELECT s.id" + from);
  s.nseSymbol = DatabaseText(dbPath, "SELECT s.nse_symbol" + from);
  s.nseSeries = DatabaseText(dbPath, "SELECT s.nse_series" + from);
  s.bseSymbol = DatabaseText(dbPath, "SELECT s.bse_symbol" + from);
  s.bseGroup = DatabaseText(dbPath, "SELECT s.bse_group" + from);
  return s;
}

constexpr const char* kBothLegs = "s.nse_symbol IS NOT NULL AND s.bse_symbol IS NOT NULL";
constexpr const char* kNseOnly = "s.bse_symbol IS NULL";
constexpr const char* kBseOnly = "s.nse_symbol IS NULL";

bool SelectNse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboNseExchange, "NSE") && Pick(v, kComboNseSymbol, s.nseSymbol) &&
         Pick(v, kComboNseSeries, s.trading());
}

bool SelectBse(QWidget* v, const Scrip& s) {
  return Pick(v, kComboBseExchange, "BSE") && Pick(v, kComboBseGroup, s.bseGroup) &&
         Pick(v, kComboBseSymbol, s.bseSymbol);
}

class ViewHoldE2E : public BackendFixture {};

TEST_F(ViewHoldE2E, AnswersEqualTheDatabaseRowsFieldByField) {
  const Scrip both = FindScrip(dbPath(), kBothLegs);
  const Scrip other = FindScrip(dbPath(), kBothLegs, 1);
  const Scrip bseOnly = FindScrip(dbPath(), kBseOnly);
  ASSERT_FALSE(both.id.empty());
  ASSERT_FALSE(bseOnly.id.empty());
  const std::string client =
      DatabaseText(dbPath(), "SELECT client_id FROM holding GROUP BY client_id "
                             "ORDER BY count(*) DESC LIMIT 1");
  const struct {
    const char* name;
    std::function<bool(QWidget*)> select;
    std::string where;
  } cases[] = {
      {"nseOnly", [&](QWidget* v) { return SelectNse(v, both); }, "s.id = " + both.id},
      {"bseOnly", [&](QWidget* v) { return SelectBse(v, bseOnly); }, "s.id = " + bseOnly.id},
      {"bothRows", [&](QWidget* v) { return SelectNse(v, both) && SelectBse(v, other); },
       "s.id IN (" + both.id + "," + other.id + ")"},
      {"client",
       [&](QWidget* v) { return Click(v, kRadioClient) && Pick(v, kComboClient, client); },
       "h.client_id = '" + client + "'"},
  };
  auto view = MakeView();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->ResetSelection();
    ASSERT_TRUE(c.select(view.get()));
    ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
    ASSERT_TRUE(WaitForAnswers(*view));
    const auto expected = DatabaseRows(dbPath(), c.where);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(GridRows(*view), expected);
    EXPECT_TRUE(messages.empty()) << messages.front();
  }
}

TEST_F(ViewHoldE2E, RecordsOfClientsMissingFromTheComboAreDropped) {
  const Scrip s = FindScrip(dbPath(), kBothLegs);
  // The combo offers every other client only.
  std::vector<std::string>& ids = host::TheHost().user.clientIds;
  const std::vector<std::string> all = ids;
  std::vector<std::string> kept;
  for (size_t i = 0; i < all.size(); i += 2)
    kept.push_back(all[i]);
  ids = kept;
  auto view = MakeView();
  ids = all;
  ASSERT_EQ(qobject_cast<QComboBox*>(GetDlgItem(view.get(), kComboClient))->count(),
            int(kept.size()));
  ASSERT_TRUE(SelectNse(view.get(), s));
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  ASSERT_TRUE(WaitForAnswers(*view));
  std::string list;
  for (const auto& id : kept)
    list += (list.empty() ? "'" : ",'") + id + "'";
  const auto everyone = DatabaseRows(dbPath(), "s.id = " + s.id);
  const auto expected =
      DatabaseRows(dbPath(), "s.id = " + s.id + " AND h.client_id IN (" + list + ")");
  ASSERT_LT(expected.size(), everyone.size());
  EXPECT_EQ(GridRows(*view), expected);
  EXPECT_EQ(view->Core().droppedRecords(), everyone.size() - expected.size());
}

TEST_F(ViewHoldE2E, ASecondRequestShowsOnlyItsOwnRows) {
  const Scrip first = FindScrip(dbPath(), kBothLegs);
  const Scrip second = FindScrip(dbPath(), kBothLegs, 1);
  auto view = MakeView();
  ASSERT_TRUE(SelectNse(view.get(), first));
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  // The second press comes while the first answer may still be streaming.
  ASSERT_TRUE(SelectNse(view.get(), second));
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  ASSERT_TRUE(WaitForAnswers(*view));
  QTest::qWait(0);
  EXPECT_EQ(GridRows(*view), DatabaseRows(dbPath(), "s.id = " + second.id));
  EXPECT_EQ(view->Core().store().RecordCount(), size_t(view->DisplayedRows()));
}

TEST_F(ViewHoldE2E, ValidationMessagesAndNothingSent) {
  const Scrip nseOnly = FindScrip(dbPath(), kNseOnly);
  ASSERT_FALSE(nseOnly.id.empty());
  const struct {
    const char* name;
    std::function<void(QWidget*)> prepare;
    int button;
    const char* message; // "" for none
  } cases[] = {
      {"bothDashes", [](QWidget*) {}, kButtonViewHoldPos, kMsgSelectScrip},
      {"noNseExchange",
       [](QWidget* v) {
         qobject_cast<QComboBox*>(GetDlgItem(v, kComboNseExchange))->setCurrentIndex(-1);
       },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noBseExchange",
       [](QWidget* v) {
         qobject_cast<QComboBox*>(GetDlgItem(v, kComboBseExchange))->setCurrentIndex(-1);
       },
       kButtonViewHoldPos, kMsgSpecifyExchange},
      {"noClient", [](QWidget* v) { Click(v, kRadioClient); }, kButtonViewHoldPos,
       kMsgSelectClient},
      {"loadBseWithoutScrip", [](QWidget*) {}, kButtonLoadBse, ""},
  };
  auto view = MakeView();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->ResetSelection();
    messages.clear();
    c.prepare(view.get());
    ASSERT_TRUE(Click(view.get(), c.button));
    EXPECT_EQ(view->Core().outstandingAnswers(), 0);
    if (*c.message)
      EXPECT_EQ(messages, std::vector<std::string>{c.message});
    else
      EXPECT_TRUE(messages.empty());
  }
}

TEST_F(ViewHoldE2E, LoadBseFindsTheCounterpartOrSaysItIsMissing) {
  const Scrip both = FindScrip(dbPath(), kBothLegs, 2);
  const Scrip nseOnly = FindScrip(dbPath(), kNseOnly);
  auto view = MakeView();
  auto* bseExchange = qobject_cast<QComboBox*>(GetDlgItem(view.get(), kComboBseExchange));
  auto* bseSymbol = qobject_cast<QComboBox*>(GetDlgItem(view.get(), kComboBseSymbol));
  const struct {
    const char* name;
    Scrip scrip;
    std::string bseSymbol; // "" when none is expected
  } cases[] = {{"counterpart", both, both.bseSymbol}, {"nseOnly", nseOnly, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    view->ResetSelection();
    messages.clear();
    ASSERT_TRUE(SelectNse(view.get(), c.scrip));
    ASSERT_TRUE(Click(view.get(), kButtonLoadBse));
    // The row is emptied and refilled at once, before any answer.
    EXPECT_EQ(bseExchange->currentText(), "--");
    EXPECT_EQ(bseSymbol->count(), 0);
    if (c.bseSymbol.empty()) {
      ASSERT_TRUE(QTest::qWaitFor([&] { return !messages.empty(); }, 10000));
      EXPECT_EQ(messages, std::vector<std::string>{kMsgNoBseCounterpart});
      EXPECT_EQ(bseExchange->currentText(), "--");
    } else {
      ASSERT_TRUE(QTest::qWaitFor(
          [&] { return bseSymbol->currentText().toStdString() == c.bseSymbol; }, 10000));
      EXPECT_EQ(bseExchange->currentText(), "BSE");
      EXPECT_TRUE(messages.empty());
    }
  }
}

TEST_F(ViewHoldE2E, PriceTicksReachEveryRowOfTheirSymbolOnly) {
  const std::string client =
      DatabaseText(dbPath(), "SELECT client_id FROM holding GROUP BY client_id "
                             "ORDER BY count(*) DESC LIMIT 1");
  auto view = MakeView();
  ASSERT_TRUE(Click(view.get(), kRadioClient));
  ASSERT_TRUE(Pick(view.get(), kComboClient, client));
  ASSERT_TRUE(Click(view.get(), kButtonViewHoldPos));
  ASSERT_TRUE(WaitForAnswers(*view));
  const HoldingsStore& store = view->Core().store();
  ASSERT_GT(store.RecordCount(), 1u);
  // The back-end ticks every second; wait for a tick on every row's NSE or
  // BSE leg.
  auto ticked = [&](const CViewHoldings& r) {
    return store.Slot(r.priceSlot[0]).tick > 0 || store.Slot(r.priceSlot[1]).tick > 0;
  };
  ASSERT_TRUE(QTest::qWaitFor(
      [&] {
        for (size_t i = 0; i < store.RecordCount(); ++i)
          if (!ticked(*store.Record(i)))
            return false;
        return true;
      },
      15000));
  // Tag 32 is the scrip's close: each row carries its own scrip's.
  for (size_t i = 0; i < store.RecordCount(); ++i) {
    const CViewHoldings& r = *store.Record(i);
    const int exchange = store.Slot(r.priceSlot[0]).tick > 0 ? 0 : 1;
    const std::string symbol(exchange == 0 ? store.Text(r.nseSymbol) : store.Text(r.bseSymbol));
    const std::string close =
        DatabaseText(dbPath(), "SELECT close_paise FROM scrip WHERE " +
                                   std::string(exchange == 0 ? "nse_symbol" : "bse_symbol") +
                                   " = '" + symbol + "'");
    EXPECT_EQ(std::to_string(store.SecondPrice(r, exchange)), close) << symbol;
    EXPECT_GT(store.Price(r, exchange), 0) << symbol;
  }
}

TEST_F(ViewHoldE2E, InitialAndResizeLayoutsDiffer) {
  // Initialisation lays the tab out against the width less 430 ...
  auto fresh = std::make_unique<CViewHold>();
  fresh->resize(1000, 620);
  fresh->Initialise("RMS1", 0);
  EXPECT_EQ(fresh->HoldingsGrid()->geometry(), QRect(10, 110, 975, 450));
  EXPECT_EQ(fresh->Tabs()->geometry(), QRect(10, 560, 570, 30));
  // ... a resize against the width less 30, at the bottom edge.
  fresh->show();
  fresh->resize(1200, 800);
  ASSERT_TRUE(QTest::qWaitFor([&] { return fresh->size() == QSize(1200, 800); }, 5000));
  EXPECT_EQ(fresh->HoldingsGrid()->geometry(), QRect(10, 110, 1175, 630));
  EXPECT_EQ(fresh->AlertGrid()->geometry(), QRect(10, 110, 1175, 630));
  EXPECT_EQ(fresh->Tabs()->geometry(), QRect(10, 775, 1170, 30));
}

TEST_F(ViewHoldE2E, ResetAndTabsAndTitle) {
  auto view = MakeView();
  auto* nse = qobject_cast<QComboBox*>(GetDlgItem(view.get(), kComboNseExchange));
  auto* clients = GetDlgItem(view.get(), kComboClient);
  Click(view.get(), kRadioClient);
  EXPECT_FALSE(clients->isHidden());
  for (int i = 0; i < 3; ++i)
    view->ResetSelection();
  EXPECT_EQ(nse->count(), 2); // "--" and "NSE", never repeated
  EXPECT_EQ(nse->currentText(), "--");
  EXPECT_TRUE(clients->isHidden());
  EXPECT_TRUE(view->AlertGrid()->isHidden());
  view->SelectTab(1);
  EXPECT_TRUE(view->HoldingsGrid()->isHidden());
  EXPECT_FALSE(view->AlertGrid()->isHidden());
  EXPECT_EQ(view->Tabs()->currentIndex(), 1);
  EXPECT_EQ(view->windowTitle(), "View Holdings");
}

TEST_F(ViewHoldE2E, ColumnsSurviveARestartAndTheAlertGridKeepsItsFive) {
  {
    auto view = MakeView();
    ASSERT_EQ(view->AddCustomColumn("Value", "\"Holdings Qty\" * \"Close Price\""), QString());
    // The user drags "Product" to the far right.
    view->HoldingsGrid()->horizontalHeader()->moveSection(1, 18);
  } // closing saves the profile
  auto view = MakeView();
  const QStringList names = view->HeaderNames();
  ASSERT_EQ(names.size(), 19);
  EXPECT_EQ(names.last(), "Product");
  EXPECT_TRUE(names.contains("Value"));
  EXPECT_EQ(view->AlertGrid()->HeaderItemCount(), kAlertColumnCount);
  EXPECT_EQ(view->AlertGrid()->HeaderItemText(2), "ISIN");
}

TEST_F(ViewHoldE2E, RowMenuHasMarkPopupsOnlyWithTheRight) {
  const Scrip s = FindScrip(dbPath(), kBothLegs);
  host::UserInfo& user = host::TheHost().user;
  const bool admin = user.administrator;
  auto view = MakeView();
  const struct {
    const char* name;
    bool right;
    int firstId; // data of the first item
  } cases[] = {{"withRight", true, 0}, {"withoutRight", false, 4006}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    user.administrator = c.right;
    const auto menu = view->MakeRowMenu();
    const auto actions = menu->actions();
    ASSERT_FALSE(actions.isEmpty());
    EXPECT_EQ(actions.first()->data().toInt(), c.firstId);
    EXPECT_EQ(actions.first()->menu() != nullptr, c.right);
    std::set<int> ids;
    for (QAction* a : actions)
      ids.insert(a->data().toInt());
    EXPECT_EQ(ids.count(4007), 0u);
    for (int id : {4006, 4008, 4009, 4010})
      EXPECT_EQ(ids.count(id), 1u) << id;
  }
  user.administrator = admin;
}

} // namespace
} // namespace vh::test
