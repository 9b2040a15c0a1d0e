// The expression engine: values and codes of whole texts, custom columns on
// the text path and the compiled one (fixed cases and a random comparison of
// the two), number reading against strtod and two-decimal formatting against
// printf.
#include "grid/expression.h"

#include "common/message.h"
#include "grid/custom_column.h"
#include "grid/custom_column_detail.h"
#include "grid/expression_detail.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

// A one-row grid for custom column tests: data columns hold fixed texts,
// custom columns are computed by formulas, as the row engine does it, and
// every fetch is logged so that two ways of computing can be compared.
namespace vh::testing {

class TestGrid final : public CellTextSource {
public:
  std::vector<std::string> data;
  std::vector<std::unique_ptr<CustomColumnFormula>> custom; // column data.size() + k
  std::set<int> failing;                                    // fetches that fail
  std::vector<int> fetched;

  int DataColumnCount() const { return static_cast<int>(data.size()); }

  void Define(std::vector<std::string> stored, CustomColumnCompiler compile) {
    custom.clear();
    for (const std::string& s : stored)
      custom.push_back(compile(s));
  }

  bool GetCellText(uint64_t itemData, int column, std::string& text, CellStyle&) override {
    fetched.push_back(column);
    if (failing.count(column))
      return false;
    if (column < DataColumnCount()) { // below 0: a column the data lacks
      text = column < 0 ? "" : data[static_cast<size_t>(column)];
      return true;
    }
    const size_t k = static_cast<size_t>(column - DataColumnCount());
    if (k < custom.size())
      custom[k]->Calculate(itemData, *this, DataColumnCount(), text);
    return true;
  }

  // The text of custom column k, starting from `initial`.
  std::string Custom(size_t k, std::string initial = "untouched") {
    CellStyle style;
    GetCellText(1, DataColumnCount() + static_cast<int>(k), initial, style);
    return initial;
  }
};

} // namespace vh::testing

