// A small grid for the column editors' tests: a real column table and
// position map, a header kept as a list of items, and a real row engine
// that computes custom columns from the table, so a test sees the values a
// new column shows. Every header call and every save is recorded.
#pragma once

#include "grid/custom_column.h"
#include "grid/custom_column_grid.h"
#include "grid/row_engine.h"

#include <string>
#include <vector>

namespace vh::testing {

class EditorTestGrid final : public CustomColumnGrid {
public:
  struct HeaderItem {
    std::string heading;
    int format = 0;
    int width = 0;
    std::string tip;
  };
  struct Save {
    std::vector<sTarnColInfo> table;
    std::vector<int32_t> positions;
  };

  // Data columns named `names` with comparison `types`, all shown in order;
  // `rows` holds the data cells of each row.
  EditorTestGrid(std::vector<std::string> names, std::vector<int> types,
                 std::vector<std::vector<std::string>> rows)
      : rows_(std::move(rows)) {
    for (size_t i = 0; i < names.size(); ++i) {
      sTarnColInfo info;
      info.SetName(names[i]);
      info.nWidth = 80;
      info.nType = types[i];
      table.push_back(info);
      positions.push_back(int32_t(i));
      header.push_back({names[i], 0, 80, names[i]});
    }
    dataCount = int(names.size());
    engine_.SetOwnerDataSource(&EditorTestGrid::Source, this);
    engine_.SetCustomColumnCompiler(CompileCustomColumn);
    ColumnsChanged();
    changes = 0;
  }

  std::vector<sTarnColInfo> table;
  std::vector<int32_t> positions;
  int dataCount = 0;
  std::vector<HeaderItem> header;
  std::string profile;
  int sortColumn = -1;
  bool sortDescending = false;
  int changes = 0;
  std::vector<Save> saves;
  std::vector<std::string> calls; // header calls, in order

  std::vector<sTarnColInfo>& ColumnTable() override { return table; }
  std::vector<int32_t>& ColumnPositions() override { return positions; }
  int DataColumnCount() const override { return dataCount; }
  int HeaderItemCount() const override { return int(header.size()); }
  int HeaderWidth(const std::string& name) const override {
    for (const HeaderItem& item : header) {
      if (item.heading == name)
        return item.width;
    }
    return 0;
  }
  void InsertHeaderColumn(int position, const std::string& heading, int format,
                          int width) override {
    calls.push_back("insert " + std::to_string(position));
    header.insert(header.begin() + position, {heading, format, width, heading});
  }
  void DeleteHeaderColumn(int position) override {
    calls.push_back("delete " + std::to_string(position));
    header.erase(header.begin() + position);
  }
  void SetHeaderWidth(int position, int width) override {
    header.at(size_t(position)).width = width;
  }
  void SetHeaderToolTip(int position, const std::string& text) override {
    header.at(size_t(position)).tip = text;
  }
  void SetDefaultSort(int column, bool descending) override {
    sortColumn = column;
    sortDescending = descending;
  }
  void SetProfileName(const std::string& name) override { profile = name; }
  std::string ProfileName() const override { return profile; }
  // Lays the header out anew from the map, as a grid does; an item keeps
  // the width and tooltip it had under the same heading (0 and the name
  // for one it did not have).
  void ColumnsChanged() override {
    ++changes;
    engine_.SetColumns(table, dataCount, positions);
    std::vector<HeaderItem> laidOut(size_t(engine_.HeaderItemCount()));
    for (size_t p = 0; p < laidOut.size(); ++p) {
      const sTarnColInfo* info = engine_.ColumnInfo(engine_.DataColumnAt(int(p)));
      const std::string name = info ? std::string(info->Name()) : std::string();
      laidOut[p] = {name, info ? info->nFormat : 0, 0, name};
      for (const HeaderItem& old : header) {
        if (old.heading == name)
          laidOut[p] = old;
      }
    }
    header = std::move(laidOut);
  }
  void SaveColumnProfile() override { saves.push_back({table, positions}); }

  // The text the grid shows for `row` in `column` (computed for a custom
  // column from the definitions as of the last ColumnsChanged).
  std::string Cell(size_t row, int column) {
    std::string text;
    CellStyle style;
    engine_.GetCellText(row + 1, column, text, style);
    return text;
  }
  // Column numbers by name, -1 when none.
  int ColumnNamed(const std::string& name) const {
    for (size_t i = 0; i < table.size(); ++i) {
      if (table[i].Name() == name)
        return int(i);
    }
    return -1;
  }
  std::vector<std::string> Headings() const {
    std::vector<std::string> out;
    for (const HeaderItem& item : header)
      out.push_back(item.heading);
    return out;
  }

private:
  static int Source(void* owner, uint64_t itemData, int column, std::string& text, CellStyle&) {
    auto* self = static_cast<EditorTestGrid*>(owner);
    const std::vector<std::string>& row = self->rows_.at(size_t(itemData - 1));
    text = size_t(column) < row.size() ? row[size_t(column)] : std::string();
    return 1;
  }

  std::vector<std::vector<std::string>> rows_;
  RowEngine engine_;
};

} // namespace vh::testing
