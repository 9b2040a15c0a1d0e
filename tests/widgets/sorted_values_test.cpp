#include "widgets/sorted_values.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace vh {
namespace {

using Texts = std::vector<std::string>;

TEST(SortedValues, AlphabeticalIgnoringCaseEachOnce) {
  const struct {
    const char* name;
    Texts in;
    Texts out;
  } cases[] = {
      {"plain", {"TCS", "INFY", "RELIANCE"}, {"INFY", "RELIANCE", "TCS"}},
      {"caseIgnored", {"beta", "Alpha", "gamma"}, {"Alpha", "beta", "gamma"}},
      {"upperBeforeLowerOnTies", {"abc", "ABC", "Abc"}, {"ABC", "Abc", "abc"}},
      {"duplicatesOnce", {"X", "Y", "X", "X", "Y"}, {"X", "Y"}},
      {"emptyDropped", {"", "b", "", "a"}, {"a", "b"}},
      {"prefixFirst", {"ABCD", "ABC", "AB"}, {"AB", "ABC", "ABCD"}},
      {"digitsAsText", {"9", "10", "100", "2"}, {"10", "100", "2", "9"}},
      // Beyond the first eight bytes, the rest of the text decides.
      {"longCommonPrefix",
       {"CLIENT-000000020", "client-000000010", "CLIENT-000000010"},
       {"CLIENT-000000010", "client-000000010", "CLIENT-000000020"}},
      {"punctuationByByte", {"a_b", "a-b", "a b"}, {"a b", "a-b", "a_b"}},
      {"utf8AfterAscii",
       {"\xC3\xA9t\xC3\xA9", "zeta", "Eta"},
       {"Eta", "zeta", "\xC3\xA9t\xC3\xA9"}},
      {"nothing", {}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(SortedDistinctValues(c.in), c.out);
  }
}

// The fast path compares eight-byte keys first; on many random texts that
// share long prefixes its result must equal a plain sort by the collation.
TEST(SortedValues, KeyedSortAgreesWithTheCollation) {
  std::mt19937 random(7);
  const std::string alphabet = "aAbB~_ 0\x01\xC3";
  Texts texts;
  for (int i = 0; i < 5000; ++i) {
    std::string s = i % 2 ? "PREFIXED" : "";
    const int length = static_cast<int>(random() % 12);
    for (int k = 0; k < length; ++k)
      s += alphabet[random() % alphabet.size()];
    texts.push_back(s);
  }
  Texts expected = texts;
  std::sort(expected.begin(), expected.end(),
            [](const std::string& a, const std::string& b) { return CompareListTexts(a, b) < 0; });
  expected.erase(std::unique(expected.begin(), expected.end()), expected.end());
  expected.erase(std::remove(expected.begin(), expected.end(), std::string()), expected.end());
  EXPECT_EQ(SortedDistinctValues(texts), expected);
}

} // namespace
} // namespace vh
