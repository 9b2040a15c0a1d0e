// Custom (computed) grid columns: turning a stored expression into the text
// of one cell.
//
// A stored expression begins with one space and writes each column it
// refers to as the column's number between double quotes, e.g. ` "7"*"3"`.
// For a row, each reference is replaced by that cell's text (by "0" when the
// text reads as 0 or not as a number), the result is evaluated with
// EvaluateExpression and shown with two decimals.
//
// Two ways to compute the same thing:
//  - CalculateCustomColumnValue works on the texts every time, the plain
//    way that everything else is measured against;
//  - CompiledCustomColumn prepares the stored expression once and, for the
//    cell texts that occur in practice, evaluates without re-reading any
//    text. Its results (texts, return values, messages shown, cells fetched
//    and in which order) are identical to the text path for every input;
//    what it cannot prepare it hands to the text path.
//
// Cell texts come from the grid's CellTextSource (grid/row_formula.h), whose
// GetCellText computes custom columns in turn, so a custom column may refer
// to custom columns. A chain that comes back to a column being computed (or
// nests deeper than 64 custom columns) is stopped, and every custom cell on
// it, up to the one first requested, is left unchanged. Coming back means
// the same column, whatever the row. Both ways run on
// the thread that owns the grid; the cycle check is per thread.
#pragma once

#include "grid/row_formula.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

// What computing one custom cell did to the output text.
enum CustomCellResult : int {
  // Stopped because the computation came back to a custom column that was
  // being computed; the text is unchanged, and so is every cell on the
  // cycle up to the one first requested.
  kCustomCycle = -1,
  // Unchanged on purpose: not a custom column, a referenced cell
  // could not be fetched, a divisor that is no number (code 3 or 4), or an
  // invalid expression (code 4, after the message box).
  kCustomUnchanged = 0,
  // The text was written: the value with two decimals, or the zero-divisor
  // text.
  kCustomWritten = 1,
};

inline constexpr std::string_view kDividedByZeroText = "Divided by ZERO error";
inline constexpr std::string_view kInvalidExpressionMessage =
    "Invalid Expression,while calculating value";

// Computes custom column `column` of the row `itemData` into `outText` from
// its stored expression. Columns below `dataColumnCount` are data columns
// and are left alone (kCustomUnchanged). The text after the first "/" of the
// substituted text is evaluated first as the divisor: a divisor code of 3 or
// more leaves the text unchanged, a divisor value of 0 (also when code 1
// left it unevaluated) writes kDividedByZeroText. Code 4 for the whole text
// shows kInvalidExpressionMessage through vh::ShowMessage and leaves the
// text unchanged; any other code writes the value held, "%.2lf" as in the
// "C" locale (so a malformed expression shows 0.00). Never throws.
int CalculateCustomColumnValue(uint64_t itemData, int column, int dataColumnCount,
                               std::string_view storedExpression, CellTextSource& cells,
                               std::string& outText);

// One custom column's stored expression, prepared once. Build a new one
// when the definition changes. Not thread-safe: one computation at a time
// (recursion through custom columns included).
class CompiledCustomColumn final : public CustomColumnFormula {
public:
  explicit CompiledCustomColumn(std::string_view storedExpression);
  ~CompiledCustomColumn() override;
  CompiledCustomColumn(CompiledCustomColumn&&) noexcept;
  CompiledCustomColumn& operator=(CompiledCustomColumn&&) noexcept;

  const std::string& StoredExpression() const;

  // CalculateCustomColumnValue for this column (the caller has already
  // decided that the column is a custom one): the same result code, text
  // and messages. Never throws; a failure to allocate leaves the text
  // unchanged.
  int Compute(uint64_t itemData, CellTextSource& cells, std::string& outText);

  // What sorting by this column sees (comparison type 2 reads the cell
  // text with atof): on kCustomWritten, `key` is atof of the text Compute
  // would have written, i.e. the value rounded to two decimals, and 0 for
  // kDividedByZeroText; no string is built. Same result codes and messages
  // as Compute; `key` is untouched unless the result is kCustomWritten.
  int ComputeSortKey(uint64_t itemData, CellTextSource& cells, double& key);

  // What Compute writes, without the text: on kCustomWritten `value` says
  // whether the zero-divisor text or a number (the ComputeSortKey key) was
  // written; untouched otherwise. Same result codes and messages as Compute.
  int ComputeCellValue(uint64_t itemData, CellTextSource& cells, CustomCellValue& value);

  // CustomColumnFormula: Compute, result dropped.
  void Calculate(uint64_t itemData, CellTextSource& cells, int dataColumnCount,
                 std::string& outText) override;
  // CustomColumnFormula: ComputeSortKey for a cell that starts empty, so 0
  // when nothing is written. Always true.
  bool CalculateSortKey(uint64_t itemData, CellTextSource& cells, int dataColumnCount,
                        double& key) override;
  // CustomColumnFormula: ComputeCellValue for a cell that starts empty.
  // Always true.
  bool CalculateCellValue(uint64_t itemData, CellTextSource& cells, int dataColumnCount,
                          CustomCellValue& value) override;
  // CustomColumnFormula: the referenced columns when the expression has a
  // program for its references (at most 8 of them), else empty.
  std::vector<int> FormColumns() const override;
  // CustomColumnFormula: the ComputeCellValue result from the cells' forms.
  bool CalculateFromForms(const uint64_t* forms, CustomCellValue& value) override;

private:
  struct State;
  std::unique_ptr<State> state_;
};

// CustomColumnCompiler for the row engine: a CompiledCustomColumn. Never
// returns null.
std::unique_ptr<CustomColumnFormula> CompileCustomColumn(std::string_view storedExpression);

// CustomColumnCompiler that evaluates the texts every time with
// CalculateCustomColumnValue; for comparisons and as a fallback.
std::unique_ptr<CustomColumnFormula> TextCustomColumn(std::string_view storedExpression);

} // namespace vh
