// Internals shared by the text and the compiled computation of custom
// columns.
#pragma once

#include "grid/custom_column.h"

#include <string>
#include <string_view>
#include <vector>

namespace vh::custom {

// A stored expression split at double quotes, runs of quotes skipped as
// strtok skips delimiters. Even pieces are literal text, odd pieces column
// numbers (so ` "7""3"` takes "3" as literal text, as it always did).
struct Piece {
  std::string_view text;
  bool isColumn;
  int column; // atoi of the text, for column pieces
};
std::vector<Piece> SplitStored(std::string_view stored);

// atoi as in the "C" locale, clamped to int instead of overflowing.
int ParseColumnNumber(std::string_view text);

// Appends a fetched cell text to the substituted text: "0" when it reads as
// 0 or as no number, otherwise the text exactly as it stands.
void AppendCellText(std::string& substituted, std::string_view cell);

// Marks one custom cell as being computed on this thread. A second frame
// with the same key while the first is alive, or nesting deeper than any
// sensible chain of custom columns, is a cycle: it does not enter, and
// every frame alive sees Stopped() until the outermost one ends.
class ComputeFrame {
public:
  ComputeFrame(const void* owner, int column);
  ~ComputeFrame();
  ComputeFrame(const ComputeFrame&) = delete;
  ComputeFrame& operator=(const ComputeFrame&) = delete;
  bool Entered() const { return entered_; }
  static bool Stopped();

private:
  bool entered_ = false;
};

// The end of one cell's computation, before it becomes text.
struct Outcome {
  int result = kCustomUnchanged;
  bool dividedByZero = false;
  double value = 0;
};

// Shows kInvalidExpressionMessage, once per computed cell.
void ReportInvalidExpression();

// The divisor rule and the final evaluation, shared by both paths.
// `evaluate(whole, holder)` evaluates the whole text (whole = true) or the
// divisor text into `holder` and returns the code.
template <typename Evaluate> Outcome Decide(bool hasDivisor, Evaluate evaluate) {
  Outcome out;
  double holder = 0;
  if (hasDivisor) {
    if (evaluate(false, holder) >= 3)
      return out;
    if (holder == 0) {
      out.result = kCustomWritten;
      out.dividedByZero = true;
      return out;
    }
  }
  if (evaluate(true, holder) == 4) {
    ReportInvalidExpression();
    return out;
  }
  out.result = kCustomWritten;
  out.value = holder;
  return out;
}

// Steps after substitution on the text itself.
Outcome FinishSubstituted(std::string_view substituted);

// "%.*lf" with precision 2 as the "C" locale prints it, into `buffer`;
// returns the length. 330 characters hold any double.
inline constexpr size_t kFormatBufferSize = 330;
size_t FormatTwoDecimals(double value, char* buffer);

// Writes a kCustomWritten outcome as the cell text.
void WriteOutcome(const Outcome& outcome, std::string& outText);
// atof of the text WriteOutcome would write.
double SortKeyOf(const Outcome& outcome);

} // namespace vh::custom
