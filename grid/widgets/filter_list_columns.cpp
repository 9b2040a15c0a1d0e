#include "grid/widgets/filter_list_columns.h"

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "widgets/filter_header.h"

#include <algorithm>

namespace vh {

void FilterListColumns::Sync() {
  RowEngine& engine = grid_.Engine();
  const CFilterHeader* header = grid_.FilterHeader();
  table_.clear();
  positions_.clear();
  for (int c = 0; c < engine.ColumnCount(); ++c) {
    table_.push_back(*engine.ColumnInfo(c));
    const int item = engine.ColumnPosition(c);
    positions_.push_back(item >= 0 ? int32_t(header->visualIndex(item)) : -1);
  }
  items_.clear();
  for (int v = 0; v < header->count(); ++v) {
    const int item = header->logicalIndex(v);
    const sTarnColInfo* info = engine.ColumnInfo(engine.DataColumnAt(item));
    items_.push_back({info ? std::string(info->Name()) : std::string(), -1,
                      grid_.Model().HeaderToolTip(item).toStdString(), true});
  }
  rearranged_ = false;
}

int FilterListColumns::DataColumnCount() const {
  return const_cast<CFilterListCtrl&>(grid_).Engine().DataColumnCount();
}

int FilterListColumns::LogicalOf(int position) const {
  return rearranged_ ? -1 : grid_.FilterHeader()->logicalIndex(position);
}

void FilterListColumns::InsertHeaderColumn(int position, const std::string& heading, int /*format*/,
                                           int width) {
  if (position < 0 || size_t(position) > items_.size())
    return;
  items_.insert(items_.begin() + position, Item{heading, width, {}, false});
  rearranged_ = true;
}

void FilterListColumns::DeleteHeaderColumn(int position) {
  if (position < 0 || size_t(position) >= items_.size())
    return;
  items_.erase(items_.begin() + position);
  rearranged_ = true;
}

// Before ColumnsChanged these wait in the item list; after it (the profile
// dialog widens newly shown columns then) they reach the screen at once.
void FilterListColumns::SetHeaderWidth(int position, int width) {
  if (position < 0 || size_t(position) >= items_.size())
    return;
  items_[size_t(position)].width = width;
  if (const int item = LogicalOf(position); item >= 0 && width > 0)
    grid_.FilterHeader()->resizeSection(item, width);
}

void FilterListColumns::SetHeaderToolTip(int position, const std::string& text) {
  if (position < 0 || size_t(position) >= items_.size())
    return;
  items_[size_t(position)].tip = text;
  items_[size_t(position)].tipSet = true;
  if (const int item = LogicalOf(position); item >= 0)
    grid_.Model().SetHeaderToolTip(item, QString::fromStdString(text));
}

void FilterListColumns::SetDefaultSort(int column, bool descending) {
  grid_.SetDefaultSort(column, descending);
  grid_.ApplyDefaultSort();
}

void FilterListColumns::SetProfileName(const std::string& name) {
  grid_.SetProfileName(name);
}

std::string FilterListColumns::ProfileName() const {
  return grid_.ProfileName();
}

void FilterListColumns::SaveColumnProfile() {
  (void)grid_.SaveColumnProfile();
}

// The item the header call left at `position` for column `name`, else the
// first item of that name anywhere (the profile dialog reorders), else null.
const FilterListColumns::Item* FilterListColumns::ItemFor(int position,
                                                          const std::string& name) const {
  if (position >= 0 && size_t(position) < items_.size() && items_[size_t(position)].name == name)
    return &items_[size_t(position)];
  for (const Item& item : items_)
    if (item.name == name)
      return &item;
  return nullptr;
}

// The engine's number, before the change, of new column `column`; -1 for a
// new one.
int FilterListColumns::OldColumnOf(int column, const std::vector<std::string>& oldNames) const {
  const int data = DataColumnCount();
  if (column < data)
    return column < int(oldNames.size()) ? column : -1;
  const std::string_view name = table_[size_t(column)].Name();
  for (size_t c = size_t(data); c < oldNames.size(); ++c)
    if (oldNames[c] == name)
      return int(c);
  return -1;
}

void FilterListColumns::ColumnsChanged() {
  RowEngine& engine = grid_.Engine();
  CFilterHeader* header = grid_.FilterHeader();
  std::vector<std::string> oldNames;
  std::vector<int> oldWidths;
  for (int c = 0; c < engine.ColumnCount(); ++c) {
    oldNames.emplace_back(engine.ColumnInfo(c)->Name());
    const int item = engine.ColumnPosition(c);
    oldWidths.push_back(item >= 0 ? header->sectionSize(item) : -1);
  }
  const int oldSort = engine.DataColumnAt(engine.SortColumn());
  const int sortImage = header->SectionImage(engine.SortColumn());

  positions_.resize(table_.size(), -1);
  engine.SetColumns(table_, engine.DataColumnCount(), positions_);
  grid_.ColumnsReset();
  for (int item = 0; item < engine.HeaderItemCount(); ++item) {
    const int column = engine.DataColumnAt(item);
    const sTarnColInfo* info = engine.ColumnInfo(column);
    if (!info)
      continue;
    const Item* was = ItemFor(item, std::string(info->Name()));
    const int old = OldColumnOf(column, oldNames);
    int width = was && was->width > 0 ? was->width : old >= 0 ? oldWidths[size_t(old)] : -1;
    if (width <= 0)
      width = info->nWidth;
    if (width > 0)
      header->resizeSection(item, width);
    if (was && was->tipSet)
      grid_.Model().SetHeaderToolTip(item, QString::fromStdString(was->tip));
  }
  CarryFiltersAndSort(oldNames, oldSort, sortImage);
  Sync();
  grid_.viewport()->update();
}

void FilterListColumns::CarryFiltersAndSort(const std::vector<std::string>& oldNames,
                                            int oldSortColumn, int sortImage) {
  RowEngine& engine = grid_.Engine();
  CFilterHeader* header = grid_.FilterHeader();
  std::vector<int> newOfOld(oldNames.size(), -1);
  for (int c = 0; c < engine.ColumnCount(); ++c)
    if (const int old = OldColumnOf(c, oldNames); old >= 0)
      newOfOld[size_t(old)] = c;

  std::vector<int32_t> columns;
  std::vector<std::string> texts;
  const auto& oldColumns = engine.FilterColumns();
  const auto& oldTexts = engine.FilterTexts();
  for (size_t i = 0; i < oldColumns.size() && i < oldTexts.size(); ++i) {
    const int32_t old = oldColumns[i];
    if (old >= 0 && size_t(old) < newOfOld.size() && newOfOld[size_t(old)] >= 0) {
      columns.push_back(newOfOld[size_t(old)]);
      texts.push_back(oldTexts[i]);
    }
  }
  const bool dropped = columns.size() != oldColumns.size();
  engine.RestoreFilters(columns, texts);
  header->ClearFilterTexts();
  for (size_t i = 0; i < columns.size(); ++i)
    header->SetFilterText(engine.ColumnPosition(columns[i]), QString::fromStdString(texts[i]));
  if (dropped)
    engine.Filter();

  const int sorted = oldSortColumn >= 0 && size_t(oldSortColumn) < newOfOld.size()
                         ? engine.ColumnPosition(newOfOld[size_t(oldSortColumn)])
                         : -1;
  engine.SetSortState(sorted);
  for (int s = 0; s < header->count(); ++s)
    header->SetSectionImage(s, -1);
  if (sorted >= 0)
    header->SetSectionImage(sorted, sortImage);
}

} // namespace vh
