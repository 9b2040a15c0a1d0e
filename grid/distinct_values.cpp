// Distinct texts of a column over the displayed rows, for the filter pop-up
// and for combo boxes. The pop-up's list sorts itself; here the texts keep
// the order in which the display first shows them.
#include "grid/row_engine.h"

#include "grid/distinct_interner.h"

namespace vh {

std::vector<std::string> RowEngine::DistinctValues(int column) {
  std::vector<std::string> values;
  if (!HasDataSource() || column < 0)
    return values;
  TextInterner seen;
  std::string text;
  CellStyle style;
  for (int position = 0; position < displayedCount_; ++position) {
    const uint64_t item = ItemDataOfIndex(DataIndexAt(position));
    if (item == 0)
      continue;
    text.clear();
    GetCellText(item, column, text, style);
    if (text.empty())
      continue;
    const size_t before = seen.Size();
    if (seen.Intern(text) == before)
      values.push_back(text);
  }
  return values;
}

std::vector<std::string> RowEngine::ComboValues(int column) {
  std::vector<std::string> values = DistinctValues(column);
  // Kept with its trailing space: owners compare the selection against it.
  values.insert(values.begin(), "--ALL-- ");
  return values;
}

} // namespace vh
