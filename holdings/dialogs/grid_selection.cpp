#include "holdings/dialogs/grid_selection.h"

#include <QItemSelectionModel>

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"

namespace vh {

int FirstSelectedPosition(const CFilterListCtrl* grid) {
  if (!grid || !grid->selectionModel())
    return -1;
  int first = -1;
  for (const QModelIndex& index : grid->selectionModel()->selectedRows())
    if (first < 0 || index.row() < first)
      first = index.row();
  return first < 0 ? -1 : const_cast<CFilterListCtrl*>(grid)->Model().EngineRow(first);
}

uint64_t FirstSelectedItemData(CFilterListCtrl* grid) {
  const int position = FirstSelectedPosition(grid);
  return position < 0 ? 0 : grid->Engine().GetItemData(position);
}

} // namespace vh
