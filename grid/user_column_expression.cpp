#include "grid/user_column_expression.h"

#include "grid/expression.h"

#include <algorithm>

namespace vh {

const ExpressionButton* FindExpressionButton(int controlId) {
  for (const ExpressionButton& button : kExpressionButtons) {
    if (button.controlId == controlId)
      return &button;
  }
  return nullptr;
}

std::vector<ExpressionColumn> NumericColumns(const std::vector<sTarnColInfo>& table) {
  std::vector<ExpressionColumn> columns;
  for (size_t i = 0; i < table.size(); ++i) {
    switch (table[i].nType) {
    case kCompareLong:
    case kCompareInteger:
    case kCompareDecimal:
    case kCompareDecimalAlt:
      columns.push_back({std::string(table[i].Name()), int(i)});
      break;
    default:
      break;
    }
  }
  return columns;
}

namespace {

char AsciiLower(char c) {
  return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return AsciiLower(x) == AsciiLower(y);
         });
}

// The next piece between runs of `quote`, tokenizer style: leading quotes
// are skipped, so no piece is ever empty. Empty when none is left.
std::string_view NextPiece(std::string_view& rest) {
  const size_t start = rest.find_first_not_of('"');
  if (start == std::string_view::npos) {
    rest = {};
    return {};
  }
  rest.remove_prefix(start);
  const size_t end = std::min(rest.find('"'), rest.size());
  const std::string_view piece = rest.substr(0, end);
  rest.remove_prefix(end);
  return piece;
}

} // namespace

int FindColumnExact(const std::vector<ExpressionColumn>& columns, std::string_view name) {
  for (size_t i = 0; i < columns.size(); ++i) {
    if (EqualIgnoringCase(columns[i].name, name))
      return int(i);
  }
  return -1;
}

bool ConvertDisplayExpression(std::string_view display,
                              const std::vector<ExpressionColumn>& columns,
                              ConvertedExpression& out) {
  out = {};
  // The blank makes the first piece expression text even when the user's
  // text starts with a quoted name.
  const std::string text = " " + std::string(display);
  std::string_view rest = text;
  for (bool isName = false;; isName = !isName) {
    const std::string_view piece = NextPiece(rest);
    if (piece.empty())
      return true;
    if (!isName) {
      out.engine += piece;
      out.stored += piece;
      continue;
    }
    const int found = FindColumnExact(columns, piece);
    if (found < 0)
      return false;
    const std::string number = std::to_string(columns[size_t(found)].column);
    out.engine += number;
    out.stored += "\"" + number + "\"";
  }
}

bool CheckDisplayExpression(std::string_view display, const std::vector<ExpressionColumn>& columns,
                            ConvertedExpression& out) {
  if (!ConvertDisplayExpression(display, columns, out))
    return false;
  double value = 0;
  return EvaluateExpression(out.engine, value) == 0;
}

} // namespace vh
