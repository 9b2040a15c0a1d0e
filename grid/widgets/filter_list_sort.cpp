// The filtering grid's default sort: read with the column profile at
// set-up, set by the column profile dialog's "Sort", applied when the
// owner has filled the grid anew.
#include "grid/widgets/filter_list_ctrl.h"

#include "grid/column_reposition.h"
#include "settings/default_sort.h"
#include "widgets/filter_header.h"

namespace vh {

void CFilterListCtrl::SetDefaultSort(int column, bool descending) {
  defaultSortColumn_ = engine_.ColumnInfo(column) ? column : -1;
  defaultSortDescending_ = defaultSortColumn_ >= 0 && descending;
}

// A saved text naming no column of this grid (one written by another grid
// under the same profile) leaves no default sort rather than a wrong one.
void CFilterListCtrl::ReadDefaultSort() {
  std::string text;
  DefaultSort sort;
  std::vector<sTarnColInfo> table;
  for (int c = 0; c < engine_.ColumnCount(); ++c)
    table.push_back(*engine_.ColumnInfo(c));
  if (!LoadDefaultSortText(ProfileName(), text) || !ParseDefaultSort(text, table, sort))
    sort = {};
  SetDefaultSort(sort.column, sort.descending);
}

// The engine's clicks decide the direction: a click on a column other than
// the last one sorted gives the first order, a second click the reverse.
void CFilterListCtrl::ApplyDefaultSort() {
  const int item = engine_.ColumnPosition(defaultSortColumn_);
  if (item < 0 || engine_.DisplayedCount() <= 0)
    return;
  for (int s = 0; s < header_->count(); ++s)
    header_->SetSectionImage(s, -1);
  engine_.SetSortState(-1);
  engine_.SortOnColumn(item);
  if (defaultSortDescending_)
    engine_.SortOnColumn(item);
}

} // namespace vh
