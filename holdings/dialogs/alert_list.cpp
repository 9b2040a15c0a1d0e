#include "holdings/dialogs/alert_list.h"

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"

namespace vh {
namespace {

// Hit fields by the list's column: name, client id, ISIN, value, stamp.
constexpr int kFieldOfColumn[] = {1, 4, 2, 3, 5};

} // namespace

CAlertList::CAlertList(CFilterListCtrl* grid) : grid_(grid) {
  grid_->Engine().SetOwnerDataSource(&CAlertList::Cell, this);
}

int CAlertList::Cell(void* owner, uint64_t itemData, int column, std::string& text, CellStyle&) {
  const AlertHits& hits = static_cast<CAlertList*>(owner)->hits_;
  if (itemData == 0 || itemData > hits.Size() || column < 0 || column >= 5)
    return 0;
  text = hits.Field(itemData - 1, kFieldOfColumn[column]);
  return 1;
}

void CAlertList::Empty() {
  grid_->DeleteAllItems();
  grid_->Model().Flush();
}

int CAlertList::CountPerPage() {
  return grid_->GetCountPerPage();
}

void CAlertList::ShowRows(size_t rows) {
  RowEngine& engine = grid_->Engine();
  engine.Reserve(rows);
  for (size_t i = 0; i < rows; ++i)
    engine.SetItemData(engine.InsertItem(int(i), {}), i + 1);
  // Rows are announced together, so the view lays out once.
  grid_->Model().Flush();
}

void CAlertList::Redraw() {
  ++repaints_;
  grid_->viewport()->update();
}

} // namespace vh
