// The custom-column editor without its widgets: one editing session over a
// grid (CustomColumnGrid), driven by what the user clicks and types. The
// dialog shows the lists and texts this object holds and forwards every
// click; all checks, messages (through vh::ShowMessage) and changes to the
// grid happen here. Qt-free; single-threaded.
#pragma once

#include "grid/custom_column_grid.h"
#include "grid/user_column_expression.h"

#include <string>
#include <string_view>
#include <vector>

namespace vh {

enum UserColumnMode : int {
  kUserColumnAdd = 0,
  kUserColumnEdit = 1,
  kUserColumnDelete = 2,
};

inline constexpr std::string_view kEditorProfileName = "rmsholdview";
// A custom column's look as the editor writes it.
inline constexpr int kCustomColumnWidth = 100;
inline constexpr int kCustomColumnFormat = kFormatRight;
inline constexpr int kCustomColumnType = kCompareDecimal;
// The name field holds 63 characters and its terminating zero.
inline constexpr size_t kMaxCustomColumnName = sizeof(sTarnColInfo::szName) - 1;

inline constexpr std::string_view kMsgSelectColumnName = "Please select a Column Name";
inline constexpr std::string_view kMsgNoColumnSelected = "No column is selected";
inline constexpr std::string_view kMsgEnterColumnName = "Please Enter the column Name";
inline constexpr std::string_view kMsgSeparatorInName =
    "\"#,\" are not allowed as a custom column name , please choose a different name";
inline constexpr std::string_view kMsgNameTooLong =
    "The column name is too long, please use at most 63 characters";
inline constexpr std::string_view kMsgExpressionEmpty =
    "Column Expression is empty, please enter an expression to add a column";
inline constexpr std::string_view kMsgInvalidExpression =
    "Invalid Expression, Please check the expression again";
inline constexpr std::string_view kMsgNameTaken =
    "This column name already present,Please choose different column Name";
inline constexpr std::string_view kMsgNoneToEdit = "No user defined column selected to edit";
inline constexpr std::string_view kMsgNoneToDelete = "No user defined column selected to delete";
inline constexpr std::string_view kMsgAddingFailed = "Error while adding user defined cols";

// What a click asks of the dialog.
enum EditorOutcome : int {
  kEditorStay = 0,       // keep the dialog open (also after a message)
  kEditorShowText = 1,   // show DisplayExpression() in the expression edit
  kEditorReactivate = 2, // a message owned by the dialog was shown: activate it again
  kEditorClose = 3,      // the change is made and saved: close as by OK
};

class UserColumnEditor {
public:
  // Starts a session: empties every text, stores the mode, sets the grid's
  // profile name and fills the two lists from its column table. Returns
  // false (after "Error while adding user defined cols") when the grid
  // counts more data columns than its table holds; the session then has no
  // grid and every later click is ignored.
  [[nodiscard]] bool Open(CustomColumnGrid& grid, int mode);

  int Mode() const { return mode_; }
  // "<profile name>: Add Custom Columns" and the like.
  std::string Caption() const;
  // "Add", "Save" or "Delete".
  std::string_view ConfirmLabel() const;
  // The custom columns for the name combo, in table order.
  const std::vector<ExpressionColumn>& CustomColumns() const { return custom_; }
  // The numeric columns for the column list, in table order.
  const std::vector<ExpressionColumn>& ListColumns() const { return list_; }
  const std::string& DisplayExpression() const { return display_; }
  const std::string& CodedExpression() const { return coded_; }

  // The display expression of the custom column at `comboIndex`, for the
  // expression edit only (the session's own text is not changed); empty for
  // an index out of range or an unknown name.
  std::string ExpressionOfCustom(int comboIndex) const;

  // A click on expression button `controlId`. `editText` is what the
  // expression edit shows now, `listIndex` the selected list entry (-1 for
  // none), `ctrl` whether Ctrl was held. Returns kEditorShowText when the
  // display expression changed, otherwise what the dialog must do after
  // the message.
  EditorOutcome PressButton(int controlId, std::string_view editText, int listIndex, bool ctrl);

  // The confirm button. `nameText` is the name edit's text (Add), `editText`
  // the expression edit's text (taken only in Add mode: Edit uses the text
  // the last button press left), `comboIndex` the selected custom column
  // (Edit, Delete; -1 for none). On any failure the message is shown, the
  // grid is untouched and kEditorStay returned; on success the grid is
  // changed and its profile saved, and kEditorClose returned.
  EditorOutcome Confirm(std::string_view nameText, std::string_view editText, int comboIndex);

private:
  EditorOutcome ConfirmAdd(std::string_view nameText);
  EditorOutcome ConfirmEdit(int comboIndex);
  EditorOutcome ConfirmDelete(int comboIndex);
  void RemoveColumn(int column);
  void ResetToolTips();
  EditorOutcome Finish();

  CustomColumnGrid* grid_ = nullptr;
  int mode_ = kUserColumnEdit;
  std::string display_;
  std::string coded_;
  std::vector<ExpressionColumn> custom_;
  std::vector<ExpressionColumn> list_;
};

// Trims blanks (space, tab, line breaks) at both ends.
std::string TrimBlanks(std::string_view text);

} // namespace vh
