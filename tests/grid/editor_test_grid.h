// A one-row grid for the column editors' tests: a real column table and
// position map, a header kept as a list of items, and a real row engine
// that computes custom columns from the table, so a test sees the value a
// new column shows. Header deletions and saves are recorded.
#pragma once

#include "grid/custom_column.h"
#include "grid/custom_column_grid.h"
#include "grid/row_engine.h"

#include <string>
#include <utility>
#include <vector>

namespace vh::testing {

class EditorTestGrid final : public CustomColumnGrid {
public:
  struct HeaderItem {
    std::string heading;
    int width = 0;
    std::string tip;
  };

  // Data columns `names` of comparison `types`, all shown, over one row.
  EditorTestGrid(std::vector<std::string> names, std::vector<int> types,
                 std::vector<std::string> cells)
      : cells_(std::move(cells)) {
    for (size_t i = 0; i < names.size(); ++i) {
      table.emplace_back().SetName(names[i]);
      table.back().nType = types[i];
      positions.push_back(int32_t(i));
      header.push_back({names[i], 80, names[i]});
    }
    dataCount = int(names.size());
    engine_.SetOwnerDataSource(
        [](void* self, uint64_t, int column, std::string& text, CellStyle&) {
          text = static_cast<EditorTestGrid*>(self)->cells_.at(size_t(column));
          return 1;
        },
        this);
    engine_.SetCustomColumnCompiler(CompileCustomColumn);
    ColumnsChanged();
  }

  std::vector<sTarnColInfo> table;
  std::vector<int32_t> positions;
  int dataCount = 0;
  std::vector<HeaderItem> header;
  std::string profile;
  std::pair<int, bool> sort{-1, false};    // column, descending
  std::vector<int> deleted;                // header positions, in call order
  std::vector<std::vector<int32_t>> saves; // the position map at each save

  std::vector<sTarnColInfo>& ColumnTable() override { return table; }
  std::vector<int32_t>& ColumnPositions() override { return positions; }
  int DataColumnCount() const override { return dataCount; }
  int HeaderItemCount() const override { return int(header.size()); }
  void InsertHeaderColumn(int at, const std::string& heading, int, int width) override {
    header.insert(header.begin() + at, {heading, width, heading});
  }
  void DeleteHeaderColumn(int at) override {
    deleted.push_back(at);
    header.erase(header.begin() + at);
  }
  void SetHeaderWidth(int at, int width) override { header.at(size_t(at)).width = width; }
  void SetHeaderToolTip(int at, const std::string& text) override {
    header.at(size_t(at)).tip = text;
  }
  void SetDefaultSort(int column, bool descending) override { sort = {column, descending}; }
  void SetProfileName(const std::string& name) override { profile = name; }
  std::string ProfileName() const override { return profile; }
  void SaveColumnProfile() override { saves.push_back(positions); }

  // Lays the header out anew from the map, as a grid does; an item keeps
  // the width and tooltip it had under the same heading.
  void ColumnsChanged() override {
    engine_.SetColumns(table, dataCount, positions);
    std::vector<HeaderItem> laidOut;
    for (int p = 0; p < engine_.HeaderItemCount(); ++p) {
      const std::string name(engine_.ColumnInfo(engine_.DataColumnAt(p))->Name());
      laidOut.push_back({name, 0, name});
      for (const HeaderItem& old : header)
        laidOut.back() = old.heading == name ? old : laidOut.back();
    }
    header = std::move(laidOut);
  }

  std::string Cell(int column) {
    std::string text;
    engine_.GetCellText(1, column, text);
    return text;
  }
  std::vector<std::string> Headings() const {
    std::vector<std::string> out;
    for (const HeaderItem& item : header)
      out.push_back(item.heading);
    return out;
  }

private:
  std::vector<std::string> cells_;
  RowEngine engine_;
};

} // namespace vh::testing