namespace {

// What a whole text evaluates to, and the code, 0 unless a row says
// otherwise. A value of kUntouched: the call must leave the value alone.
TEST(ExpressionEvaluate, ValuesAndCodes) {
  constexpr double kUntouched = -777.25;
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    std::string_view text;
    double value;
    int code = 0;
  } cases[] = {
      // clang-format off
      // signs and grouping: power binds like product, remainder below it
      {"3 * -5", -15}, {"3*(-5)", -15}, {"-5+3", -2}, {"(-5)", -5}, {"3 - -2", 5},
      {"2<< -3", 1 << 30}, {"+5", 5}, {"2*3^2", 36}, {"2^3^2", 64}, {"2+3*4", 14},
      {"7+5%3*2", 12}, {"10-4-3", 3}, {"64/4/2", 8}, {"1+2<<3", 17}, {"1 | 2 && 0", 0},
      {"3 > 2 == 1", 1}, {"(1+2)*3", 9}, {"2 - 3 % 2", 1}, {"8 \\ 3 * 2", 4}, {" ((2)) ", 2},
      // each operator
      {"6*7", 42}, {"2^10", 1024}, {"7/2", 3.5}, {"10\\3", 3}, {"-7\\2", -3}, {"-7 % 3", -1},
      {"7 % -3", 1}, {"2<<3", 16}, {"-16>>2", -4}, {"5-8", -3}, {"5+8", 13}, {"6&3", 2},
      {"6|3", 7}, {"1.9 & 3", 1}, {"7 && 0", 0}, {"2 && -1", 1}, {"0 || 0", 0}, {"0 || 3", 1},
      {"5 == 5", 1}, {"5 == 4", 0}, {"1<2", 1}, {"2<1", 0}, {"2>1", 1}, {"2>=2", 1},
      {"3<=2", 0}, {"2 ^ 0.5", std::sqrt(2.0)},
      // 32-bit truncation: out of range, infinities and NaN are INT_MIN
      {"2147483647.9 | 0", INT_MAX}, {"2147483648 | 0", INT_MIN}, {"3e9 & -1", INT_MIN},
      {"-2147483648.9 | 0", INT_MIN}, {"inf | 0", INT_MIN}, {"nan & -1", INT_MIN},
      {"5 \\ 0", INT_MIN}, {"1 << 31", INT_MIN}, {"1 << 32", 1}, {"-1 >> 40", -1},
      {"-1 << 1", -2}, {"3 << -1", INT_MIN},
      // operands are what strtod reads wholly
      {"1.5e3", 1500}, {"1.5e3*2", 3000}, {"0x10", 16}, {"inf", inf}, {".5", 0.5}, {"5.", 5},
      {"-.5", -0.5}, {"1e999", inf},
      // 4: operands left over (the top is kept), or no result
      {"1 2", 2, 4}, {"7 % 0.5", kUntouched, 4}, {"-2147483648 % -1", kUntouched, 4},
      // 1: malformed (adjacent or dangling operators, open or empty parentheses)
      {"3*-5", kUntouched, 1}, {"1+", kUntouched, 1}, {"(1+2", kUntouched, 1},
      {"", kUntouched, 1}, {" ( ) ", kUntouched, 1},
      // 3: a sign or operand that is none (a minus splits an exponent)
      {"10 - - 2", kUntouched, 3}, {"-(3)", kUntouched, 3}, {"5 != 5", kUntouched, 3},
      {"1 + *2", kUntouched, 3}, {"1e-5", kUntouched, 3}, {"1,234", kUntouched, 3},
      {"12abc", kUntouched, 3}, {"1..2", kUntouched, 3}, {"12345678901234567x", kUntouched, 3},
      // clang-format on
  };
  for (const auto& c : cases) {
    double value = kUntouched;
    EXPECT_EQ(EvaluateExpression(c.text, value), c.code) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
}

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

// The text a custom column shows (or "untouched"), and whether it said the
// expression is invalid (once per computed cell).
TEST_P(CustomColumn, Texts) {
  const char* const kZero = vh::kDividedByZeroText.data();
  const struct {
    const char* name;
    const char* stored;
    const char* text;
    bool invalid = false;
  } cases[] = {
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
      {"a column below 0 (a hand-edited file) reads as empty", R"( "-1"+1)", "1.00"},
      // A division shows its error when the divisor, the text after the
      // first "/", evaluates to zero or not at all.
      {"zero divisor in parentheses", R"( 4/("5"-"5"))", kZero},
      {"whole rest is the divisor", R"( "0"/ 2-2)", kZero},
      {"divisor with code 1 counts as zero", R"( ("5"/2)+3)", kZero},
      {"zero cell", R"( "0"/"2")", kZero},
      {"plain division", R"( "0"/"5")", "3.33"},
      {"divisor that is no number", R"( 1/"4")", "untouched"},
      {"divisor with leftovers", R"( 8/2 3)", "untouched"},
      {"malformed whole shows the divisor", R"( (4/2)", "2.00"},
      {"negative divisor", R"( "0"/ "1")", "-5.00"},
      {"backslash is not guarded", R"( "0"\"3")", "-2147483648.00"},
      {"leftover operands", R"( "0" "5")", "untouched", true},
      {"leftover after a divisor", R"( 1 8/2)", "untouched", true},
      {"remainder by zero", R"( 7 % ("5"-3))", "untouched", true},
  };
  for (const auto& c : cases) {
    recorder.clear();
    EXPECT_EQ(Compute({c.stored}), c.text) << c.name;
    EXPECT_EQ(recorder.messages(),
              c.invalid ? std::vector<std::string>{std::string(vh::kInvalidExpressionMessage)}
                        : std::vector<std::string>{})
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

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

class Generator {
public:
  explicit Generator(uint32_t seed) : rng_(seed) {}

  size_t Below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(rng_); }
  bool OneIn(size_t n) { return Below(n) == 0; }
  template <size_t N> const char* Pick(const char* const (&pool)[N]) { return pool[Below(N)]; }

  std::string Digits() {
    std::string s = std::to_string(Below(100000));
    if (OneIn(2))
      s += "." + std::to_string(Below(1000));
    return s;
  }

  // A cell text as grids hold them: mostly numbers, some of every odd kind.
  std::string CellText() {
    static const char* const odd[] = {
        "0",    "0.00", "-0",         "abc",         "",      "1,234", " 12", "12abc", "1e5",
        "1e-5", ".5",   "-.5",        "5.",          "inf",   "-inf",  "nan", "0x1A",  "+3",
        "3 ",   "-",    "2147483648", "-2147483649", "1e400", "-nan",  "4/2", "(3)"};
    if (OneIn(3))
      return Pick(odd);
    return (OneIn(2) ? "-" : "") + Digits();
  }

  // A stored expression over 8 data columns and now and then one of 3 custom
  // ones (cycles included): a random walk over operands, operators,
  // parentheses and spacing.
  std::string Expression() {
    static const char* const ops[] = {"*",  "/",  "-",  "+", "%", "\\", "^",  "<<", ">>", "&", "|",
                                      "&&", "||", "==", "<", ">", ">=", "<=", "!=", "=",  "--"};
    static const char* const constants[] = {"2",   "10",   "0.5", "3.25", "0",
                                            "1e3", "0x10", "abc", ",5"};
    static const char* const spaces[] = {"", "", " ", "  "};
    std::string text = " ";
    const size_t length = 1 + Below(7);
    int open = 0;
    for (size_t k = 0; k < length; ++k) {
      text += Pick(spaces);
      if (OneIn(4)) {
        text += "(";
        ++open;
      }
      if (OneIn(5))
        text += OneIn(2) ? "-" : "+";
      const size_t column = OneIn(8) ? 8 + Below(3) : Below(8);
      text += OneIn(3) ? std::string(Pick(constants)) : "\"" + std::to_string(column) + "\"";
      if (open > 0 && OneIn(3)) {
        text += ")";
        --open;
      }
      if (k + 1 < length || OneIn(8)) {
        text += Pick(spaces);
        text += Pick(ops);
      }
    }
    while (open-- > 0 && !OneIn(6))
      text += ")";
    return text;
  }

private:
  std::mt19937 rng_;
};

TEST(ExpressionCompiled, CustomColumnsEqualTheTextPath) {
  Generator gen(77);
  vh::ScopedMessageRecorder recorder;
  for (int trial = 0; trial < 4000; ++trial) {
    std::vector<std::string> data(8);
    for (std::string& t : data)
      t = gen.CellText();
    std::vector<std::string> stored(3);
    for (std::string& s : stored)
      s = gen.Expression();
    const int failing = gen.OneIn(20) ? 7 : -1;
    std::string seen[2];
    for (int path = 0; path < 2; ++path) {
      vh::testing::TestGrid grid;
      grid.data = data;
      grid.failing = {failing};
      grid.Define(stored, path == 0 ? vh::CustomColumnCompiler(vh::TextCustomColumn)
                                    : vh::CustomColumnCompiler(vh::CompileCustomColumn));
      recorder.clear();
      for (size_t k = 0; k < stored.size(); ++k)
        seen[path] += grid.Custom(k, "-") + "|";
      for (int column : grid.fetched)
        seen[path] += std::to_string(column) + ",";
      seen[path] += std::to_string(recorder.messages().size());
    }
    ASSERT_EQ(seen[1], seen[0]) << stored[0] << "\n" << stored[1] << "\n" << stored[2];
  }
}

TEST(ExpressionCompiled, NumbersReadAsStrtodReadsThem) {
  Generator gen(5);
  const char* const alphabet = "0123456789.";
  for (int trial = 0; trial < 100000; ++trial) {
    std::string token = gen.OneIn(4) ? "-" : "";
    const size_t length = 1 + gen.Below(gen.OneIn(50) ? 400 : 20);
    for (size_t k = 0; k < length; ++k)
      token += alphabet[gen.Below(gen.OneIn(8) ? 11 : 10)];
    char* end = nullptr;
    const double expected = std::strtod(token.c_str(), &end);
    const bool whole = end == token.c_str() + token.size();
    double value = 0;
    ASSERT_EQ(vh::expr::ParseWholeNumber(token, value), whole) << token;
    if (whole) {
      ASSERT_TRUE(SameBits(value, expected)) << token;
    }
    ASSERT_TRUE(SameBits(vh::expr::ParseLeadingNumber(token), expected)) << token;
  }
}

TEST(ExpressionCompiled, TwoDecimalsAsPrintfPrintsThemAndSortKeysReadThemBack) {
  Generator gen(9);
  for (int trial = 0; trial < 100000; ++trial) {
    double value;
    const size_t kind = gen.Below(4);
    if (kind == 0) {
      uint64_t bits = (uint64_t(gen.Below(1u << 31)) << 33) ^ gen.Below(1u << 31);
      std::memcpy(&value, &bits, sizeof value);
    } else if (kind == 1) {
      // Exact and near halves at the third decimal.
      value = (static_cast<double>(gen.Below(2000000)) - 1000000) / (gen.OneIn(2) ? 8 : 1000);
    } else {
      // Prices and products of prices, up to where cents leave 64 bits.
      const double scale = kind == 2 ? 1e7 : 1e17;
      value = std::ldexp(static_cast<double>(gen.Below(1u << 31)), -31) * scale *
              (gen.OneIn(2) ? -1 : 1) * (gen.OneIn(2) ? 1 : 3.0 / 7);
    }
    char expected[400];
    std::snprintf(expected, sizeof expected, "%.*lf", 2, value);
    char buffer[vh::custom::kFormatBufferSize];
    const size_t n = vh::custom::FormatTwoDecimals(value, buffer);
    ASSERT_EQ(std::string(buffer, n), expected);
    // What a sort reads back from that text.
    vh::custom::Outcome outcome;
    outcome.result = vh::kCustomWritten;
    outcome.value = value;
    ASSERT_TRUE(SameBits(vh::custom::SortKeyOf(outcome), std::strtod(expected, nullptr)))
        << expected;
  }
}

} // namespace
