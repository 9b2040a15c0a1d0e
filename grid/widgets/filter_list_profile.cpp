// Column profiles of the filtering grid. The built-in columns are the table
// the owner installed; a profile adds custom columns at their numbers and
// says where each column shows and how wide.
//
// Positions saved are the order the user sees (a section dragged elsewhere
// keeps its new place next time). A built-in column the profile does not
// mention (one added since it was saved) is shown after the others rather
// than lost. A profile written by a grid with other columns (the alert grid
// shares the holdings grid's) cannot break the table: custom columns that
// would leave a gap, or lack a name, are dropped, and repeated positions
// hide the later column.
#include "grid/widgets/filter_list_ctrl.h"

#include "grid/widgets/filter_list_model.h"
#include "settings/column_profile.h"
#include "widgets/filter_header.h"

#include <algorithm>

namespace vh {

bool CFilterListCtrl::LoadColumnProfile() {
  const int builtin = engine_.DataColumnCount();
  std::vector<sColumnProfileEntry> entries;
  if (!LoadColumnProfileEntries(ProfileName(), builtin, entries))
    return false;

  std::vector<sTarnColInfo> table;
  for (int c = 0; c < builtin; ++c)
    table.push_back(*engine_.ColumnInfo(c));
  std::vector<bool> defined(size_t(builtin), true);
  std::vector<int32_t> positions(size_t(builtin), -2);
  std::vector<int> widths(size_t(builtin), 0);
  for (const sColumnProfileEntry& e : entries) {
    if (e.column < 0 || e.column > builtin + int(entries.size()))
      continue;
    const size_t c = size_t(e.column);
    if (c >= table.size()) {
      if (e.name.empty())
        continue;
      table.resize(c + 1);
      defined.resize(c + 1, false);
      positions.resize(c + 1, -1);
      widths.resize(c + 1, 0);
    }
    if (e.column >= builtin) {
      if (e.name.empty())
        continue;
      sTarnColInfo& info = table[c];
      info = sTarnColInfo{};
      info.SetName(e.name);
      info.nWidth = kRestoredCustomWidth;
      info.nFormat = kRestoredCustomFormat;
      info.nType = kRestoredCustomType;
      info.strExpression = e.storedExpression;
      info.strDisplayExpression = e.displayExpression;
      defined[c] = true;
    }
    positions[c] = e.position;
    widths[c] = e.width;
  }
  const auto gap = std::find(defined.begin(), defined.end(), false);
  const size_t kept = size_t(gap - defined.begin());
  table.resize(kept);
  positions.resize(kept);
  widths.resize(kept);

  int next = 0;
  for (int32_t p : positions)
    next = std::max(next, p + 1);
  for (size_t c = 0; c < positions.size(); ++c)
    if (positions[c] == -2)
      positions[c] = next++;
  // Shown columns take the places 0, 1, 2 ... in their saved order, so a
  // gap in the saved places never shows as a blank header item.
  std::vector<std::pair<int32_t, size_t>> shown;
  for (size_t c = 0; c < positions.size(); ++c)
    if (positions[c] >= 0)
      shown.emplace_back(positions[c], c);
  std::sort(shown.begin(), shown.end());
  int32_t place = 0;
  for (size_t i = 0; i < shown.size(); ++i) {
    const bool repeated = i > 0 && shown[i].first == shown[i - 1].first;
    positions[shown[i].second] = repeated ? -1 : place++;
  }
  for (size_t c = 0; c < widths.size(); ++c)
    if (widths[c] <= 0 && positions[c] >= 0)
      widths[c] = table[c].nWidth;

  engine_.SetColumns(std::move(table), builtin, std::move(positions));
  ColumnsReset();
  ApplyWidths(widths);
  return true;
}

bool CFilterListCtrl::SaveColumnProfile() {
  const int builtin = engine_.DataColumnCount();
  std::vector<sColumnProfileEntry> entries;
  for (int c = 0; c < engine_.ColumnCount(); ++c) {
    const sTarnColInfo& info = *engine_.ColumnInfo(c);
    sColumnProfileEntry e;
    e.column = c;
    const int item = engine_.ColumnPosition(c);
    e.position = item >= 0 ? header_->visualIndex(item) : -1;
    // The width of the header item that carries the column's name.
    const QString name = QString::fromLatin1(info.Name().data(), qsizetype(info.Name().size()));
    for (int s = 0; item >= 0 && s < HeaderItemCount(); ++s) {
      if (HeaderItemText(s) == name) {
        e.width = header_->sectionSize(s);
        break;
      }
    }
    if (c >= builtin) {
      e.name = std::string(info.Name());
      e.storedExpression = info.strExpression;
      e.displayExpression = info.strDisplayExpression;
    }
    entries.push_back(std::move(e));
  }
  return SaveColumnProfileEntries(ProfileName(), entries, builtin);
}

} // namespace vh
