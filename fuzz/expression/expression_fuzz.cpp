// Arbitrary bytes through the expression engine, and through both ways of
// computing a custom column, which must agree on everything observable.
//
// Input: the whole buffer is one expression. Split at '\n' it is also a
// grid row: the first two pieces are stored expressions of two custom
// columns, the rest (at most 8) the texts of the data columns.
#include "common/message.h"
#include "grid/custom_column.h"
#include "grid/expression.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

bool KnownCode(int code) {
  return code == 0 || code == 1 || code == 3 || code == 4;
}

bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

class Row final : public vh::CellTextSource {
public:
  std::vector<std::string> data;
  std::vector<std::unique_ptr<vh::CustomColumnFormula>> custom;
  std::string log; // every fetch and message, in order

  bool GetCellText(uint64_t item, int column, std::string& text, vh::CellStyle&) override {
    log += "f" + std::to_string(column);
    const int dataCount = static_cast<int>(data.size());
    if (column < 0 || column == 3)
      return false; // a failing data source cell
    if (column < dataCount) {
      text = data[static_cast<size_t>(column)];
      return true;
    }
    const size_t k = static_cast<size_t>(column - dataCount);
    if (k < custom.size())
      custom[k]->Calculate(item, *this, dataCount, text);
    return true;
  }
};

void CheckEngine(std::string_view text) {
  std::string postfix;
  const int converted = ConvertToPostfix(text, postfix);
  Check(KnownCode(converted));
  double direct = 0.5;
  Check(KnownCode(EvaluatePostfix(text, direct)));
  double value = 0.5;
  const int code = EvaluateExpression(text, value);
  Check(KnownCode(code));
  if (converted != 0) {
    Check(code == converted && SameBits(value, 0.5));
    return;
  }
  double again = 0.5;
  Check(EvaluatePostfix(postfix, again) == code && SameBits(again, value));
}

// Text path and compiled path over the same row, logged the same way.
void CheckCustomColumns(std::string_view input) {
  std::vector<std::string> pieces;
  size_t start = 0;
  while (pieces.size() < 10) {
    const size_t end = input.find('\n', start);
    pieces.emplace_back(input.substr(start, end - start));
    if (end == std::string_view::npos)
      break;
    start = end + 1;
  }
  if (pieces.size() < 2)
    return;
  std::string results[2];
  for (int path = 0; path < 2; ++path) {
    Row row;
    row.data.assign(pieces.begin() + 2, pieces.end());
    for (int k = 0; k < 2; ++k)
      row.custom.push_back(path == 0 ? vh::TextCustomColumn(pieces[static_cast<size_t>(k)])
                                     : vh::CompileCustomColumn(pieces[static_cast<size_t>(k)]));
    auto old = vh::SetMessageSink([&row](std::string_view m) { row.log += "m" + std::string(m); });
    vh::CellStyle style;
    std::string text = "?";
    row.GetCellText(1, static_cast<int>(row.data.size()), text, style);
    row.log += "=" + text;
    results[path] = row.log;
    if (path == 1) {
      vh::CompiledCustomColumn column(pieces[0]);
      Row plain;
      plain.data = row.data;
      std::string written;
      double key = 0.25;
      const int result = column.Compute(1, plain, written);
      Check(column.ComputeSortKey(1, plain, key) == result);
      if (result == vh::kCustomWritten)
        Check(SameBits(key, std::strtod(written.c_str(), nullptr)) || (key != key));
    }
    vh::SetMessageSink(std::move(old));
  }
  Check(results[0] == results[1]);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  CheckEngine(input);
  CheckCustomColumns(input);
  return 0;
}
