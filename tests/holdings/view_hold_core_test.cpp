#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "holdings/holdings_columns.h"
#include "holdings/view_hold_core.h"
#include "link/backend_link.h"
#include "link/envelope.h"
#include "tests/link/answers.h"
#include "tests/link/fake_backend.h"

using namespace vh;
using linktest::Answer;
using linktest::AnswerFields;

namespace {

struct FakeHost : ViewHoldHost {
  bool ScripDetails(std::string_view, std::string_view symbol, ScripDetailFields& out) override {
    out[kScripIsin] = "IN" + std::string(symbol);
    return true;
  }
  void LookupNseTradingSymbol() override { ++nseLookups; }
  void OnBseCounterpart(const std::optional<std::string>&) override {}
  int nseLookups = 0;
};

// The grid: its records in the order inserted.
struct FakeGrid : HoldingsGridSink {
  void ClearRows() override { rows.clear(); }
  void InsertRecord(CViewHoldings* r) override { rows.push_back(r); }
  void FlushRecords() override {}
  void OnPriceSlotChanged(uint32_t slot) override { slots.push_back(slot); }
  std::vector<CViewHoldings*> rows;
  std::vector<uint32_t> slots;
};

struct ViewHoldCoreTest : ::testing::Test {
  void SetUp() override {
    linktest::g_control = &control;
    core.CreateLink();
    for (const char* id : {"C1", "c2", "C3", "C4"})
      core.clientIds().Add(id);
  }
  void TearDown() override { linktest::g_control = nullptr; }

  void Deliver(const std::string& name, AnswerFields fields, const char* status = nullptr) {
    fields.push_back({kTagAnsweredName, name});
    if (status)
      fields.push_back({kTagStatus, status});
    kdl::Message m = Answer(fields);
    core.link()->receiver()->OnResponse(nullptr, m.get(), nullptr);
  }
  void Holding(const char* client, const char* symbol = "ABCD-EQ", const char* segment = "nse_cm") {
    Deliver("display_holding_detail", {{54001, client}, {63001, segment}, {63100, symbol}});
  }

  linktest::FakeBackendControl control;
  FakeHost host;
  FakeGrid grid;
  CViewHoldCore core{host, grid};
};

// Listed ids match whatever their case; nothing else does.
TEST_F(ViewHoldCoreTest, KeepsOnlyListedClients) {
  ASSERT_EQ(core.ViewHoldPos({true, {}, {}, "", "", "C1", "", 0, ""}), 1);
  for (const char* id : {"C1", "C2", "x", "", "C1 ", "c4"})
    Holding(id);
  Deliver("display_holding_detail", {}, "3");
  std::vector<std::string> kept;
  for (const CViewHoldings* r : grid.rows)
    kept.emplace_back(r->clientId.View(core.store().texts()));
  EXPECT_EQ(kept, (std::vector<std::string>{"C1", "C2", "c4"}));
  EXPECT_EQ(core.droppedRecords(), 3u);
}

// A second query while the first answer streams is the view's end-to-end
// test's "secondRequest" row.
TEST_F(ViewHoldCoreTest, PriceTicksReachEveryRowOfTheSymbol) {
  Holding("C1", "ABCD-EQ");
  Holding("C2", "ABCD-BE");
  Holding("C3", "ABCD", "bse_cm");
  Holding("C4", "ABCE-EQ");
  Deliver("display_holding_detail", {}, "3");
  const auto price = [&](const char* sub, const char* symbol, const char* value, const char* t) {
    Deliver("mrv_master", {{kTagSubKind, sub}, {6, value}, {63100, symbol}, {32, "7"}, {63179, t}});
  };
  price("NSE_LTP", "ABCD-EQ", "101", "1");
  price("BSE_LTP", "ABCD", "202", "2");
  price("NSE_LTP", "NONE-EQ", "303", "3");
  price("CSE_LTP", "ABCD", "404", "4");
  const HoldingsStore& s = core.store();
  std::vector<std::string> seen;
  for (const CViewHoldings* r : grid.rows)
    seen.push_back(std::to_string(s.Price(*r, kExchangeNse)) + "/" +
                   std::to_string(s.Price(*r, kExchangeBse)) + "/" +
                   std::to_string(s.SecondPrice(*r, kExchangeNse)) + "/" +
                   std::to_string(s.SharedPriceValue(*r)));
  EXPECT_EQ(seen, (std::vector<std::string>{"101/0/7/1", "101/0/7/1", "0/202/0/2", "0/0/0/0"}));
  EXPECT_EQ(grid.slots.size(), 2u);
  EXPECT_EQ(s.PriceSlotCount(), 3u);
}

TEST_F(ViewHoldCoreTest, PresentValuesReplacedByKeyAndStaleKeysDropped) {
  int passes = 0;
  core.SetAlertPass([&](const PresentValueTable&, const HoldingsStore&) { ++passes; });
  const auto pv = [&](const char* client, const char* symbol, const char* value) {
    Deliver("om_get_prsnt_values", {{54001, client},
                                    {63001, "nse_cm"},
                                    {63100, symbol},
                                    {61002, "ISIN1"},
                                    {6, "55"},
                                    {41231, value}});
  };
  for (const char* value : {"1.5", "2.5", "3.5"})
    pv("C1", "ABCD-EQ", value);
  pv("C1", "XYZ-EQ", "9");
  Deliver("om_get_prsnt_values", {}, "3");
  EXPECT_EQ(passes, 1);
  EXPECT_EQ(core.presentValues().Size(), 2u);
  const CViewHoldings* r = core.presentValues().Find("C1", "ABCD", "");
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->presentValue, 3.5);
  EXPECT_EQ(r->lastPrice, 55);
  EXPECT_EQ(core.store().Text(r->scripDetail), "ISIN1");
  pv("C1", "ABCD-EQ", "4.5");
  Deliver("om_get_prsnt_values", {}, "3");
  EXPECT_EQ(core.presentValues().Size(), 1u);
  EXPECT_EQ(core.presentValues().Find("C1", "XYZ", ""), nullptr);
}

// No back-end sends position trees, so they are delivered here. With four
// client ids, five records complete NSE (with a symbol lookup) but not BSE,
// which completes only at exactly the count.
TEST_F(ViewHoldCoreTest, PositionTreesCompletePerExchange) {
  for (const char* exchange : {"NSE", "BSE"}) {
    for (int i = 0; i < 5; ++i)
      Deliver("mrv_positions_scp_show_tree", {{kTagSubKind, exchange}});
    Deliver("mrv_positions_scp_show_tree", {{kTagSubKind, exchange}}, "3");
  }
  EXPECT_EQ(core.positionsCompleted(kExchangeNse), 1);
  EXPECT_EQ(core.positionsCompleted(kExchangeBse), 0);
  EXPECT_EQ(host.nseLookups, 1);
}

} // namespace
