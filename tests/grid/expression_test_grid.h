// A one-row grid for custom column tests: data columns hold fixed texts,
// custom columns are computed by formulas, as the row engine does it, and
// every fetch is logged so that two ways of computing can be compared.
#pragma once

#include "grid/custom_column.h"

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vh::testing {

class TestGrid final : public CellTextSource {
public:
  std::vector<std::string> data;
  std::vector<std::unique_ptr<CustomColumnFormula>> custom; // column data.size() + k
  std::set<int> failing;                                    // fetches that fail
  std::vector<int> fetched;

  int DataColumnCount() const { return static_cast<int>(data.size()); }

  void Define(std::vector<std::string> stored, CustomColumnCompiler compile) {
    custom.clear();
    for (const std::string& s : stored)
      custom.push_back(compile(s));
  }

  bool GetCellText(uint64_t itemData, int column, std::string& text, CellStyle&) override {
    fetched.push_back(column);
    if (failing.count(column))
      return false;
    if (column < DataColumnCount()) { // below 0: a column the data lacks
      text = column < 0 ? "" : data[static_cast<size_t>(column)];
      return true;
    }
    const size_t k = static_cast<size_t>(column - DataColumnCount());
    if (k < custom.size())
      custom[k]->Calculate(itemData, *this, DataColumnCount(), text);
    return true;
  }

  // The text of custom column k, starting from `initial`.
  std::string Custom(size_t k, std::string initial = "untouched") {
    CellStyle style;
    GetCellText(1, DataColumnCount() + static_cast<int>(k), initial, style);
    return initial;
  }
};

} // namespace vh::testing
