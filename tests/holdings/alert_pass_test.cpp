// The alert pass over a real row engine with compiled custom columns: which
// rows a set of rules selects, stale column numbers, the page-only dedupe,
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
  int page = 20, empties = 0, redraws = 0;
  size_t shown = 0;
  void Empty() override { ++empties, shown = 0; }
  int CountPerPage() override { return page; }
  void ShowRows(size_t rows) override { shown = rows; }
  void Redraw() override { ++redraws; }
};

sTarnColInfo Column(const char* name, const char* stored = "") {
  sTarnColInfo c;
  c.SetName(name);
  c.strExpression = stored;
  return c;
}

std::time_t FixedNow(std::time_t*) {
  return 1700000000;
}

struct Rule {
  const char *column, *comparison, *threshold, *number;
};
using Hits = std::vector<std::string>;

TEST(AlertPass, RulesSelectExactlyTheMatchingRows) {
  setenv("TZ", "UTC", 1);
  tzset();
  ScopedMessageRecorder recorder;
  Records records;
  records.rows = {{"C1", "INE1", "10", "5"}, // Value 50
                  {"C2", "INE2", "20", "2.5"},
                  {"C3", "INE3", "7", "1"},
                  {"C4", "INE4", "abc", "9"}, // Value 0
                  {"C1", "INE1", "3", "1"}};  // C1's INE1 again, in another product
  RowEngine engine;
  engine.SetOwnerDataSource(&Records::Cell, &records);
  engine.SetCustomColumnCompiler(CompileCustomColumn);
  // 4 "Value" = quantity x price, 5 "Qty" = quantity.
  engine.SetColumns({Column("Client"), Column("ISIN"), Column("Qty raw"), Column("Price"),
                     Column("Value", R"( "2"*"3")"), Column("Qty", R"( "2")")},
                    4);
  for (size_t i = 0; i < records.rows.size(); ++i)
    engine.SetItemData(engine.InsertItem(int(i), ""), i + 1);
  const struct {
    const char* name;
    std::vector<Rule> rules;
    int page;
    Hits expected;       // column|client|ISIN|value
    int changedRow = -1; // its quantity becomes "70" before the pass, as announced
  } cases[] = {
      {"at most, equal included",
       {{"Value", kLessOrEqual, "7", "4"}},
       20,
       {"Value|C3|INE3|7.00", "Value|C4|INE4|0.00", "Value|C1|INE1|3.00"}},
      {"text threshold is 0", {{"Qty", kLessOrEqual, "none", "5"}}, 20, {"Qty|C4|INE4|0.00"}},
      {"two columns on a row, in column order",
       {{"Qty", kGreaterOrEqual, "20", "5"}, {"Value", kLessOrEqual, "0", "4"}},
       20,
       {"Qty|C2|INE2|20.00", "Value|C4|INE4|0.00"}},
      {"the stored number wins over the name",
       {{"Qty", kGreaterOrEqual, "50", "4"}},
       20,
       {"Qty|C1|INE1|50.00", "Qty|C2|INE2|50.00"}},
      {"a number that is no custom column reads 0",
       {{"Qty", kGreaterOrEqual, "0", "2"}},
       20,
       {"Qty|C1|INE1|", "Qty|C2|INE2|", "Qty|C3|INE3|", "Qty|C4|INE4|"}},
      {"a duplicate on the page replaces its row",
       {{"Qty", kGreaterOrEqual, "3", "5"}},
       1,
       {"Qty|C1|INE1|3.00", "Qty|C2|INE2|20.00", "Qty|C3|INE3|7.00"}},
      {"off the page a duplicate is a new row",
       {{"Qty", kGreaterOrEqual, "3", "5"}},
       0,
       {"Qty|C1|INE1|10.00", "Qty|C2|INE2|20.00", "Qty|C3|INE3|7.00", "Qty|C1|INE1|3.00"}},
      {"other comparisons and unknown columns never match",
       {{"Value", "equal to", "50", "4"}, {"Gone", kLessOrEqual, "1e9", "4"}},
       20,
       {}},
      {"a record changed since the last pass", // kept values must not hide it
       {{"Value", kGreaterOrEqual, "60", "4"}},
       20,
       {"Value|C3|INE3|70.00"},
       2},
  };
  ListSink list;
  AlertHits hits;
  for (const auto& c : cases) {
    CAlertRuleTable table;
    for (const Rule& r : c.rules)
      table.Put({r.comparison, r.column, r.threshold, r.column, r.number});
    list.page = c.page;
    if (c.changedRow >= 0) {
      records.rows[size_t(c.changedRow)].qty = "70";
      engine.RowChanged(c.changedRow);
    }
    EngineAlertSource source(engine, records);
    RunAlertPass(table, source, hits, list, FixedNow);
    Hits got;
    for (size_t i = 0; i < hits.Size(); ++i)
      got.push_back(std::string(hits.Field(i, 1)) + "|" + std::string(hits.Field(i, 4)) + "|" +
                    std::string(hits.Field(i, 2)) + "|" + std::string(hits.Field(i, 3)));
    EXPECT_EQ(got, c.expected) << c.name;
    EXPECT_EQ(list.shown, c.expected.size()) << c.name;
    for (size_t i = 0; i < hits.Size(); ++i)
      EXPECT_EQ(hits.Field(i, 5), "14/11/2023 22:13:20") << c.name;
  }
  // Every pass empties the list first and paints it once.
  EXPECT_EQ(list.empties, int(std::size(cases)));
  EXPECT_EQ(list.redraws, int(std::size(cases)));
}

} // namespace
} // namespace vh
