#include "grid/custom_column.h"

#include "common/message.h"
#include "grid/custom_column_detail.h"
#include "grid/expression.h"
#include "grid/expression_detail.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace vh::custom {
namespace {

// A chain of custom columns this long has come back to itself long ago or
// is about to exhaust the stack; either way it is stopped.
constexpr int kMaxDepth = 64;

struct ActiveFrame {
  const void* owner;
  int column;
};
thread_local ActiveFrame tActive[kMaxDepth];
thread_local int tDepth = 0;
thread_local bool tStopped = false;

} // namespace

ComputeFrame::ComputeFrame(const void* owner, int column) {
  for (int k = 0; k < tDepth; ++k)
    if (tActive[k].owner == owner && tActive[k].column == column) {
      tStopped = true;
      return;
    }
  if (tDepth == kMaxDepth) {
    tStopped = true;
    return;
  }
  tActive[tDepth++] = {owner, column};
  entered_ = true;
}

ComputeFrame::~ComputeFrame() {
  if (entered_ && --tDepth == 0)
    tStopped = false;
}

bool ComputeFrame::Stopped() {
  return tStopped;
}

std::vector<Piece> SplitStored(std::string_view stored) {
  std::vector<Piece> pieces;
  size_t i = 0;
  while (i < stored.size()) {
    if (stored[i] == '"') {
      ++i;
      continue;
    }
    const size_t end = std::min(stored.find('"', i), stored.size());
    const std::string_view text = stored.substr(i, end - i);
    const bool isColumn = pieces.size() % 2 == 1;
    pieces.push_back({text, isColumn, isColumn ? ParseColumnNumber(text) : 0});
    i = end;
  }
  return pieces;
}

int ParseColumnNumber(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && expr::IsSpace(text[i]))
    ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+'))
    ++i;
  long long magnitude = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    magnitude = std::min<long long>(magnitude * 10 + (text[i] - '0'), 1LL << 32);
  const long long value = negative ? -magnitude : magnitude;
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

void AppendCellText(std::string& substituted, std::string_view cell) {
  if (expr::ParseLeadingNumber(cell) == 0)
    substituted += '0';
  else
    substituted.append(cell);
}

void ReportInvalidExpression() {
  vh::ShowMessage(kInvalidExpressionMessage);
}

Outcome FinishSubstituted(std::string_view substituted) {
  const size_t slash = substituted.find('/');
  return Decide(slash != std::string_view::npos, [&](bool whole, double& holder) {
    return EvaluateExpression(whole ? substituted : substituted.substr(slash + 1), holder);
  });
}

namespace {

// Cells hold money and quantities: |value| well below 2^63 / 100. With a
// 64-bit long double mantissa, value * 100 is exact (53 + 7 bits), so
// rounding it to an integer in the current rounding mode rounds exactly
// as printf does. False when that does not hold (the caller formats the
// slow way).
bool RoundToCents(double value, uint64_t& cents) {
  if constexpr (std::numeric_limits<long double>::digits < 64) {
    return false;
  } else {
    // rint, not nearbyint: saving the floating-point environment would
    // cost more than the whole cell.
    const long double rounded = std::fabs(std::rint(static_cast<long double>(value) * 100));
    if (!(rounded < 1e18L))
      return false;
    cents = static_cast<uint64_t>(rounded);
    return true;
  }
}

bool FormatCents(double value, char* buffer, size_t& length) {
  uint64_t n = 0;
  if (!RoundToCents(value, n))
    return false;
  char digits[24];
  size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + n % 10);
    n /= 10;
  } while (n != 0 || count < 3);
  size_t at = 0;
  if (std::signbit(value))
    buffer[at++] = '-';
  while (count > 2)
    buffer[at++] = digits[--count];
  buffer[at++] = '.';
  buffer[at++] = digits[1];
  buffer[at++] = digits[0];
  length = at;
  return true;
}

} // namespace

// glibc prints non-finite values without a decimal point, and the sign of
// a NaN too; values that round to zero keep their sign ("-0.00").
size_t FormatTwoDecimals(double value, char* buffer) {
  if (!std::isfinite(value)) {
    const char* text =
        std::isnan(value) ? (std::signbit(value) ? "-nan" : "nan") : (value < 0 ? "-inf" : "inf");
    const size_t n = std::strlen(text);
    std::memcpy(buffer, text, n);
    return n;
  }
  size_t length = 0;
  if (FormatCents(value, buffer, length))
    return length;
  const auto result =
      std::to_chars(buffer, buffer + kFormatBufferSize, value, std::chars_format::fixed, 2);
  return static_cast<size_t>(result.ptr - buffer);
}

void WriteOutcome(const Outcome& outcome, std::string& outText) {
  if (outcome.dividedByZero) {
    outText.assign(kDividedByZeroText);
    return;
  }
  char buffer[kFormatBufferSize];
  outText.assign(buffer, FormatTwoDecimals(outcome.value, buffer));
}

double SortKeyOf(const Outcome& outcome) {
  if (outcome.dividedByZero)
    return 0;
  // Below 2^53 cents the integer is exact and one division rounds n / 100
  // as strtod rounds the printed text.
  uint64_t cents = 0;
  if (std::isfinite(outcome.value) && RoundToCents(outcome.value, cents) &&
      cents < (uint64_t{1} << 53)) {
    const double key = static_cast<double>(cents) / 100;
    return std::signbit(outcome.value) ? -key : key;
  }
  char buffer[kFormatBufferSize];
  return expr::ParseLeadingNumber(
      std::string_view(buffer, FormatTwoDecimals(outcome.value, buffer)));
}

} // namespace vh::custom

namespace vh {
namespace {

// The text path proper. `owner` and `column` name the cell being computed
// for the cycle check.
int CalculateFromStored(const void* owner, int column, uint64_t itemData,
                        std::string_view storedExpression, CellTextSource& cells,
                        std::string& outText) {
  try {
    custom::ComputeFrame frame(owner, column);
    if (!frame.Entered())
      return kCustomCycle;
    std::string substituted;
    std::string cell;
    CellStyle style;
    for (const custom::Piece& piece : custom::SplitStored(storedExpression)) {
      if (!piece.isColumn) {
        substituted.append(piece.text);
        continue;
      }
      cell.clear();
      const bool fetched = cells.GetCellText(itemData, piece.column, cell, style);
      if (custom::ComputeFrame::Stopped())
        return kCustomCycle;
      if (!fetched)
        return kCustomUnchanged;
      custom::AppendCellText(substituted, cell);
    }
    const custom::Outcome outcome = custom::FinishSubstituted(substituted);
    if (outcome.result == kCustomWritten)
      custom::WriteOutcome(outcome, outText);
    return outcome.result;
  } catch (...) {
    return kCustomUnchanged;
  }
}

class TextFormula final : public CustomColumnFormula {
public:
  explicit TextFormula(std::string_view stored) : stored_(stored) {}
  void Calculate(uint64_t itemData, CellTextSource& cells, int, std::string& outText) override {
    CalculateFromStored(this, 0, itemData, stored_, cells, outText);
  }

private:
  std::string stored_;
};

} // namespace

int CalculateCustomColumnValue(uint64_t itemData, int column, int dataColumnCount,
                               std::string_view storedExpression, CellTextSource& cells,
                               std::string& outText) {
  if (column < dataColumnCount)
    return kCustomUnchanged;
  return CalculateFromStored(&cells, column, itemData, storedExpression, cells, outText);
}

std::unique_ptr<CustomColumnFormula> TextCustomColumn(std::string_view storedExpression) {
  return std::make_unique<TextFormula>(storedExpression);
}

} // namespace vh
