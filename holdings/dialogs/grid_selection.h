// The first selected row of a filtering grid, as the dialogs ask for it.
#pragma once

#include <cstdint>

namespace vh {

class CFilterListCtrl;

// Display position of the first selected row (the lowest), -1 when none or
// for a null grid.
int FirstSelectedPosition(const CFilterListCtrl* grid);
// Item data of that row; 0 when no row is selected.
uint64_t FirstSelectedItemData(CFilterListCtrl* grid);

} // namespace vh
