#include "grid/user_column_editor.h"

#include "common/message.h"
#include "tests/grid/editor_test_grid.h"

#include <gtest/gtest.h>

namespace {

using vh::testing::EditorTestGrid;

EditorTestGrid MakeGrid() {
  return EditorTestGrid({"Client id", "Qty", "Price", "Symbol", "Haircut", "Count"},
                        {3, 4, 2, 3, 5, 1},
                        {{"C1", "10", "2.5", "ABC", "1", "3"}, {"C2", "4", "-1", "XYZ", "0", "7"}});
}

TEST(UserColumnExpression, ConvertsNamesToColumnNumbers) {
  EditorTestGrid grid = MakeGrid();
  const auto columns = vh::NumericColumns(grid.table);
  const struct {
    const char* name;
    const char* display;
    bool ok;
    const char* engine;
    const char* stored;
  } cases[] = {
      {"starts with a name", R"("Qty" * "Price")", true, " 1 * 2", R"( "1" * "2")"},
      {"case ignored", R"("qTY"+"PRICE")", true, " 1+2", R"( "1"+"2")"},
      {"typed text kept", R"(("Qty" - 1)/ 2)", true, " (1 - 1)/ 2", R"( ("1" - 1)/ 2)"},
      {"quote runs are one separator", R"(""Qty""*"Count")", true, " 1*5", R"( "1"*"5")"},
      {"no names", "1 + 2", true, " 1 + 2", " 1 + 2"},
      {"text column is no operand", R"("Symbol" + 1)", false, "", ""},
      {"unknown name", R"("Qty" * "Volume")", false, "", ""},
      {"last quote missing", R"("Qty" * "Price)", true, " 1 * 2", R"( "1" * "2")"},
      {"unbalanced quote names the operator", R"("Qty" * Price" + 1)", false, "", ""},
      {"unbalanced quote before text", R"("Qty * 2)", false, "", ""},
      {"name with blanks around", R"(" Qty ")", false, "", ""},
  };
  for (const auto& c : cases) {
    vh::ConvertedExpression out;
    EXPECT_EQ(vh::ConvertDisplayExpression(c.display, columns, out), c.ok) << c.name;
    if (c.ok) {
      EXPECT_EQ(out.engine, c.engine) << c.name;
      EXPECT_EQ(out.stored, c.stored) << c.name;
    }
  }
}

TEST(UserColumnExpression, FirstOfTwoEqualNamesWins) {
  const std::vector<vh::ExpressionColumn> columns = {{"Value", 3}, {"VALUE", 9}};
  vh::ConvertedExpression out;
  ASSERT_TRUE(vh::ConvertDisplayExpression(R"("value")", columns, out));
  EXPECT_EQ(out.stored, R"( "3")");
}

TEST(UserColumnExpression, EngineRejectsWhatItCannotEvaluate) {
  EditorTestGrid grid = MakeGrid();
  const auto columns = vh::NumericColumns(grid.table);
  const struct {
    const char* name;
    const char* display;
    bool ok;
  } cases[] = {
      {"product", R"("Qty" * "Price")", true},
      {"two operands", R"("Qty" "Price")", false},
      {"dangling operator", R"("Qty" + )", false},
      {"open parenthesis", R"(("Qty" + 1)", false},
      {"only blanks", "   ", false},
  };
  for (const auto& c : cases) {
    vh::ConvertedExpression out;
    EXPECT_EQ(vh::CheckDisplayExpression(c.display, columns, out), c.ok) << c.name;
  }
}

class UserColumnEditorTest : public ::testing::Test {
protected:
  // Adds custom column `name` = `display` through an Add session.
  void Add(const std::string& name, const std::string& display) {
    ASSERT_TRUE(editor.Open(grid, vh::kUserColumnAdd));
    ASSERT_EQ(editor.Confirm(name, display, -1), vh::kEditorClose) << recorder.messages().back();
  }
  int ComboIndex(const std::string& name) const {
    const auto& items = editor.CustomColumns();
    for (size_t i = 0; i < items.size(); ++i) {
      if (items[i].name == name)
        return int(i);
    }
    return -1;
  }
  void Delete(const std::string& name) {
    ASSERT_TRUE(editor.Open(grid, vh::kUserColumnDelete));
    ASSERT_EQ(editor.Confirm("", "", ComboIndex(name)), vh::kEditorClose);
  }

