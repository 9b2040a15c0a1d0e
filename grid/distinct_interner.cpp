#include "grid/distinct_interner.h"

#include <algorithm>
#include <functional>
#include <numeric>

namespace vh {

std::string_view TextInterner::Text(uint32_t id) const {
  if (id >= spans_.size())
    return {};
  return std::string_view(buffer_).substr(spans_[id].offset, spans_[id].length);
}

void TextInterner::Grow() {
  table_.assign(table_.empty() ? 64 : table_.size() * 2, 0);
  const size_t mask = table_.size() - 1;
  for (uint32_t id = 0; id < spans_.size(); ++id) {
    size_t slot = spans_[id].hash & mask;
    while (table_[slot] != 0)
      slot = (slot + 1) & mask;
    table_[slot] = id + 1;
  }
}

uint32_t TextInterner::Intern(std::string_view text) {
  if ((spans_.size() + 1) * 2 > table_.size())
    Grow();
  const uint32_t hash = uint32_t(std::hash<std::string_view>{}(text));
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot] != 0) {
    const uint32_t id = table_[slot] - 1;
    if (spans_[id].hash == hash && Text(id) == text)
      return id;
    slot = (slot + 1) & mask;
  }
  const uint32_t id = uint32_t(spans_.size());
  spans_.push_back(Span{buffer_.size(), uint32_t(text.size()), hash});
  buffer_.append(text);
  table_[slot] = id + 1;
  return id;
}

std::vector<uint32_t> TextInterner::Ranks() const {
  std::vector<uint32_t> order(spans_.size());
  std::iota(order.begin(), order.end(), 0u);
  std::sort(order.begin(), order.end(),
            [this](uint32_t a, uint32_t b) { return Text(a) < Text(b); });
  std::vector<uint32_t> rank(spans_.size());
  for (uint32_t r = 0; r < order.size(); ++r)
    rank[order[r]] = r;
  return rank;
}

} // namespace vh
