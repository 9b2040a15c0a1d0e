// Insertion and deletion keep every display map entry pointing at the same
// row while store slots shift; any inconsistency found on the way empties
// the rows rather than leave the map pointing at the wrong or a freed row.
#include "grid/row_engine.h"

#include "common/message.h"
#include "grid/key_cache.h"

#include <algorithm>

namespace vh {

int RowEngine::InsertItem(int position, std::string_view text) {
  if (!HasDataSource())
    return 0;
  ++displayedCount_;
  const int size = int(items_.size());
  int dataIndex = size;
  size_t slot = map_.size();
  if (position <= 0 || position >= size) {
    // Position 0 appends: the owner shows newest first through the reverse
    // flag instead of shifting every index on each new row.
    items_.push_back(0);
    checks_.push_back(0);
    map_.push_back(dataIndex);
  } else {
    for (int32_t& entry : map_) {
      if (entry < 0) {
        ShowMessage("Insert Item: Reindexing Error");
        ResetRows();
        return 0;
      }
      if (entry >= position)
        ++entry;
    }
    dataIndex = position;
    items_.insert(items_.begin() + position, 0);
    checks_.insert(checks_.begin() + position, 0);
    slot = std::min(size_t(position), map_.size());
    map_.insert(map_.begin() + ptrdiff_t(slot), position);
  }
  keyCache_->SlotInserted(uint32_t(dataIndex));
  if (observer_)
    observer_->OnRowInsertedAt(position, text,
                               reverse_ ? displayedCount_ - 1 - int(slot) : int(slot));
  return reverse_ ? displayedCount_ - 1 - dataIndex : dataIndex;
}

void RowEngine::RemoveSlot(int dataIndex) {
  items_.erase(items_.begin() + dataIndex);
  checks_.erase(checks_.begin() + dataIndex);
  keyCache_->SlotErased(uint32_t(dataIndex));
}

// Lowers every map entry above `dataIndex`. With `stopOnEqual` an entry
// equal to it, or a hole, is a fault: the row would be shown twice or lost.
bool RowEngine::ShiftDownAbove(int dataIndex, bool stopOnEqual) {
  for (int32_t& entry : map_) {
    if (stopOnEqual && (entry == dataIndex || entry < 0))
      return false;
    if (entry > dataIndex)
      --entry;
  }
  return true;
}

int RowEngine::DeleteItem(int position) {
  if (position < 0 || position >= displayedCount_)
    return 0;
  const int slot = Mirror(position);
  const int dataIndex = slot >= 0 && size_t(slot) < map_.size() ? map_[size_t(slot)] : -1;
  if (dataIndex < 0 || size_t(dataIndex) >= items_.size()) {
    ShowMessage("Delete item: Item not found");
    return 0;
  }
  map_.erase(map_.begin() + slot);
  if (size_t(dataIndex) + 1 != items_.size() && !ShiftDownAbove(dataIndex, true)) {
    ShowMessage("Delete item: Reindexing Error");
    ResetRows();
    return 0;
  }
  RemoveSlot(dataIndex);
  // Kept: after a delete the next click on any column sorts ascending.
  previousSortColumn_ = -1;
  --displayedCount_;
  if (observer_)
    observer_->OnRowDeleted(position);
  return 1;
}

int RowEngine::DeleteItemByDataIndex(int dataIndex) {
  if (dataIndex < 0 || size_t(dataIndex) >= items_.size())
    return 0;
  for (size_t slot = 0; slot < map_.size(); ++slot) {
    if (map_[slot] != dataIndex)
      continue;
    if (slot >= size_t(displayedCount_)) {
      ShowMessage("Error occured while deleting map item");
      return 0;
    }
    return DeleteItem(Mirror(int(slot)));
  }
  if (size_t(dataIndex) + 1 != items_.size())
    ShiftDownAbove(dataIndex, false);
  RemoveSlot(dataIndex);
  return 1;
}

} // namespace vh
