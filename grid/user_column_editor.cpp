#include "grid/user_column_editor.h"

#include "common/message.h"

#include <algorithm>
#include <cstdio>

namespace vh {

namespace {

struct ModeText {
  const char* caption;
  const char* confirm;
};

constexpr ModeText kModeTexts[] = {
    {"%s: Add Custom Columns", "Add"},
    {"%s: Edit Custom Columns", "Save"},
    {"%s: Delete Custom Columns", "Delete"},
};

const ModeText& TextsOf(int mode) {
  return kModeTexts[(mode >= 0 && mode <= kUserColumnDelete) ? mode : kUserColumnEdit];
}

std::string Quoted(std::string_view text) {
  return "\"" + std::string(text) + "\"";
}

sTarnColInfo CustomColumnInfo(std::string_view name, const ConvertedExpression& expr,
                              std::string_view display) {
  sTarnColInfo info;
  info.SetName(name);
  info.nWidth = kCustomColumnWidth;
  info.nFormat = kCustomColumnFormat;
  info.nType = kCustomColumnType;
  info.strExpression = expr.stored;
  info.strDisplayExpression = std::string(display);
  return info;
}

} // namespace

std::string TrimBlanks(std::string_view text) {
  const char* blanks = " \t\r\n\v\f";
  const size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos)
    return {};
  const size_t last = text.find_last_not_of(blanks);
  return std::string(text.substr(first, last - first + 1));
}

bool UserColumnEditor::Open(CustomColumnGrid& grid, int mode) {
  grid_ = nullptr;
  custom_.clear();
  list_.clear();
  const std::vector<sTarnColInfo>& table = grid.ColumnTable();
  if (grid.DataColumnCount() > int(table.size())) {
    ShowMessage(kMsgAddingFailed);
    return false;
  }
  grid_ = &grid;
  coded_ = " ";
  display_.clear();
  mode_ = mode;
  grid.SetProfileName(std::string(kEditorProfileName));
  for (size_t i = size_t(std::max(grid.DataColumnCount(), 0)); i < table.size(); ++i)
    custom_.push_back({std::string(table[i].Name()), int(i)});
  list_ = NumericColumns(table);
  return true;
}

std::string UserColumnEditor::Caption() const {
  const std::string profile = grid_ ? grid_->ProfileName() : std::string(kEditorProfileName);
  std::string caption = TextsOf(mode_).caption;
  caption.replace(caption.find("%s"), 2, profile);
  return caption;
}

std::string_view UserColumnEditor::ConfirmLabel() const {
  return TextsOf(mode_).confirm;
}

std::string UserColumnEditor::ExpressionOfCustom(int comboIndex) const {
  if (!grid_ || comboIndex < 0 || size_t(comboIndex) >= custom_.size())
    return {};
  for (const sTarnColInfo& info : grid_->ColumnTable()) {
    if (info.Name() == custom_[size_t(comboIndex)].name)
      return info.strDisplayExpression;
  }
  return {};
}

EditorOutcome UserColumnEditor::PressButton(int controlId, std::string_view editText, int listIndex,
                                            bool ctrl) {
  const ExpressionButton* button = FindExpressionButton(controlId);
  if (!grid_ || !button)
    return kEditorStay;
  if (controlId == kClearButtonId) {
    display_.clear();
    coded_.clear();
    return kEditorShowText;
  }
  const bool isEnd = controlId == kEndButtonId;
  const bool selected = listIndex >= 0 && size_t(listIndex) < list_.size();
  if (ctrl && !isEnd) {
    display_ = std::string(editText) + button->ctrlDisplay;
    coded_ += button->ctrlCoded;
    return kEditorShowText;
  }
  // "End" takes the typed text before it checks the selection; the others
  // leave the session's text alone when nothing is selected.
  if (isEnd)
    display_ = std::string(editText);
  if (!selected) {
    ShowMessage(isEnd ? kMsgNoColumnSelected : kMsgSelectColumnName);
    return isEnd ? kEditorStay : kEditorReactivate;
  }
  const ExpressionColumn& column = list_[size_t(listIndex)];
  display_ = std::string(editText) + Quoted(column.name) + button->display;
  coded_ += Quoted(std::to_string(column.column)) + button->coded;
  return kEditorShowText;
}

EditorOutcome UserColumnEditor::Confirm(std::string_view nameText, std::string_view editText,
                                        int comboIndex) {
  if (!grid_)
    return kEditorStay;
  coded_.clear();
  switch (mode_) {
  case kUserColumnAdd:
    display_ = std::string(editText);
    return ConfirmAdd(nameText);
  case kUserColumnEdit:
    return ConfirmEdit(comboIndex);
  case kUserColumnDelete:
    return ConfirmDelete(comboIndex);
  default:
    return kEditorStay;
  }
}

