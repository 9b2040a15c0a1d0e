// What the custom-column editor and the column profile dialog need of a
// grid. The grid widget implements it; the editors stay Qt-free and can be
// tested against a small grid of their own.
//
// The editors change the column table and the position map in place and
// call the header operations in between, in the order the user's change
// dictates (a delete with dependants removes headers at positions that
// earlier removals have shifted). When a change is complete they call
// ColumnsChanged() once, then SaveColumnProfile(). A header call with a
// position the header does not have must be ignored.
#pragma once

#include "grid/col_info.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vh {

class CustomColumnGrid {
public:
  virtual ~CustomColumnGrid() = default;

  // The column table: data columns first, custom columns after them.
  virtual std::vector<sTarnColInfo>& ColumnTable() = 0;
  // Header position of each column number, -1 for a hidden column. The
  // editors keep it as long as the table.
  virtual std::vector<int32_t>& ColumnPositions() = 0;
  // Number of the first custom column.
  virtual int DataColumnCount() const = 0;
  // Number of header items shown now.
  virtual int HeaderItemCount() const = 0;

  // Inserts a header item at `position` (format as in sTarnColInfo).
  virtual void InsertHeaderColumn(int position, const std::string& heading, int format,
                                  int width) = 0;
  virtual void DeleteHeaderColumn(int position) = 0;
  virtual void SetHeaderWidth(int position, int width) = 0;
  virtual void SetHeaderToolTip(int position, const std::string& text) = 0;

  // The sort the grid applies when it is filled anew: `column` in the
  // column table (-1: none), descending or ascending.
  virtual void SetDefaultSort(int column, bool descending) = 0;

  virtual void SetProfileName(const std::string& name) = 0;
  virtual std::string ProfileName() const = 0;

  // The table and the map are consistent again: rebuild what depends on
  // them (reverse map, custom column formulas, header order) and redraw.
  virtual void ColumnsChanged() = 0;
  // Writes the column profile (the grid shows the failure message itself).
  virtual void SaveColumnProfile() = 0;
};

} // namespace vh
