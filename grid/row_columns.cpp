// Column edits the grid widgets make after set-up: one column added at the
// end, one header column removed. Both keep every other compiled formula,
// because recompiling a million-row grid's formulas on each edit is what
// the user would feel.
#include "grid/row_engine.h"

#include <algorithm>

namespace vh {

void RowEngine::SetSortState(int displayColumn) {
  sortColumn_ = displayColumn;
  previousSortColumn_ = displayColumn;
}

int RowEngine::AppendColumn(const sTarnColInfo& info) {
  const int column = ColumnCount();
  columns_.push_back(info);
  positions_.push_back(int32_t(HeaderItemCount()));
  columnAt_.push_back(int32_t(column));
  if (column >= dataColumnCount_) {
    formulas_.emplace_back();
    CompileFormula(column);
  }
  // A number once used by a removed custom column may still have keys.
  ColumnChanged(column);
  return column;
}

bool RowEngine::DeleteHeaderColumn(int headerItem) {
  const int column = DataColumnAt(headerItem);
  if (column < 0)
    return false;
  // The owner numbers its own columns, so a data column stays in the table
  // and only leaves the header; a custom column goes altogether.
  const bool custom = column >= dataColumnCount_;
  positions_[size_t(column)] = -1;
  for (int32_t& p : positions_)
    if (p > headerItem)
      --p;
  if (custom) {
    columns_.erase(columns_.begin() + column);
    positions_.erase(positions_.begin() + column);
    formulas_.erase(formulas_.begin() + (column - dataColumnCount_));
  }
  RebuildColumnAt();
  // Removing a custom column renumbers every later one, so no cached column
  // can be trusted under its old number.
  if (custom)
    AllRowsChanged();

  // Filters follow their column; the deleted column's filter goes with it.
  for (size_t i = 0; i < filterColumns_.size();) {
    if (filterColumns_[i] == column) {
      filterColumns_.erase(filterColumns_.begin() + ptrdiff_t(i));
      if (i < filterTexts_.size())
        filterTexts_.erase(filterTexts_.begin() + ptrdiff_t(i));
      continue;
    }
    if (custom && filterColumns_[i] > column)
      --filterColumns_[i];
    ++i;
  }
  if (sortDataColumn_ == column)
    sortDataColumn_ = -1;
  else if (custom && sortDataColumn_ > column)
    --sortDataColumn_;
  if (sortColumn_ == headerItem)
    sortColumn_ = -1;
  else if (sortColumn_ > headerItem)
    --sortColumn_;
  previousSortColumn_ = sortColumn_;
  return true;
}

} // namespace vh
