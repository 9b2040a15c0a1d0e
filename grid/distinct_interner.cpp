#include "grid/distinct_interner.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vh {

// The length (longer texts all count as 65535) and 16 more bits of hash.
inline uint32_t TextInterner::Tag(std::string_view text, uint32_t hash) {
  return uint32_t(std::min<size_t>(text.size(), 0xFFFF)) << 16 | (hash >> 16);
}

void TextInterner::Place(uint32_t id, std::string_view text, uint32_t hash) {
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot].id != 0)
    slot = (slot + 1) & mask;
  table_[slot] = Slot{WordsOf(text), id + 1, Tag(text, hash)};
}

void TextInterner::Grow() {
  table_.assign(table_.empty() ? 64 : table_.size() * 2, Slot{{0, 0}, 0, 0});
  for (uint32_t id = 0; id < spans_.size(); ++id)
    Place(id, Text(id), spans_[id].hash);
}

uint32_t TextInterner::Intern(std::string_view text, Words words, uint32_t hash) {
  if ((spans_.size() + 1) * 2 > table_.size())
    Grow();
  const uint32_t tag = Tag(text, hash);
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot].id != 0) {
    const Slot& s = table_[slot];
    // Equal tags mean equal lengths, and the words then hold every byte of
    // a text of up to 16.
    if (s.words.head == words.head && s.words.tail == words.tail && s.tag == tag &&
        (text.size() <= 16 || Text(s.id - 1) == text))
      return s.id - 1;
    slot = (slot + 1) & mask;
  }
  const uint32_t id = uint32_t(spans_.size());
  spans_.push_back(Span{buffer_.size(), uint32_t(text.size()), hash});
  buffer_.append(text);
  table_[slot] = Slot{words, id + 1, tag};
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
