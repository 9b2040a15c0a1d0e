// The column profile dialog without its widgets: the shown and hidden
// lists it starts from, the column that may not be hidden, what applying
// and saving the lists does to the grid, and the grid's default sort.
// Moving items between the lists is the lists' own business. Qt-free;
// single-threaded.
//
//   "&View"    header positions follow the shown list's order, every other
//              column is hidden; a column that was hidden gets width 80
//   "&Save"    "&View", then the column profile is saved (normal mode only)
//   "&Default" shows the saved default-sort text
//   "Sort"     sets and saves the default sort from the edit's text
// The first data column stays shown ("<name> cannot be removed").
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
  // The lists as opened: column numbers, shown ones in header order,
  // hidden ones in table order.
  const std::vector<int>& Shown() const { return shown_; }
  const std::vector<int>& Hidden() const { return hidden_; }
  // Empty for an unknown column.
  std::string NameOf(int column) const;

  // Whether `column` may go to the hidden list: not the first data column.
  bool MayHide(int column) const;
  // Says why `column` stays shown: "<name> cannot be removed".
  void ReportKept(int column) const;

  // "&View" with the shown list `shown` (column numbers, top to bottom).
  // Unknown and repeated numbers are skipped. Without an open grid nothing
  // happens.
  void Apply(const std::vector<int>& shown);
  // "&Save": false (nothing done) in sort mode or without a grid.
  bool Save(const std::vector<int>& shown);

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
