#include "grid/row_engine.h"

#include "common/message.h"
#include "grid/key_cache.h"

#include <algorithm>

namespace vh {

RowEngine::RowEngine() : keyCache_(std::make_unique<KeyCache>()) {
#ifdef VH_KEY_CACHE_CHECK
  checkKeys_ = true;
#endif
}
RowEngine::~RowEngine() = default;

void RowEngine::SetOwnerDataSource(OwnerDataSource source, void* owner) {
  ownerSource_ = source;
  owner_ = owner;
  AllRowsChanged();
}

void RowEngine::SetPlainDataSource(PlainDataSource source) {
  plainSource_ = source;
  AllRowsChanged();
}

void RowEngine::SetViewDataSource(ViewDataSource source, void* owner) {
  viewSource_ = source;
  viewOwner_ = owner;
  AllRowsChanged();
}

// --- columns ---------------------------------------------------------------

void RowEngine::SetColumns(std::vector<sTarnColInfo> columns, int dataColumnCount,
                           std::vector<int32_t> positions) {
  columns_ = std::move(columns);
  dataColumnCount_ = std::clamp(dataColumnCount, 0, int(columns_.size()));
  if (positions.empty()) {
    positions.resize(columns_.size());
    for (size_t i = 0; i < positions.size(); ++i)
      positions[i] = int32_t(i);
  }
  positions.resize(columns_.size(), -1);
  positions_ = std::move(positions);
  AllRowsChanged();
  RebuildColumnAt();
  formulas_.clear();
  formulas_.resize(columns_.size() - size_t(dataColumnCount_));
  for (int c = dataColumnCount_; c < ColumnCount(); ++c)
    CompileFormula(c);
}

// A position taken twice, or one past the last column, cannot be shown: that
// column counts as hidden, so lookups never index outside the header and a
// bad profile cannot make the header huge. Gaps are header items without a
// column.
void RowEngine::RebuildColumnAt() {
  columnAt_.assign(positions_.size(), -1);
  for (size_t c = 0; c < positions_.size(); ++c) {
    const int32_t p = positions_[c];
    if (p < 0)
      continue;
    if (size_t(p) >= positions_.size() || columnAt_[size_t(p)] != -1) {
      positions_[c] = -1;
      continue;
    }
    columnAt_[size_t(p)] = int32_t(c);
  }
  while (!columnAt_.empty() && columnAt_.back() == -1)
    columnAt_.pop_back();
}

bool RowEngine::SetColumnInfo(int column, const sTarnColInfo& info) {
  if (column < 0 || column >= ColumnCount())
    return false;
  columns_[size_t(column)] = info;
  CompileFormula(column);
  ForgetKeys(column);
  return true;
}

void RowEngine::SetCustomColumnCompiler(CustomColumnCompiler compiler) {
  compiler_ = std::move(compiler);
  for (int c = dataColumnCount_; c < ColumnCount(); ++c)
    CompileFormula(c);
  AllRowsChanged();
}

void RowEngine::CompileFormula(int column) {
  if (column < dataColumnCount_)
    return;
  auto& slot = formulas_[size_t(column - dataColumnCount_)];
  slot = compiler_ ? compiler_(columns_[size_t(column)].strExpression) : nullptr;
}

const sTarnColInfo* RowEngine::ColumnInfo(int column) const {
  return column >= 0 && column < ColumnCount() ? &columns_[size_t(column)] : nullptr;
}

int RowEngine::ColumnPosition(int column) const {
  return column >= 0 && column < ColumnCount() ? positions_[size_t(column)] : -1;
}

int RowEngine::DataColumnAt(int displayColumn) const {
  return displayColumn >= 0 && displayColumn < HeaderItemCount() ? columnAt_[size_t(displayColumn)]
                                                                 : -1;
}

// --- cell texts --------------------------------------------------------------

bool RowEngine::FetchCell(uint64_t itemData, int column, std::string& text, CellStyle& style) {
  if (column >= dataColumnCount_) {
    const size_t custom = size_t(column - dataColumnCount_);
    // Every nested level is another custom column unless the definitions
    // form a cycle, so a depth past their number means one. Every level of
    // the cycle then reads a failed fetch and leaves its text alone; the
    // outermost request still succeeds, with its text unchanged.
    if (customDepth_ > int(formulas_.size())) {
      cycleStopped_ = true;
      return false;
    }
    if (custom < formulas_.size() && formulas_[custom]) {
      ++customDepth_;
      formulas_[custom]->Calculate(itemData, *this, dataColumnCount_, text);
      --customDepth_;
    }
    if (cycleStopped_) {
      if (customDepth_ > 0)
        return false;
      cycleStopped_ = false;
    }
    return true;
  }
  if (ownerSource_)
    return ownerSource_(owner_, itemData, column, text, style) != 0;
  return plainSource_(itemData, column, text, style) != 0;
}

// A cell's text for a whole-column pass: the caller's scratch text starts
// empty for every cell, as a fresh text would.
std::string_view RowEngine::PassText(uint64_t itemData, int column, std::string& scratch) {
  if (viewSource_ && HasDataSource() && column >= 0 && column < dataColumnCount_) {
    std::string_view text;
    viewSource_(viewOwner_, itemData, column, text);
    return text;
  }
  scratch.clear();
  CellStyle style;
  GetCellText(itemData, column, scratch, style);
  return scratch;
}

bool RowEngine::GetCellText(uint64_t itemData, int column, std::string& text, CellStyle& style) {
  if (!HasDataSource())
    return false;
  return FetchCell(itemData, column, text, style);
}

std::string RowEngine::GetItemText(int position, int displayColumn) {
  const int slot = MapSlotOf(position);
  if (slot < 0 || map_[size_t(slot)] < 0)
    return {};
  if (!HasDataSource())
    return "no data descriptor initialised";
  const int column = DataColumnAt(displayColumn);
  const uint64_t item = ItemDataOfIndex(map_[size_t(slot)]);
  std::string text;
  CellStyle style;
  if (column >= 0 && item != 0)
    GetCellText(item, column, text, style);
  return text;
}

// --- rows ----------------------------------------------------------------------

int RowEngine::MapSlotOf(int position) const {
  if (position < 0 || position >= displayedCount_)
    return -1;
  const int slot = Mirror(position);
  return slot >= 0 && size_t(slot) < map_.size() ? slot : -1;
}

int RowEngine::DataIndexAt(int position) const {
  const int slot = MapSlotOf(position);
  if (slot < 0)
    return -1;
  const int32_t d = map_[size_t(slot)];
  return d >= 0 && size_t(d) < items_.size() ? d : -1;
}

uint64_t RowEngine::ItemDataOfIndex(int dataIndex) const {
  return dataIndex >= 0 && size_t(dataIndex) < items_.size() ? items_[size_t(dataIndex)] : 0;
}

bool RowEngine::SetItemData(int position, uint64_t itemData) {
  const int d = DataIndexAt(position);
  if (d < 0)
    return false;
  items_[size_t(d)] = itemData;
  RowChanged(d);
  return true;
}

uint64_t RowEngine::GetItemData(int position) const {
  return ItemDataOfIndex(DataIndexAt(position));
}

int RowEngine::GetCheck(int position) const {
  const int d = DataIndexAt(position);
  return d < 0 ? 0 : checks_[size_t(d)];
}

bool RowEngine::SetCheck(int position, int state) {
  const int d = DataIndexAt(position);
  if (d < 0)
    return false;
  checks_[size_t(d)] = state;
  return true;
}

void RowEngine::Reserve(size_t rows) {
  items_.reserve(rows);
  checks_.reserve(rows);
  map_.reserve(rows);
}

size_t RowEngine::ResidentBytes() const {
  return items_.capacity() * sizeof(uint64_t) + checks_.capacity() * sizeof(int32_t) +
         map_.capacity() * sizeof(int32_t);
}

void RowEngine::DeleteAllItems() {
  items_.clear();
  checks_.clear();
  map_.clear();
  displayedCount_ = 0;
  keyCache_->DropAll();
}

void RowEngine::ResetRows() {
  DeleteAllItems();
  if (observer_)
    observer_->OnRowsReset();
}

} // namespace vh