  vh::ScopedMessageRecorder recorder;
  EditorTestGrid grid = MakeGrid();
  vh::UserColumnEditor editor;
};

TEST_F(UserColumnEditorTest, ButtonsWriteBothForms) {
  ASSERT_TRUE(editor.Open(grid, vh::kUserColumnAdd));
  const struct {
    const char* name;
    int id;
    bool ctrl;
    int list;
    const char* display;
    const char* coded;
  } steps[] = {
      {"bare open parenthesis", 1016, true, -1, "(", " ("},
      {"column then plus", 1012, false, 0, R"(("Qty" + )", R"( ("1"+)"},
      {"column then square", 10013, false, 3, R"(("Qty" + "Count" ^ 2 )", R"( ("1"+"5"^2)"},
      {"bare close", 1017, true, 2, R"(("Qty" + "Count" ^ 2 ))", R"( ("1"+"5"^2))"},
      {"bare square", 10013, true, 2, R"(("Qty" + "Count" ^ 2 )^ 2)", R"( ("1"+"5"^2)^2)"},
      {"ctrl power", 10014, true, -1, R"(("Qty" + "Count" ^ 2 )^ 2^)", R"( ("1"+"5"^2)^2^)"},
      {"end ignores ctrl", 1018, true, 1, R"(("Qty" + "Count" ^ 2 )^ 2^"Price")",
       R"( ("1"+"5"^2)^2^"2")"},
  };
  for (const auto& s : steps) {
    const std::string before = editor.DisplayExpression();
    EXPECT_EQ(editor.PressButton(s.id, before, s.list, s.ctrl), vh::kEditorShowText) << s.name;
    EXPECT_EQ(editor.DisplayExpression(), s.display) << s.name;
    EXPECT_EQ(editor.CodedExpression(), s.coded) << s.name;
  }
  EXPECT_TRUE(recorder.messages().empty());
}

TEST_F(UserColumnEditorTest, ButtonsWithoutSelectionSayWhy) {
  ASSERT_TRUE(editor.Open(grid, vh::kUserColumnEdit));
  EXPECT_EQ(editor.PressButton(1014, "typed", -1, false), vh::kEditorReactivate);
  EXPECT_EQ(editor.DisplayExpression(), "") << "an operator keeps the old text";
  EXPECT_EQ(editor.PressButton(1018, "typed", 99, false), vh::kEditorStay);
  EXPECT_EQ(editor.DisplayExpression(), "typed") << "End takes the typed text first";
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"Please select a Column Name", "No column is selected"}));
}

TEST_F(UserColumnEditorTest, AddComputesValuesAndSaves) {
  Add("  Value ", R"("Qty" * "Price")");
  const int column = grid.ColumnNamed("Value");
  ASSERT_EQ(column, 6);
  EXPECT_EQ(grid.table[6].strExpression, R"( "1" * "2")");
  EXPECT_EQ(grid.table[6].nWidth, 100);
  EXPECT_EQ(grid.positions[6], 6);
  EXPECT_EQ(grid.header.back().tip, R"("Qty" * "Price")");
  EXPECT_EQ(grid.header.back().format, 1);
  EXPECT_EQ(grid.Cell(0, column), "25.00");
  EXPECT_EQ(grid.Cell(1, column), "-4.00");
  ASSERT_EQ(grid.saves.size(), 1u);
  EXPECT_EQ(grid.saves[0].table.size(), 7u);
  EXPECT_EQ(grid.profile, "rmsholdview");
}

TEST_F(UserColumnEditorTest, DeleteRemovesDirectDependantsAsRecorded) {
  Add("A", R"("Qty" + 1)");
  Add("B", R"("A" * 2)");
  Add("C", R"("Count" - 1)");
  Add("D", R"("A" + "B")");
  Add("E", R"("Price" * 1)");
  grid.calls.clear();
  Delete("A");
  // Dependants of A were B (7) and D (9). Removing 7 moves D to 8 and E to
  // 9 (header 10 to 9), so the second removal takes E; then A (6) goes and
  // D stays.
  std::vector<std::string> names;
  for (const auto& info : grid.table)
    names.emplace_back(info.Name());
  EXPECT_EQ(names, (std::vector<std::string>{"Client id", "Qty", "Price", "Symbol", "Haircut",
                                             "Count", "C", "D"}));
  EXPECT_EQ(grid.calls, (std::vector<std::string>{"delete 7", "delete 9", "delete 6"}));
  EXPECT_EQ(grid.Headings(), (std::vector<std::string>{"Client id", "Qty", "Price", "Symbol",
                                                       "Haircut", "Count", "C", "D"}));
  EXPECT_EQ(grid.positions, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(grid.header[0].tip, "Client id");
  EXPECT_EQ(grid.header[6].tip, R"("Count" - 1)");
  EXPECT_EQ(grid.Cell(0, 6), "2.00");
}

TEST_F(UserColumnEditorTest, DeletingHiddenColumnLeavesHeaderAlone) {
  Add("A", R"("Qty" + 1)");
  Add("B", R"("Count" * 2)");
  grid.positions[6] = -1; // A hidden, its header item gone
  grid.header.erase(grid.header.begin() + 6);
  grid.positions[7] = 6;
  grid.header[0].tip = "stale";
  grid.calls.clear();
  Delete("A");
  EXPECT_TRUE(grid.calls.empty());
  EXPECT_EQ(grid.positions, (std::vector<int32_t>{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(grid.header[0].tip, "Client id");
  EXPECT_EQ(grid.header[6].tip, R"("Count" * 2)");
}

TEST_F(UserColumnEditorTest, GridWithTooFewColumnsIsRefused) {
  grid.dataCount = 7;
  EXPECT_FALSE(editor.Open(grid, vh::kUserColumnAdd));
  EXPECT_EQ(editor.Confirm("X", R"("Qty")", -1), vh::kEditorStay);
  EXPECT_EQ(recorder.messages(),
            (std::vector<std::string>{"Error while adding user defined cols"}));
  EXPECT_EQ(grid.table.size(), 6u);
}

} // namespace
