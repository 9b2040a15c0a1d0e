// How the row engine computes custom columns without knowing how formulas
// are compiled: the engine is a source of cell texts, a formula turns one
// row's cells into the custom cell's text, and a compiler builds a formula
// from a stored expression once per definition.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

// The three extra outputs of a data source: colours are colour values and
// image an image index; -1 means "use the grid's default" / "no image".
struct CellStyle {
  int32_t textColour = -1;
  int32_t background = -1;
  int32_t image = -1;
};

class CellTextSource {
public:
  // Writes the text of `column` for the row keyed `itemData`; false when
  // there is no data source or the source failed.
  virtual bool GetCellText(uint64_t itemData, int column, std::string& text, CellStyle& style) = 0;
  // The same when the colours and image are of no interest.
  bool GetCellText(uint64_t itemData, int column, std::string& text) {
    CellStyle style;
    return GetCellText(itemData, column, text, style);
  }

protected:
  ~CellTextSource() = default;
};

// What one custom cell shows, without its text: kept by the row engine's
// key caches instead of the text.
struct CustomCellValue {
  enum Kind : uint8_t {
    kLeftEmpty,     // nothing written: a cell that starts empty stays empty
    kDividedByZero, // the zero-divisor text
    kValue,         // the value with two decimals
  };
  Kind kind = kLeftEmpty;
  double value = 0; // for kValue: atof of the written text
};

// How a formula reads one referenced cell's text, in 8 bytes, so that a
// column's texts are read once for every row of every formula that reads
// it: 0 for a text that reads as 0 or as no number; the number the formula
// reads from the text, with the sign bit set when the text carries a
// leading minus (the formula sees the minus as a character of its text);
// kFormNeedsText for a text only the text path can read (" 5", "1e-5",
// "5abc"). kFormNotFetched is for a cell whose text could not be read.
inline constexpr uint64_t kFormNeedsText = 0x7FF0000000000001ull;
inline constexpr uint64_t kFormNotFetched = 0x7FF0000000000002ull;
uint64_t CellFormBits(std::string_view text);

class CustomColumnFormula {
public:
  virtual ~CustomColumnFormula() = default;
  // Writes the custom cell's text for `itemData`, fetching referenced cells
  // from `cells`; leaves `outText` unchanged when a referenced cell cannot
  // be read or the value cannot be computed.
  virtual void Calculate(uint64_t itemData, CellTextSource& cells, int dataColumnCount,
                         std::string& outText) = 0;
  // What a decimal sort sees without building the text: atof of the text
  // Calculate would write into an empty text (0 when it writes nothing).
  // False when the formula cannot tell; the caller then uses the text.
  virtual bool CalculateSortKey(uint64_t /*itemData*/, CellTextSource& /*cells*/,
                                int /*dataColumnCount*/, double& /*key*/) {
    return false;
  }
  // What Calculate would write into an empty text, as a value: `value`
  // rounded as the two-decimal text reads back, so formatting it again with
  // two decimals gives that very text. False when the formula cannot tell
  // (the caller then uses the text); messages are shown as Calculate shows
  // them.
  virtual bool CalculateCellValue(uint64_t /*itemData*/, CellTextSource& /*cells*/,
                                  int /*dataColumnCount*/, CustomCellValue& /*value*/) {
    return false;
  }
  // The columns CalculateFromForms reads, one per reference in the order of
  // the expression; empty when the formula cannot compute from forms.
  virtual std::vector<int> FormColumns() const { return {}; }
  // CalculateCellValue for a row whose referenced cells read as `forms`
  // (CellFormBits of each text, one per FormColumns entry, none of them
  // kFormNotFetched). False, nothing shown, when these forms need the
  // texts; the caller then computes from the texts.
  virtual bool CalculateFromForms(const uint64_t* /*forms*/, CustomCellValue& /*value*/) {
    return false;
  }
};

// Builds the formula of one stored expression; may return null, in which
// case the column's cells keep whatever text the caller passed in.
using CustomColumnCompiler =
    std::function<std::unique_ptr<CustomColumnFormula>(std::string_view storedExpression)>;

} // namespace vh
