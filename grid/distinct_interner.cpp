#include "grid/distinct_interner.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vh {

// Together the words read cover every byte of a text of up to 8 bytes, so
// head and length tell such texts apart.
inline uint64_t TextInterner::Head(std::string_view text) {
  const char* p = text.data();
  const size_t n = text.size();
  if (n >= 8)
    return Load8(p);
  if (n >= 4)
    return (uint64_t(Load4(p + n - 4)) << 32) | Load4(p);
  if (n > 0)
    return (uint64_t(uint8_t(p[0])) << 16) | (uint64_t(uint8_t(p[n / 2])) << 8) | uint8_t(p[n - 1]);
  return 0;
}

// Texts longer than 8 bytes: their last 8, which with the head cover every
// byte of a text of up to 16.
inline uint64_t TextInterner::Tail(std::string_view text) {
  return text.size() > 8 ? Load8(text.data() + text.size() - 8) : 0;
}

// The length (longer texts all count as 65535) and 16 more bits of hash.
inline uint32_t TextInterner::Tag(std::string_view text, uint32_t hash) {
  return uint32_t(std::min<size_t>(text.size(), 0xFFFF)) << 16 | (hash >> 16);
}

void TextInterner::Place(uint32_t id, std::string_view text, uint32_t hash) {
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot].id != 0)
    slot = (slot + 1) & mask;
  table_[slot] = Slot{Head(text), Tail(text), id + 1, Tag(text, hash)};
}

void TextInterner::Grow() {
  table_.assign(table_.empty() ? 64 : table_.size() * 2, Slot{0, 0, 0, 0});
  for (uint32_t id = 0; id < spans_.size(); ++id)
    Place(id, Text(id), spans_[id].hash);
}

uint32_t TextInterner::Intern(std::string_view text, uint32_t hash) {
  if ((spans_.size() + 1) * 2 > table_.size())
    Grow();
  const uint64_t head = Head(text);
  const uint64_t tail = Tail(text);
  const uint32_t tag = Tag(text, hash);
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot].id != 0) {
    const Slot& s = table_[slot];
    // Equal tags mean equal lengths, and head and tail then hold every
    // byte of a text of up to 16.
    if (s.head == head && s.tail == tail && s.tag == tag &&
        (text.size() <= 16 || Text(s.id - 1) == text))
      return s.id - 1;
    slot = (slot + 1) & mask;
  }
  const uint32_t id = uint32_t(spans_.size());
  spans_.push_back(Span{buffer_.size(), uint32_t(text.size()), hash});
  buffer_.append(text);
  table_[slot] = Slot{head, tail, id + 1, tag};
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