EditorOutcome UserColumnEditor::ConfirmAdd(std::string_view nameText) {
  const std::string name = TrimBlanks(nameText);
  std::string_view refusal;
  ConvertedExpression expr;
  if (name.empty())
    refusal = kMsgEnterColumnName;
  else if (name.find_first_of("#,") != std::string::npos)
    refusal = kMsgSeparatorInName;
  else if (name.size() > kMaxCustomColumnName)
    refusal = kMsgNameTooLong;
  else if (display_.empty())
    refusal = kMsgExpressionEmpty;
  else if (!CheckDisplayExpression(display_, list_, expr))
    refusal = kMsgInvalidExpression;
  if (refusal.empty()) {
    for (const sTarnColInfo& info : grid_->ColumnTable()) {
      if (info.Name() == name) {
        refusal = kMsgNameTaken;
        break;
      }
    }
  }
  if (!refusal.empty()) {
    ShowMessage(refusal);
    return kEditorStay;
  }
  const int position = grid_->HeaderItemCount();
  std::vector<int32_t>& positions = grid_->ColumnPositions();
  positions.resize(grid_->ColumnTable().size(), -1); // the new entry must pair with the new record
  grid_->ColumnTable().push_back(CustomColumnInfo(name, expr, display_));
  positions.push_back(position);
  grid_->InsertHeaderColumn(position, name, kCustomColumnFormat, kCustomColumnWidth);
  grid_->SetHeaderToolTip(position, display_);
  return Finish();
}

EditorOutcome UserColumnEditor::ConfirmEdit(int comboIndex) {
  if (comboIndex < 0 || size_t(comboIndex) >= custom_.size()) {
    ShowMessage(kMsgNoneToEdit);
    return kEditorStay;
  }
  const std::string& name = custom_[size_t(comboIndex)].name;
  ConvertedExpression expr;
  if (!CheckDisplayExpression(display_, list_, expr)) {
    ShowMessage(kMsgInvalidExpression);
    return kEditorStay;
  }
  // An unfound name replaces nothing; the dialog still closes and saves.
  for (sTarnColInfo& info : grid_->ColumnTable()) {
    if (info.Name() == name) {
      info = CustomColumnInfo(name, expr, display_);
      break;
    }
  }
  return Finish();
}

// Dependants are the custom columns whose display expression names the
// deleted one in quotes; their numbers are taken once, before any removal,
// so with two or more of them the later removals fall on whatever has moved
// into those places. Kept as users have always seen it.
EditorOutcome UserColumnEditor::ConfirmDelete(int comboIndex) {
  if (comboIndex < 0 || size_t(comboIndex) >= custom_.size()) {
    ShowMessage(kMsgNoneToDelete);
    return kEditorStay;
  }
  const int deleted = custom_[size_t(comboIndex)].column;
  std::vector<sTarnColInfo>& table = grid_->ColumnTable();
  if (deleted < 0 || size_t(deleted) >= table.size())
    return Finish();
  const std::string quoted = Quoted(table[size_t(deleted)].Name());
  std::vector<int> dependants;
  for (size_t j = size_t(std::max(grid_->DataColumnCount(), 0)); j < table.size(); ++j) {
    if (table[j].strDisplayExpression.find(quoted) != std::string::npos)
      dependants.push_back(int(j));
  }
  for (const int j : dependants)
    RemoveColumn(j);
  RemoveColumn(deleted);
  ResetToolTips();
  return Finish();
}

// Removes record `column` and its map entry; a shown column also loses its
// header item, and the positions after it close up. Numbers past the end
// (possible after earlier removals) remove nothing.
void UserColumnEditor::RemoveColumn(int column) {
  std::vector<sTarnColInfo>& table = grid_->ColumnTable();
  std::vector<int32_t>& positions = grid_->ColumnPositions();
  if (column < 0 || size_t(column) >= table.size())
    return;
  table.erase(table.begin() + column);
  if (size_t(column) >= positions.size())
    return;
  const int32_t position = positions[size_t(column)];
  if (position != -1) {
    grid_->DeleteHeaderColumn(position);
    for (int32_t& p : positions) {
      if (p > position)
        --p;
    }
  }
  positions.erase(positions.begin() + column);
}

void UserColumnEditor::ResetToolTips() {
  const std::vector<sTarnColInfo>& table = grid_->ColumnTable();
  const std::vector<int32_t>& positions = grid_->ColumnPositions();
  const size_t n = std::min(table.size(), positions.size());
  for (size_t i = 0; i < n; ++i) {
    if (positions[i] == -1)
      continue;
    const bool data = int(i) < grid_->DataColumnCount();
    grid_->SetHeaderToolTip(positions[i],
                            data ? std::string(table[i].Name()) : table[i].strDisplayExpression);
  }
}

EditorOutcome UserColumnEditor::Finish() {
  grid_->ColumnsChanged();
  grid_->SaveColumnProfile();
  return kEditorClose;
}

} // namespace vh
