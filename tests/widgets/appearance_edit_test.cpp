#include "widgets/appearance_edit.h"

#include <gtest/gtest.h>

namespace vh {
namespace {

using Pairs = std::vector<std::pair<std::string, uint32_t>>;

Pairs PairsOf(const sListAppearance& a) {
  Pairs pairs;
  for (size_t i = 0; i < KeywordCount(a); ++i)
    pairs.emplace_back((*a.keywordTexts)[i], (*a.keywordColours)[i]);
  return pairs;
}

sListAppearance WithKeywords(const Pairs& pairs) {
  sListAppearance a;
  a.keywordTexts = std::make_shared<std::vector<std::string>>();
  a.keywordColours = std::make_shared<std::vector<uint32_t>>();
  for (const auto& [text, colour] : pairs) {
    a.keywordTexts->push_back(text);
    a.keywordColours->push_back(colour);
  }
  return a;
}

TEST(AppearanceEdit, KeywordEdits) {
  const Pairs start = {{"buy", 0xFF}, {"sell", 0xFF00}};
  const struct {
    const char* name;
    bool (*edit)(sListAppearance&);
    bool result;
    Pairs pairs;
  } cases[] = {
      {"addLowerCased",
       [](sListAppearance& a) { return SetKeyword(a, "Pledge", 0x1) == 2; },
       true,
       {{"buy", 0xFF}, {"sell", 0xFF00}, {"pledge", 0x1}}},
      {"addAgainRecolours",
       [](sListAppearance& a) { return SetKeyword(a, "SELL", 0x2) == 1; },
       true,
       {{"buy", 0xFF}, {"sell", 0x2}}},
      {"addWithCommaRefused",
       [](sListAppearance& a) { return SetKeyword(a, "a,b", 0x3) >= 0; },
       false,
       {{"buy", 0xFF}, {"sell", 0xFF00}}},
      {"addEmptyRefused",
       [](sListAppearance& a) { return SetKeyword(a, "", 0x3) >= 0; },
       false,
       {{"buy", 0xFF}, {"sell", 0xFF00}}},
      {"change",
       [](sListAppearance& a) { return ChangeKeyword(a, 0, "Hold", 0x4); },
       true,
       {{"hold", 0x4}, {"sell", 0xFF00}}},
      {"changeOwnColourOnly",
       [](sListAppearance& a) { return ChangeKeyword(a, 1, "sell", 0x5); },
       true,
       {{"buy", 0xFF}, {"sell", 0x5}}},
      {"changeIntoAnotherRefused",
       [](sListAppearance& a) { return ChangeKeyword(a, 0, "Sell", 0x4); },
       false,
       {{"buy", 0xFF}, {"sell", 0xFF00}}},
      {"changeOutOfRange",
       [](sListAppearance& a) { return ChangeKeyword(a, 2, "x", 0x4); },
       false,
       {{"buy", 0xFF}, {"sell", 0xFF00}}},
      {"remove", [](sListAppearance& a) { return RemoveKeyword(a, 0); }, true, {{"sell", 0xFF00}}},
      {"removeOutOfRange",
       [](sListAppearance& a) { return RemoveKeyword(a, 5); },
       false,
       {{"buy", 0xFF}, {"sell", 0xFF00}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const sListAppearance original = WithKeywords(start);
    sListAppearance edited = original; // shares the arrays, as grids do
    EXPECT_EQ(c.edit(edited), c.result);
    EXPECT_EQ(PairsOf(edited), c.pairs);
    EXPECT_EQ(PairsOf(original), start) << "an edit reached a record sharing the arrays";
  }
}

TEST(AppearanceEdit, ARecordWithoutArraysGetsItsOwn) {
  sListAppearance a = DefaultListAppearance();
  ASSERT_EQ(SetKeyword(a, "buy", 0xFF), 0);
  EXPECT_EQ(PairsOf(a), (Pairs{{"buy", 0xFF}}));
  EXPECT_EQ(KeywordCount(DefaultListAppearance()), 0u);
}

TEST(AppearanceEdit, KeywordColouringNeedsAColumnAndAKeyword) {
  const struct {
    const char* name;
    int column;
    Pairs pairs;
    bool on;
  } cases[] = {
      {"columnAndKeyword", 2, {{"buy", 1}}, true},
      {"noColumn", -1, {{"buy", 1}}, false},
      {"noKeyword", 2, {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    sListAppearance a = WithKeywords(c.pairs);
    a.keywordColumn = c.column;
    a.keywordColouring = !c.on;
    UpdateKeywordColouring(a);
    EXPECT_EQ(a.keywordColouring, c.on);
  }
}

TEST(AppearanceEdit, AcceptedTexts) {
  const struct {
    const char* text;
    bool storable, fontSize;
  } cases[] = {
      {"8", true, true},
      {"999", true, true},
      {"1000", true, false},
      {"0", true, false},
      {"-8", true, false},
      {"8.5", true, false},
      {" 8", true, false},
      {"", false, false},
      {"Arial, Bold", false, false},
      {"DejaVu Sans", true, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(IsStorableText(c.text), c.storable);
    EXPECT_EQ(IsFontSize(c.text), c.fontSize);
  }
}

} // namespace
} // namespace vh
