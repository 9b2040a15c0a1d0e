#include "grid/row_engine.h"

#include "common/message.h"
#include "grid/custom_column.h"
#include "tests/grid/row_test_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace vh {

// Reaches the display map so that fault paths can be provoked on purpose.
struct RowEngineProbe {
  static std::vector<int32_t>& Map(RowEngine& engine) { return engine.map_; }
};

namespace {

using test::TextTable;

struct Events : RowEngineObserver {
  int resets = 0;
  void OnRowsReset() override { ++resets; }
};

// The display as a plain vector: map order, shown reversed with the flag.
struct Model {
  std::vector<uint64_t> store, map;
  bool reverse = false;
  size_t Slot(size_t position) const { return reverse ? map.size() - 1 - position : position; }
};

TEST(RowEngine, RandomInsertDeleteAgreesWithAVectorModel) {
  TextTable table;
  std::mt19937 rng(11);
  for (int round = 0; round < 30; ++round) {
    RowEngine engine;
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    engine.SetColumns(test::Columns({3}), 1);
    Model m;
    m.reverse = round % 2 == 1;
    engine.SetReverseDisplay(m.reverse);
    uint64_t nextTag = 1;
    for (int step = 0; step < 300; ++step) {
      const int size = int(m.store.size());
      const int op = std::uniform_int_distribution<int>(0, 9)(rng);
      if (op < 5 || size == 0) {
        const int p = std::uniform_int_distribution<int>(0, size + 1)(rng);
        const int returned = engine.InsertItem(p, "x");
        const bool middle = p > 0 && p < size;
        const size_t slot = middle ? std::min(size_t(p), m.map.size()) : m.map.size();
        m.store.insert(m.store.begin() + (middle ? p : size), nextTag);
        m.map.insert(m.map.begin() + ptrdiff_t(slot), nextTag);
        const int dataIndex = middle ? p : size;
        ASSERT_EQ(returned, m.reverse ? int(m.map.size()) - 1 - dataIndex : dataIndex);
        const size_t position = m.reverse ? m.map.size() - 1 - slot : slot;
        ASSERT_TRUE(engine.SetItemData(int(position), nextTag));
        ++nextTag;
      } else if (op < 7) {
        const int position = std::uniform_int_distribution<int>(0, size - 1)(rng);
        const uint64_t tag = m.map[m.Slot(size_t(position))];
        ASSERT_EQ(engine.DeleteItem(position), 1);
        m.map.erase(std::find(m.map.begin(), m.map.end(), tag));
        m.store.erase(std::find(m.store.begin(), m.store.end(), tag));
      } else if (op < 9) {
        const int d = std::uniform_int_distribution<int>(0, size - 1)(rng);
        const uint64_t tag = m.store[size_t(d)];
        ASSERT_EQ(engine.DeleteItemByDataIndex(d), 1);
        m.map.erase(std::find(m.map.begin(), m.map.end(), tag));
        m.store.erase(m.store.begin() + d);
      } else {
        const int position = std::uniform_int_distribution<int>(0, size - 1)(rng);
        ASSERT_TRUE(engine.SetCheck(position, int(m.map[m.Slot(size_t(position))] % 2)));
      }
      ASSERT_EQ(engine.DisplayedCount(), int(m.map.size()));
      ASSERT_EQ(engine.RowCount(), m.store.size());
      for (size_t p = 0; p < m.map.size(); ++p) {
        ASSERT_EQ(engine.GetItemData(int(p)), m.map[m.Slot(p)]) << "step " << step << " pos " << p;
        ASSERT_EQ(engine.DataIndexAt(int(p)),
                  std::find(m.store.begin(), m.store.end(), m.map[m.Slot(p)]) - m.store.begin());
      }
    }
  }
}

struct EngineFixture : ::testing::Test {
  TextTable table;
  RowEngine engine;
  Events events;
  ScopedMessageRecorder messages;
  void SetUp() override {
    table.rows = {{"a", "2", "x"}, {"b", "3", "y"}, {"c", "-4", "x"}};
    engine.SetOwnerDataSource(&TextTable::Fetch, &table);
    engine.SetColumns(test::Columns({3, 2, 3}), 3);
    engine.SetObserver(&events);
    test::LoadRows(engine, table);
  }
};

TEST_F(EngineFixture, ReindexingFaultsResetOrRefuse) {
  // `displayed` rows are shown after the filter that precedes the fault.
  const auto fault = [&](std::vector<int32_t> map, int displayed, int (*act)(RowEngine&),
                         const char* message, bool reset, const char* name) {
    SCOPED_TRACE(name);
    engine.DeleteAllItems();
    test::LoadRows(engine, table);
    engine.SetFilter(2, displayed == 3 ? "" : "x", false);
    ASSERT_EQ(engine.DisplayedCount(), displayed);
    RowEngineProbe::Map(engine) = map;
    messages.clear();
    events.resets = 0;
    EXPECT_EQ(act(engine), 0);
    EXPECT_EQ(messages.messages(), (std::vector<std::string>{message}));
    EXPECT_EQ(events.resets, reset ? 1 : 0);
    EXPECT_EQ(engine.RowCount(), reset ? 0u : 3u);
    EXPECT_EQ(engine.DisplayedCount(), reset ? 0 : displayed);
  };
  const auto insert1 = [](RowEngine& e) { return e.InsertItem(1, ""); };
  const auto delete0 = [](RowEngine& e) { return e.DeleteItem(0); };
  const auto delete1 = [](RowEngine& e) { return e.DeleteItem(1); };
  fault({0, -1, 2}, 3, insert1, "Insert Item: Reindexing Error", true, "insert meets a hole");
  fault({0, -1, 2}, 3, delete1, "Delete item: Item not found", false, "delete a hole");
  fault({0, 0, 2}, 3, delete1, "Delete item: Reindexing Error", true, "delete meets a duplicate");
  fault({0, 1, -1}, 3, delete0, "Delete item: Reindexing Error", true, "delete meets a hole");
  fault(
      {0, 2, 1}, 2, [](RowEngine& e) { return e.DeleteItemByDataIndex(1); },
      "Error occured while deleting map item", false, "slot past the count");
}

TEST_F(EngineFixture, PositionsOutsideTheDisplay) {
  EXPECT_EQ(engine.DeleteItem(3), 0);
  EXPECT_EQ(engine.DeleteItem(-1), 0);
  EXPECT_EQ(engine.DeleteItemByDataIndex(3), 0);
  EXPECT_EQ(engine.GetCheck(3), 0);
  EXPECT_FALSE(engine.SetCheck(3, 1));
  EXPECT_FALSE(engine.SetItemData(-1, 9));
  EXPECT_EQ(engine.GetItemText(3, 0), "");
  EXPECT_TRUE(messages.messages().empty());
  EXPECT_EQ(engine.RowCount(), 3u);
}

int PlainSource(uint64_t item, int column, std::string& text, CellStyle&) {
  text = "plain " + std::to_string(item) + "/" + std::to_string(column);
  return 1;
}

TEST_F(EngineFixture, DataSourceForms) {
  engine.SetPlainDataSource(&PlainSource);
  EXPECT_EQ(engine.GetItemText(0, 0), "a"); // the owner form wins
  CellStyle style;
  std::string text;
  EXPECT_TRUE(engine.GetCellText(2, 1, text, style));
  EXPECT_EQ(style.textColour, 2);
  EXPECT_FALSE(engine.GetCellText(9, 1, text, style)); // the source's own failure
  engine.SetOwnerDataSource(nullptr, nullptr);
  EXPECT_EQ(engine.GetItemText(0, 1), "plain 1/1");
  engine.SetPlainDataSource(nullptr);
  EXPECT_EQ(engine.GetItemText(0, 1), "no data descriptor initialised");
  EXPECT_FALSE(engine.GetCellText(1, 0, text, style));
  EXPECT_EQ(engine.InsertItem(0, ""), 0);
}

// Product of two referenced columns, in the format the cells use. A formula
// of our own: the built-in ones stop cycles and give sort keys themselves, so
// only this one reaches the engine's cycle guard and its sort-key fallback.
struct Product : CustomColumnFormula {
  int a, b;
  Product(int x, int y) : a(x), b(y) {}
  void Calculate(uint64_t item, CellTextSource& cells, int, std::string& out) override {
    std::string ta, tb;
    CellStyle style;
    if (!cells.GetCellText(item, a, ta, style) || !cells.GetCellText(item, b, tb, style))
      return;
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.2f", std::atof(ta.c_str()) * std::atof(tb.c_str()));
    out = buffer;
  }
};

TEST_F(EngineFixture, CustomColumnsAreComputedNotStored) {
  auto columns = test::Columns({3, 2, 3, 2, 2, 2});
  columns[3].strExpression = " \"1\"*\"1\"";
  columns[4].strExpression = " \"3\"*\"1\"";
  columns[5].strExpression = " \"5\"*\"1\"";
  engine.SetColumns(columns, 3);
  int compiled = 0;
  engine.SetCustomColumnCompiler(
      [&](std::string_view expr) -> std::unique_ptr<CustomColumnFormula> {
        ++compiled;
        const int first = std::atoi(std::string(expr.substr(2)).c_str());
        return std::make_unique<Product>(first, 1);
      });
  EXPECT_EQ(compiled, 3);
  EXPECT_EQ(engine.GetItemText(1, 3), "9.00");
  EXPECT_EQ(engine.GetItemText(1, 4), "27.00"); // a custom column of a custom column
  std::string text = "kept";
  CellStyle style;
  EXPECT_TRUE(engine.GetCellText(1, 5, text, style)); // refers to itself: stopped
  EXPECT_EQ(text, "kept");
  table.rows[1][1] = "5";
  EXPECT_EQ(engine.GetItemText(1, 3), "25.00");
  engine.SetFilter(3, ">5", false);
  EXPECT_EQ(engine.DisplayedCount(), 2);
  engine.SortOnColumn(3);
  EXPECT_EQ(engine.GetItemText(0, 3), "16.00");
  EXPECT_EQ(engine.LargestRows(4, 1), (std::vector<int32_t>{1}));
}

} // namespace
} // namespace vh
