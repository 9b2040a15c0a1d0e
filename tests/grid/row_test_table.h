// A small owner for row engine tests: rows of texts keyed by item data
// (item = row number + 1), served through the owner data-source form.
#pragma once

#include "grid/row_engine.h"

#include <random>
#include <string>
#include <vector>

namespace vh::test {

struct TextTable {
  std::vector<std::vector<std::string>> rows;

  // The text at (item, column), or null for an item or column it lacks.
  static const std::string* Cell(void* owner, uint64_t item, int column) {
    auto& rows = static_cast<TextTable*>(owner)->rows;
    if (item == 0 || item > rows.size() || column < 0 || size_t(column) >= rows[item - 1].size())
      return nullptr;
    return &rows[item - 1][size_t(column)];
  }
  static int Fetch(void* owner, uint64_t item, int column, std::string& text, CellStyle& style) {
    const std::string* cell = Cell(owner, item, column);
    if (cell) {
      text = *cell;
      style.textColour = int32_t(item);
    }
    return cell != nullptr;
  }
  // The same texts without a copy, for whole-column passes.
  static int View(void* owner, uint64_t item, int column, std::string_view& text) {
    const std::string* cell = Cell(owner, item, column);
    if (cell)
      text = *cell;
    return cell != nullptr;
  }
};

inline std::vector<sTarnColInfo> Columns(const std::vector<int32_t>& types) {
  std::vector<sTarnColInfo> columns(types.size());
  for (size_t i = 0; i < types.size(); ++i) {
    columns[i].SetName("col" + std::to_string(i));
    columns[i].nType = types[i];
  }
  return columns;
}

// Appends every row of `table` to `engine` the way the holdings view does:
// insert at position 0, then give the new row its item data.
inline void LoadRows(RowEngine& engine, const TextTable& table) {
  for (size_t i = 0; i < table.rows.size(); ++i) {
    const int at = engine.InsertItem(0, "");
    engine.SetItemData(at, i + 1);
  }
}

inline std::string RandomText(std::mt19937& rng, std::string_view alphabet, size_t maxLength) {
  std::string text(std::uniform_int_distribution<size_t>(0, maxLength)(rng), ' ');
  for (char& c : text)
    c = alphabet[std::uniform_int_distribution<size_t>(0, alphabet.size() - 1)(rng)];
  return text;
}

} // namespace vh::test
