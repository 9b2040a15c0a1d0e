// Distinct texts of a column over the displayed rows, for the filter pop-up
// and for combo boxes. The pop-up's list sorts itself; here the texts keep
// the order in which the display first shows them.
#include "grid/row_engine.h"

#include "grid/distinct_interner.h"

#include <algorithm>

namespace vh {

// Rows are read in store order (see SlotsInStoreOrder) and each text
// remembers the first display position that shows it.
std::vector<std::string> RowEngine::DistinctValues(int column) {
  std::vector<std::string> values;
  if (!HasDataSource() || column < 0)
    return values;
  const size_t n = std::min(size_t(std::max(displayedCount_, 0)), map_.size());
  if (CachedDistinctValues(column, n, values)) {
    EndPass();
    return values;
  }
  TextInterner seen;
  std::vector<uint32_t> firstPosition;
  std::string scratch;
  for (const uint32_t slot : SlotsInStoreOrder(n)) {
    const uint64_t item = ItemDataOfIndex(map_[slot]);
    if (item == 0)
      continue;
    const std::string_view text = PassText(item, column, scratch);
    if (text.empty())
      continue;
    const uint32_t id = seen.Intern(text);
    const uint32_t position = uint32_t(Mirror(int(slot)));
    if (id == firstPosition.size())
      firstPosition.push_back(position);
    else
      firstPosition[id] = std::min(firstPosition[id], position);
  }
  // Each display position shows one text, so first positions never tie and
  // each text can be placed at its own position, with no sort.
  std::vector<uint32_t> idAt(size_t(std::max(displayedCount_, 0)) + n, UINT32_MAX);
  for (uint32_t id = 0; id < firstPosition.size(); ++id)
    idAt[firstPosition[id]] = id;
  values.reserve(firstPosition.size());
  for (const uint32_t id : idAt)
    if (id != UINT32_MAX)
      values.emplace_back(seen.Text(id));
  return values;
}

std::vector<std::string> RowEngine::ComboValues(int column) {
  std::vector<std::string> values = DistinctValues(column);
  // Kept with its trailing space: owners compare the selection against it.
  values.insert(values.begin(), "--ALL-- ");
  return values;
}

} // namespace vh
