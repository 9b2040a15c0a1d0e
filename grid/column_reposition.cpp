#include "grid/column_reposition.h"

#include "common/message.h"
#include "grid/user_column_editor.h"
#include "settings/default_sort.h"

#include <algorithm>

namespace vh {

namespace {

char AsciiUpper(char c) {
  return (c >= 'a' && c <= 'z') ? char(c - 'a' + 'A') : c;
}

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return AsciiUpper(x) == AsciiUpper(y);
         });
}

int ColumnNamed(const std::vector<sTarnColInfo>& table, std::string_view name) {
  for (size_t i = 0; i < table.size(); ++i) {
    if (SameIgnoringCase(table[i].Name(), name))
      return int(i);
  }
  return -1;
}

} // namespace

bool ParseDefaultSort(std::string_view text, const std::vector<sTarnColInfo>& table,
                      DefaultSort& out) {
  out = {};
  std::string name = TrimBlanks(text);
  if (name.empty())
    return true;
  const size_t comma = name.rfind(',');
  if (comma != std::string::npos) {
    const std::string direction = TrimBlanks(std::string_view(name).substr(comma + 1));
    if (SameIgnoringCase(direction, "D") || SameIgnoringCase(direction, "A")) {
      out.descending = SameIgnoringCase(direction, "D");
      name = TrimBlanks(std::string_view(name).substr(0, comma));
    }
  }
  out.column = ColumnNamed(table, name);
  return out.column >= 0;
}

std::string FormatDefaultSort(const DefaultSort& sort, const std::vector<sTarnColInfo>& table) {
  if (sort.column < 0 || size_t(sort.column) >= table.size())
    return {};
  return std::string(table[size_t(sort.column)].Name()) + (sort.descending ? ",D" : "");
}

void ColumnReposition::Open(CustomColumnGrid& grid, bool sortMode) {
  grid_ = &grid;
  sortMode_ = sortMode;
  dealerNetPosition_ = grid.ProfileName() == kDealerNetPositionProfile;
  const std::vector<sTarnColInfo>& table = grid.ColumnTable();
  const std::vector<int32_t>& positions = grid.ColumnPositions();
  std::vector<std::pair<int32_t, int>> shown;
  hidden_.clear();
  for (size_t c = 0; c < table.size(); ++c) {
    const int32_t p = c < positions.size() ? positions[c] : -1;
    if (p < 0)
      hidden_.push_back(int(c));
    else
      shown.push_back({p, int(c)});
  }
  std::sort(shown.begin(), shown.end());
  shown_.clear();
  for (const auto& [position, column] : shown)
    shown_.push_back(column);
  if (!LoadDefaultSortText(grid.ProfileName(), savedSort_))
    savedSort_.clear();
}

std::string ColumnReposition::NameOf(int column) const {
  if (!grid_ || column < 0 || size_t(column) >= grid_->ColumnTable().size())
    return {};
  return std::string(grid_->ColumnTable()[size_t(column)].Name());
}

bool ColumnReposition::MayHide(int column) const {
  return !(grid_ && grid_->DataColumnCount() > 0 && column == 0);
}

void ColumnReposition::ReportKept(int column) const {
  ShowMessage(NameOf(column) + std::string(kCannotBeRemovedSuffix));
}

// Columns the lists no longer know (the table changed while the dialog was
// open) end up hidden; list entries past the table are skipped.
void ColumnReposition::Apply(const std::vector<int>& shown) {
  if (!grid_)
    return;
  const size_t count = grid_->ColumnTable().size();
  std::vector<int32_t>& positions = grid_->ColumnPositions();
  const std::vector<int32_t> before = positions;
  positions.assign(count, -1);
  std::vector<int> newlyShown;
  int32_t next = 0;
  for (const int column : shown) {
    if (column < 0 || size_t(column) >= count || positions[size_t(column)] != -1)
      continue;
    positions[size_t(column)] = next;
    if (size_t(column) >= before.size() || before[size_t(column)] < 0)
      newlyShown.push_back(next);
    ++next;
  }
  grid_->ColumnsChanged();
  for (const int position : newlyShown)
    grid_->SetHeaderWidth(position, kNewlyShownWidth);
}

bool ColumnReposition::Save(const std::vector<int>& shown) {
  if (!grid_ || sortMode_)
    return false;
  Apply(shown);
  grid_->SaveColumnProfile();
  return true;
}

bool ColumnReposition::Sort(std::string_view text) {
  if (!grid_)
    return false;
  DefaultSort sort;
  if (!ParseDefaultSort(text, grid_->ColumnTable(), sort)) {
    ShowMessage(TrimBlanks(text) + std::string(kNoSuchSortColumnSuffix));
    return false;
  }
  grid_->SetDefaultSort(sort.column, sort.descending);
  savedSort_ = FormatDefaultSort(sort, grid_->ColumnTable());
  if (SaveDefaultSortText(grid_->ProfileName(), savedSort_))
    return true;
  ShowMessage(kProfileSaveFailed);
  return false;
}

} // namespace vh
