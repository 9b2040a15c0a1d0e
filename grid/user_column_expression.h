// The expression side of the custom-column editor: the buttons that write
// an expression, the list of columns an expression may name, and the
// conversion of what the user sees into what the engine checks and what the
// profile stores.
//
//   display   "Qty" * "Price" + 1        names between double quotes
//   engine     6 * 17 + 1                column numbers, for EvaluateExpression
//   stored     "6" * "17" + 1            column numbers in quotes, kept in
//                                        sTarnColInfo::strExpression
// The engine and stored forms begin with one blank. Qt-free.
#pragma once

#include "grid/col_info.h"

#include <string>
#include <string_view>
#include <vector>

namespace vh {

// One expression button. `display` follows the selected column's quoted
// name, `coded` follows "\"<column number>\"" in the running coded form;
// with Ctrl held the bare `ctrlDisplay` / `ctrlCoded` are written instead
// and no column is needed. "End" writes the column alone, Ctrl or not;
// "Clear" empties both forms.
struct ExpressionButton {
  int controlId;
  const char* label;
  const char* display;
  const char* coded;
  const char* ctrlDisplay;
  const char* ctrlCoded;
};

inline constexpr int kEndButtonId = 1018;
inline constexpr int kClearButtonId = 1019;

// In the order the dialog lays them out.
inline constexpr ExpressionButton kExpressionButtons[] = {
    {1012, "+", " + ", "+", "+", "+"},
    {1013, "-", " - ", "-", "-", "-"},
    {1014, "*", " * ", "*", "*", "*"},
    {1015, "/", " / ", "/", "/", "/"},
    {10013, "x ^ 2", " ^ 2 ", "^2", "^ 2", "^2"},
    {10014, "x ^ y", " ^ ", "^", "^", "^"},
    {1016, "(", " ( ", "(", "(", "("},
    {1017, ")", " ) ", ")", ")", ")"},
    {kEndButtonId, "End", "", "", "", ""},
    {kClearButtonId, "Clear", "", "", "", ""},
};

// Null for an id that is no expression button.
const ExpressionButton* FindExpressionButton(int controlId);

// A column an expression may name: its name and its column number.
struct ExpressionColumn {
  std::string name;
  int column = 0;
};

// Every column of `table` whose comparison type is numeric (4, 1, 2 or 5),
// data and custom alike, in table order.
std::vector<ExpressionColumn> NumericColumns(const std::vector<sTarnColInfo>& table);

// Index in `columns` of the first entry whose name equals `name` ignoring
// ASCII case; -1 when none does.
int FindColumnExact(const std::vector<ExpressionColumn>& columns, std::string_view name);

struct ConvertedExpression {
  std::string engine;
  std::string stored;
};

// Converts a display expression. It is read with one blank in front and
// split at runs of double quotes into pieces that alternate: expression
// text (copied to both forms), column name (looked up with FindColumnExact;
// its number goes to the engine form as digits and to the stored form in
// quotes). Returns false, with `out` holding what was converted before,
// when a name is not in `columns` - also what an unbalanced quote usually
// leads to. The result is not checked by the engine here.
[[nodiscard]] bool ConvertDisplayExpression(std::string_view display,
                                            const std::vector<ExpressionColumn>& columns,
                                            ConvertedExpression& out);

// ConvertDisplayExpression, then EvaluateExpression of the engine form;
// false when either fails (any engine code but 0).
[[nodiscard]] bool CheckDisplayExpression(std::string_view display,
                                          const std::vector<ExpressionColumn>& columns,
                                          ConvertedExpression& out);

} // namespace vh
