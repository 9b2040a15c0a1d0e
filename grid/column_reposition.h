// The column profile dialog without its widgets: the shown and hidden
// lists of one grid's columns, what the move, apply and save buttons do to
// the grid, and the grid's default sort. Qt-free; single-threaded.
//
//   ">"        selected hidden columns go to the end of the shown list
//   "<"        selected shown columns go to the end of the hidden list; the
//              first data column stays ("<name> cannot be removed")
//   "&View"    header positions follow the shown list's order, every other
//              column is hidden; a column that was hidden gets width 80
//   "&Save"    "&View", then the column profile is saved (normal mode only)
//   "&Default" shows the saved default-sort text
//   "Sort"     sets and saves the default sort from the edit's text
// Default-sort text: a column's name (any letter case), optionally followed
// by "," and "D" (descending) or "A" (ascending, the default), e.g.
// "Holdings Qty,D"; empty for none. It is kept as settings/default_sort.h
// says, next to the grid's column profile.
#pragma once

#include "grid/custom_column_grid.h"

#include <string>
#include <string_view>
#include <vector>

namespace vh {

inline constexpr int kNewlyShownWidth = 80;
inline constexpr std::string_view kCannotBeRemovedSuffix = " cannot be removed";
inline constexpr std::string_view kNoSuchSortColumnSuffix = " is not a column of this grid";
inline constexpr std::string_view kProfileSaveFailed = "Error while saving column profile";
inline constexpr std::string_view kDealerNetPositionProfile = "DealerNetPosition";

struct DefaultSort {
  int column = -1; // -1: no default sort
  bool descending = false;
};

// Reads a default-sort text against `table`. Returns false for a name no
// column carries; an empty (or blank) text gives column -1.
[[nodiscard]] bool ParseDefaultSort(std::string_view text, const std::vector<sTarnColInfo>& table,
                                    DefaultSort& out);
// The text that ParseDefaultSort reads back as `sort` ("" for none).
std::string FormatDefaultSort(const DefaultSort& sort, const std::vector<sTarnColInfo>& table);

class ColumnReposition {
public:
  // Starts over from the grid: shown columns in header order, hidden ones
  // in table order, and the saved default-sort text of the grid's profile.
  void Open(CustomColumnGrid& grid, bool sortMode);

  bool SortMode() const { return sortMode_; }
  // The profile is the dealers' one (kDealerNetPositionProfile).
  bool DealerNetPosition() const { return dealerNetPosition_; }
  // Column numbers, in list order.
  const std::vector<int>& Shown() const { return shown_; }
  const std::vector<int>& Hidden() const { return hidden_; }
  // Empty for an unknown column.
  std::string NameOf(int column) const;

  // ">": `rows` are indices into Hidden(); out-of-range ones are ignored.
  void ShowColumns(std::vector<int> rows);
  // "<": `rows` are indices into Shown(). The first data column is refused
  // with its message and stays; the others move.
  void HideColumns(std::vector<int> rows);
  // A drag inside the shown list: the entry at `from` is put at `to`.
  // Nothing happens for an index out of range.
  void MoveShown(int from, int to);

  // "&View". Without an open grid nothing happens.
  void Apply();
  // "&Save": false (nothing done) in sort mode or without a grid.
  bool Save();

  // "&Default": the grid's saved default-sort text.
  const std::string& SavedDefaultSort() const { return savedSort_; }
  // "Sort": sets the grid's default sort from `text` and saves it. Returns
  // false after "<text> is not a column of this grid" (nothing changed) or
  // after "Error while saving column profile" (the grid's sort is set).
  bool Sort(std::string_view text);

private:
  CustomColumnGrid* grid_ = nullptr;
  bool sortMode_ = false;
  bool dealerNetPosition_ = false;
  std::vector<int> shown_;
  std::vector<int> hidden_;
  std::string savedSort_;
};

} // namespace vh
