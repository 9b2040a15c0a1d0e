// The alert pass over a real row engine with compiled custom columns: which
// rows a set of rules selects, the page-only dedupe, stale column numbers,
// the time stamp and the single repaint.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "common/message.h"
#include "grid/custom_column.h"
#include "holdings/alert_pass.h"
#include "holdings/engine_alert_source.h"

namespace vh {
namespace {

struct Row {
  std::string client, isin, qty, price;
};

// Data columns 0 client, 1 ISIN, 2 quantity, 3 price; item data = index + 1.
class Records final : public AlertRecordFields {
public:
  std::vector<Row> rows;
  static int Cell(void* owner, uint64_t item, int column, std::string& text, CellStyle&) {
    const Row& r = static_cast<Records*>(owner)->rows.at(item - 1);
    const std::string* cells[] = {&r.client, &r.isin, &r.qty, &r.price};
    text = column >= 0 && column < 4 ? *cells[column] : std::string();
    return 1;
  }
  std::string_view Isin(uint64_t item) override { return rows.at(item - 1).isin; }
  std::string_view ClientId(uint64_t item) override { return rows.at(item - 1).client; }
};

class ListSink final : public AlertListSink {
public:
  int page = 20;
  int empties = 0, redraws = 0;
  size_t shown = 0;
  void Empty() override { ++empties, shown = 0; }
  int CountPerPage() override { return page; }
  void ShowRows(size_t rows) override { shown = rows; }
  void Redraw() override { ++redraws; }
};

sTarnColInfo Column(const char* name, const char* stored = "") {
  sTarnColInfo c;
  c.SetName(name);
  c.nType = stored[0] ? kCompareDecimal : kCompareText;
  c.strExpression = stored;
  return c;
}

std::time_t FixedNow(std::time_t* out) {
  const std::time_t t = 1700000000;
  if (out)
    *out = t;
  return t;
}

struct Rule {
  const char* column;
  const char* comparison;
  const char* threshold;
  const char* number;
};

class AlertPassTest : public testing::Test {
protected:
  void SetUp() override {
    engine.SetOwnerDataSource(&Records::Cell, &records);
    engine.SetCustomColumnCompiler(CompileCustomColumn);
    // 4 "Value" = quantity x price, 5 "Qty" = quantity.
    engine.SetColumns({Column("Client"), Column("ISIN"), Column("Qty raw"), Column("Price"),
                       Column("Value", R"( "2"*"3")"), Column("Qty", R"( "2")")},
                      4);
  }
  void Fill(const std::vector<Row>& rows) {
    records.rows = rows;
    engine.DeleteAllItems();
    for (size_t i = 0; i < rows.size(); ++i) {
      const int at = engine.InsertItem(int(i), "");
      engine.SetItemData(at, i + 1);
    }
  }
  std::vector<std::string> Pass(const std::vector<Rule>& rules) {
    CAlertRuleTable table;
    for (const Rule& r : rules)
      table.Put({r.comparison, r.column, r.threshold, r.column, r.number});
    EngineAlertSource source(engine, records);
    counts = RunAlertPass(table, source, hits, list, FixedNow);
    std::vector<std::string> out;
    for (size_t i = 0; i < hits.Size(); ++i) {
      const CustomAlert a = hits.Hit(i);
      out.push_back(a.field1 + "|" + a.field4 + "|" + a.field2 + "|" + a.field3);
    }
    return out;
  }

