// The filtering grid as the column editors see it (CustomColumnGrid): a
// copy of the engine's column table and position map that the editors
// change in place, and the header items as a list the editors' header
// calls rearrange. ColumnsChanged() then installs the table in the engine
// and lays the header out anew, carrying over what belongs to a column
// rather than to a place: widths, tooltips, filters, the sort mark.
//
// Positions here are the places the user sees (the header's visual order),
// so the column profile dialog lists the columns as they stand on screen;
// after a change the header's logical order is that order again.
//
// Custom columns are told apart by name (the editor refuses a taken name);
// data columns keep their numbers.
#pragma once

#include "grid/custom_column_grid.h"

#include <string>
#include <vector>

namespace vh {

class CFilterListCtrl;

class FilterListColumns final : public CustomColumnGrid {
public:
  explicit FilterListColumns(CFilterListCtrl& grid) : grid_(grid) {}

  // Takes the table, map and header items from the grid again, dropping
  // any unfinished change. The grid calls it after each change of its own.
  void Sync();

  std::vector<sTarnColInfo>& ColumnTable() override { return table_; }
  std::vector<int32_t>& ColumnPositions() override { return positions_; }
  int DataColumnCount() const override;
  int HeaderItemCount() const override { return int(items_.size()); }
  void InsertHeaderColumn(int position, const std::string& heading, int format, int width) override;
  void DeleteHeaderColumn(int position) override;
  void SetHeaderWidth(int position, int width) override;
  void SetHeaderToolTip(int position, const std::string& text) override;
  void SetDefaultSort(int column, bool descending) override;
  void SetProfileName(const std::string& name) override;
  std::string ProfileName() const override;
  void ColumnsChanged() override;
  void SaveColumnProfile() override;

private:
  struct Item {
    std::string name;
    int width = -1; // -1: the width the column has on screen
    std::string tip;
    bool tipSet = false;
  };
  int LogicalOf(int position) const;
  const Item* ItemFor(int position, const std::string& name) const;
  int OldColumnOf(int column, const std::vector<std::string>& oldNames) const;
  void CarryFiltersAndSort(const std::vector<std::string>& oldNames, int oldSortColumn,
                           int sortImage);

  CFilterListCtrl& grid_;
  std::vector<sTarnColInfo> table_;
  std::vector<int32_t> positions_;
  std::vector<Item> items_;
  // An item was inserted or deleted since Sync: the header on screen no
  // longer matches `items_` place for place.
  bool rearranged_ = false;
};

} // namespace vh
