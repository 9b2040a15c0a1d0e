#include "excel/cell_value.h"

#include <gtest/gtest.h>

namespace vh {
namespace {

TEST(CellValue, WholeNumbersAreRead) {
  const struct {
    const char* name;
    const char* text;
    double value;
  } cases[] = {
      {"integer", "42", 42},
      {"negative", "-17", -17},
      {"plusSign", "+8", 8},
      {"decimal", "1234.50", 1234.5},
      {"leadingPoint", ".5", 0.5},
      {"trailingPoint", "7.", 7},
      {"exponent", "1.5e3", 1500},
      {"negativeExponent", "25E-2", 0.25},
      {"zeroPadded", "000123", 123},
      {"beyondInt64", "12345678901234567890", 12345678901234567890.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    double value = -1;
    ASSERT_TRUE(ParseWholeNumber(c.text, value));
    EXPECT_DOUBLE_EQ(value, c.value);
  }
}

TEST(CellValue, TextsThatAreNotWholeNumbersStayText) {
  const struct {
    const char* name;
    std::string_view text;
  } cases[] = {
      {"empty", ""},
      {"signOnly", "-"},
      {"pointOnly", "."},
      {"leadingBlank", " 12"},
      {"trailingBlank", "12 "},
      {"trailingLetters", "12abc"},
      {"clientId", "C000123"},
      {"commaDecimal", "12,5"},
      {"thousandsSeparator", "1,234"},
      {"hex", "0x1A"},
      {"infinity", "inf"},
      {"notANumber", "nan"},
      {"exponentWithoutDigits", "1e"},
      {"twoPoints", "1.2.3"},
      {"overflow", "1e400"},
      {"dateLike", "12-05-2024"},
      {"embeddedNul", std::string_view("12\0"
                                       "3",
                                       4)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    double value = 99;
    EXPECT_FALSE(ParseWholeNumber(c.text, value));
    EXPECT_EQ(value, 99) << "value changed on refusal";
  }
}

TEST(CellValue, OnlyNumericComparisonTypesExportAsNumbers) {
  const struct {
    int type;
    bool numeric;
  } cases[] = {{1, true}, {2, true},  {3, false}, {4, true},
               {5, true}, {6, false}, {0, false}, {-1, false}};
  for (const auto& c : cases)
    EXPECT_EQ(IsNumericColumnType(c.type), c.numeric) << "type " << c.type;
}

TEST(CellValue, CellTextKeepsValidUtf8AndReplacesTheRest) {
  const std::string kFffd = "\xEF\xBF\xBD";
  const struct {
    const char* name;
    std::string in;
    std::string out;
  } cases[] = {
      {"ascii", "RELIANCE-EQ", "RELIANCE-EQ"},
      {"twoByte", "caf\xC3\xA9", "caf\xC3\xA9"},
      {"fourByte", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"latin1Byte", "caf\xE9", "caf" + kFffd},
      {"loneContinuation", "a\x80z", "a" + kFffd + "z"},
      {"overlongSlash", "\xC0\xAF", kFffd + kFffd},
      {"surrogate", "\xED\xA0\x80", kFffd + kFffd + kFffd},
      {"aboveMaxCodePoint", "\xF4\x90\x80\x80", kFffd + kFffd + kFffd + kFffd},
      {"truncatedSequence", "ab\xE2\x82", "ab" + kFffd + kFffd},
      {"nul", std::string("a\0b", 3), "a" + kFffd + "b"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(CellText(c.in), c.out);
  }
}

TEST(CellValue, CellTextIsCutToTheCellLimitOnACharacterBoundary) {
  const struct {
    const char* name;
    std::string in;
    size_t size;
  } cases[] = {
      {"atLimit", std::string(kExcelMaxCellBytes, 'x'), kExcelMaxCellBytes},
      {"oneOver", std::string(kExcelMaxCellBytes + 1, 'x'), kExcelMaxCellBytes},
      // "é" is two bytes: the one that would straddle the limit is dropped.
      {"straddlingCharacter", std::string(kExcelMaxCellBytes - 1, 'x') + "\xC3\xA9",
       kExcelMaxCellBytes - 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(CellText(c.in).size(), c.size);
  }
}

} // namespace
} // namespace vh
