// The alert pass over a real row engine with compiled custom columns: which
// rows a set of rules selects, stale column numbers, the page-only dedupe,
// the time stamp and the single repaint.
#include <gtest/gtest.h>

#include <array>

#include "grid/custom_column.h"
#include "holdings/alert_pass.h"
#include "holdings/engine_alert_source.h"

namespace vh {
namespace {

// Data columns 0 client, 1 ISIN, 2 quantity, 3 price; item data = index + 1.
class Records final : public AlertRecordFields {
public:
  std::vector<std::array<std::string, 4>> rows;
  static int Cell(void* owner, uint64_t item, int column, std::string& text, CellStyle&) {
    const auto& row = static_cast<Records*>(owner)->rows.at(item - 1);
    text = column >= 0 && column < 4 ? row[size_t(column)] : std::string();
    return 1;
  }
  std::string_view Isin(uint64_t item) override { return rows.at(item - 1)[1]; }
  std::string_view ClientId(uint64_t item) override { return rows.at(item - 1)[0]; }
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

constexpr std::time_t kNow = 1700000000;

struct Rule {
  const char *column, *comparison, *threshold, *number;
};
using Hits = std::vector<std::string>;

TEST(AlertPass, RulesSelectExactlyTheMatchingRows) {
  Records records;
  records.rows = {{"C1", "I1", "10", "5"}, // Value 50
                  {"C2", "I2", "20", "2.5"},
                  {"C3", "I3", "7", "1"},
                  {"C4", "I4", "abc", "9"}, // Value 0
                  {"C1", "I1", "3", "1"}};  // C1's I1 again, in another product
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
    Hits expected; // column|client|ISIN|value
    int page = 20;
    int changedRow = -1; // its quantity becomes "70" before the pass, as announced
  } cases[] = {
      {"at most, equal included",
       {{"Value", kLessOrEqual, "7", "4"}},
       {"Value|C3|I3|7.00", "Value|C4|I4|0.00", "Value|C1|I1|3.00"}},
      {"two columns on a row, in column order",
       {{"Qty", kGreaterOrEqual, "20", "5"}, {"Value", kLessOrEqual, "0", "4"}},
       {"Qty|C2|I2|20.00", "Value|C4|I4|0.00"}},
      {"the stored number wins over the name",
       {{"Qty", kGreaterOrEqual, "50", "4"}},
       {"Qty|C1|I1|50.00", "Qty|C2|I2|50.00"}},
      {"a number that is no custom column reads 0",
       {{"Qty", kGreaterOrEqual, "0", "2"}},
       {"Qty|C1|I1|", "Qty|C2|I2|", "Qty|C3|I3|", "Qty|C4|I4|"}},
      {"a duplicate on the page replaces its row",
       {{"Qty", kGreaterOrEqual, "3", "5"}},
       {"Qty|C1|I1|3.00", "Qty|C2|I2|20.00", "Qty|C3|I3|7.00"},
       1},
      {"off the page a duplicate is a new row",
       {{"Qty", kGreaterOrEqual, "3", "5"}},
       {"Qty|C1|I1|10.00", "Qty|C2|I2|20.00", "Qty|C3|I3|7.00", "Qty|C1|I1|3.00"},
       0},
      {"other comparisons and unknown columns never match",
       {{"Value", "equal to", "50", "4"}, {"Gone", kLessOrEqual, "1e9", "4"}},
       {}},
      {"a record changed since the last pass", // kept values must not hide it
       {{"Value", kGreaterOrEqual, "60", "4"}},
       {"Value|C3|I3|70.00"},
       20,
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
      records.rows[size_t(c.changedRow)][2] = "70";
      engine.RowChanged(c.changedRow);
    }
    EngineAlertSource source(engine, records);
    RunAlertPass(table, source, hits, list, [](std::time_t*) { return kNow; });
    Hits got;
    for (size_t i = 0; i < hits.Size(); ++i)
      got.push_back(std::string(hits.Field(i, 1)) + "|" + std::string(hits.Field(i, 4)) + "|" +
                    std::string(hits.Field(i, 2)) + "|" + std::string(hits.Field(i, 3)));
    EXPECT_EQ(got, c.expected) << c.name;
    EXPECT_EQ(list.shown, c.expected.size()) << c.name;
    for (size_t i = 0; i < hits.Size(); ++i)
      EXPECT_EQ(hits.Field(i, 5), FormatAlertTime(kNow)) << c.name;
  }
  // Every pass empties the list first and paints it once.
  EXPECT_EQ(list.empties, int(std::size(cases)));
  EXPECT_EQ(list.redraws, int(std::size(cases)));
}

} // namespace
} // namespace vh
