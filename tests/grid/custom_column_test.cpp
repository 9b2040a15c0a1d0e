#include "grid/custom_column.h"

#include "common/message.h"
#include "tests/grid/expression_test_grid.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

using vh::testing::TestGrid;

struct Path {
  const char* name;
  vh::CustomColumnCompiler compile;
};

void PrintTo(const Path& path, std::ostream* os) {
  *os << path.name;
}

class CustomColumn : public ::testing::TestWithParam<Path> {
protected:
  CustomColumn() { grid.data = {"10", "-2", "abc", "0.00", "1,234", "3", "12.345", " 4", "", "7"}; }
  // Defines the custom columns (numbered from 10) and computes the first.
  std::string Compute(std::vector<std::string> stored) {
    grid.Define(std::move(stored), GetParam().compile);
    grid.fetched.clear();
    return grid.Custom(0);
  }
  TestGrid grid;
  vh::ScopedMessageRecorder recorder;
};

struct Case {
  const char* name;
  const char* stored;
  const char* text;
};

TEST_P(CustomColumn, SubstitutesCellTexts) {
  const Case cases[] = {
      {"product", R"( "0"*"5")", "30.00"},
      {"negative after spaced operator", R"( "0" * "1")", "-20.00"},
      {"negative right behind an operator", R"( "0"-"1")", "0.00"},
      {"negative after spaced minus", R"( "0" - "1")", "12.00"},
      {"negative first", R"( "1"+5)", "3.00"},
      {"non-numeric text becomes 0", R"( "0"+"2")", "10.00"},
      {"zero text becomes 0", R"( "3"+"0")", "10.00"},
      {"empty text becomes 0", R"( "8"+"5")", "3.00"},
      {"thousands separator fails", R"( "4"+"0")", "0.00"},
      {"leading space kept", R"( "7"*"5")", "12.00"},
      {"quote runs are skipped", R"( "9""5")", "75.00"},
      {"without the leading space the pieces shift", R"("9"*"5")", "9105.00"},
      {"reference inside literal text", R"( 2*("9"+1))", "16.00"},
      {"digits merge with the reference", R"( 1"9")", "17.00"},
      {"column number read with atoi", R"( "5x"+" 0")", "13.00"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(Compute({c.stored}), c.text) << c.name;
  EXPECT_TRUE(recorder.messages().empty());
}

TEST_P(CustomColumn, DivisorRule) {
  const Case cases[] = {
      {"zero divisor in parentheses", R"( 4/("5"-"5"))", "Divided by ZERO error"},
      {"whole rest is the divisor", R"( "0"/ 2-2)", "Divided by ZERO error"},
      {"divisor with code 1 counts as zero", R"( ("5"/2)+3)", "Divided by ZERO error"},
      {"zero cell", R"( "0"/"2")", "Divided by ZERO error"},
      {"plain division", R"( "0"/"5")", "3.33"},
      {"divisor that is no number", R"( 1/"4")", "untouched"},
      {"divisor with leftovers", R"( 8/2 3)", "untouched"},
      {"malformed whole shows the divisor", R"( (4/2)", "2.00"},
      {"negative divisor", R"( "0"/ "1")", "-5.00"},
      {"backslash is not guarded", R"( "0"\"3")", "-2147483648.00"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(Compute({c.stored}), c.text) << c.name;
  EXPECT_TRUE(recorder.messages().empty());
}

TEST_P(CustomColumn, InvalidExpressionShowsItsMessageOncePerCell) {
  const Case cases[] = {
      {"leftover operands", R"( "0" "5")", "untouched"},
      {"leftover after a divisor", R"( 1 8/2)", "untouched"},
      {"remainder by zero", R"( 7 % ("5"-3))", "untouched"},
  };
  for (const Case& c : cases) {
    recorder.clear();
    EXPECT_EQ(Compute({c.stored}), c.text) << c.name;
    EXPECT_EQ(recorder.messages(),
              std::vector<std::string>{std::string(vh::kInvalidExpressionMessage)})
        << c.name;
  }
}

TEST_P(CustomColumn, FailedFetchLeavesTheTextAndStopsFetching) {
  grid.failing = {5};
  EXPECT_EQ(Compute({R"( "5"+"0")"}), "untouched");
  EXPECT_EQ(grid.fetched, (std::vector<int>{10, 5}));
}

INSTANTIATE_TEST_SUITE_P(Paths, CustomColumn,
                         ::testing::Values(Path{"Text", vh::TextCustomColumn},
                                           Path{"Compiled", vh::CompileCustomColumn}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(CustomColumnValue, DataColumnsAreLeftAlone) {
  TestGrid grid;
  grid.data = {"1", "2"};
  std::string text = "kept";
  EXPECT_EQ(vh::CalculateCustomColumnValue(1, 1, 2, R"( "0"+1)", grid, text), vh::kCustomUnchanged);
  EXPECT_EQ(text, "kept");
  EXPECT_EQ(vh::CalculateCustomColumnValue(1, 2, 2, R"( "0"+1)", grid, text), vh::kCustomWritten);
  EXPECT_EQ(text, "2.00");
}

} // namespace
