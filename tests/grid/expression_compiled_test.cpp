// Randomised checks that the fast paths equal the plain ones: compiled
// custom columns (and so the compiled programs behind them) against text
// evaluation, number reading against strtod, two-decimal formatting
// against printf.
#include "common/message.h"
#include "grid/custom_column.h"
#include "grid/custom_column_detail.h"
#include "grid/expression_detail.h"
#include "tests/grid/expression_test_grid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

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

  // Expression text around references: a random walk over operands,
  // operators, parentheses and spacing, with `reference` producing one
  // reference (and returning its text).
  template <typename Reference> std::string Expression(Reference reference) {
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
      text += OneIn(3) ? std::string(Pick(constants)) : reference();
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
      s = gen.Expression([&]() {
        // Mostly data columns; now and then a custom one (cycles included).
        const size_t column = gen.OneIn(8) ? 8 + gen.Below(3) : gen.Below(8);
        return "\"" + std::to_string(column) + "\"";
      });
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