  Records records;
  RowEngine engine;
  AlertHits hits;
  ListSink list;
  AlertPassCounts counts;
  ScopedMessageRecorder recorder;
};

using Hits = std::vector<std::string>;

TEST_F(AlertPassTest, RulesSelectExactlyTheMatchingRows) {
  Fill({{"C1", "INE1", "10", "5"}, // Value 50
        {"C2", "INE2", "20", "2.5"},
        {"C3", "INE3", "7", "1"},
        {"C4", "INE4", "abc", "9"}}); // Value 0
  const struct {
    const char* name;
    std::vector<Rule> rules;
    Hits expected;
  } cases[] = {
      {"at most, equal included",
       {{"Value", kLessOrEqual, "50", "4"}},
       {"Value|C1|INE1|50.00", "Value|C2|INE2|50.00", "Value|C3|INE3|7.00", "Value|C4|INE4|0.00"}},
      {"at least, equal included",
       {{"Value", kGreaterOrEqual, "50", "4"}},
       {"Value|C1|INE1|50.00", "Value|C2|INE2|50.00"}},
      {"text threshold is 0",
       {{"Value", kGreaterOrEqual, "high", "4"}},
       {"Value|C1|INE1|50.00", "Value|C2|INE2|50.00", "Value|C3|INE3|7.00", "Value|C4|INE4|0.00"}},
      {"negative threshold", {{"Qty", kLessOrEqual, "-1", "5"}}, {}},
      {"two columns on a row give two hits, column order",
       {{"Qty", kGreaterOrEqual, "20", "5"}, {"Value", kLessOrEqual, "7", "4"}},
       {"Qty|C2|INE2|20.00", "Value|C3|INE3|7.00", "Value|C4|INE4|0.00"}},
      {"the stored number wins over the name",
       {{"Qty", kGreaterOrEqual, "50", "4"}},
       {"Qty|C1|INE1|50.00", "Qty|C2|INE2|50.00"}},
      {"a number that is no custom column reads 0",
       {{"Qty", kLessOrEqual, "0", "2"}},
       {"Qty|C1|INE1|", "Qty|C2|INE2|", "Qty|C3|INE3|", "Qty|C4|INE4|"}},
      {"another comparison never matches", {{"Value", "equal to", "50", "4"}}, {}},
      {"a rule of no grid column is not tested", {{"Gone", kLessOrEqual, "1e9", "4"}}, {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Pass(c.rules), c.expected) << c.name;
    EXPECT_EQ(list.shown, c.expected.size()) << c.name;
  }
  // Every pass empties the list first, and paints once.
  EXPECT_EQ(list.empties, int(std::size(cases)));
  EXPECT_EQ(list.redraws, int(std::size(cases)));
}

TEST_F(AlertPassTest, DuplicatesAreFoldedOnlyWithinTheFirstPage) {
  // Same client and ISIN in other products: the later row overwrites the
  // earlier hit while it is on the page.
  Fill({{"C1", "INE1", "1", "1"},
        {"C2", "INE2", "2", "1"},
        {"C1", "INE1", "3", "1"},
        {"C1", "INE9", "4", "1"}});
  const std::vector<Rule> rule = {{"Qty", kGreaterOrEqual, "0", "5"}};
  list.page = 20;
  EXPECT_EQ(Pass(rule), (Hits{"Qty|C1|INE1|3.00", "Qty|C2|INE2|2.00", "Qty|C1|INE9|4.00"}));
  EXPECT_EQ(counts.replaced, 1u);
  EXPECT_EQ(counts.hits, 4u);
  list.page = 0; // a list too small to show a row folds nothing
  EXPECT_EQ(Pass(rule).size(), 4u);
  EXPECT_EQ(counts.replaced, 0u);
}

TEST_F(AlertPassTest, HitsCarryTheTimeOfTheCheck) {
  setenv("TZ", "UTC", 1);
  tzset();
  Fill({{"C1", "INE1", "1", "1"}});
  Pass({{"Qty", kGreaterOrEqual, "1", "5"}});
  ASSERT_EQ(hits.Size(), 1u);
  EXPECT_EQ(hits.Field(0, 5), "14/11/2023 22:13:20");
  EXPECT_EQ(hits.Field(0, 6), "");
  EXPECT_EQ(hits.Field(7, 1), "");
}

TEST_F(AlertPassTest, FilteredOutRowsAndRowsWithoutRecordsAreSkipped) {
  Fill({{"C1", "INE1", "1", "1"}, {"C2", "INE2", "2", "1"}});
  engine.InsertItem(5, ""); // no item data
  engine.SetFilter(0, "C2", true);
  EXPECT_EQ(Pass({{"Qty", kGreaterOrEqual, "0", "5"}}), Hits{"Qty|C2|INE2|2.00"});
  EXPECT_EQ(counts.rowsChecked, 1u);
}

} // namespace
} // namespace vh
