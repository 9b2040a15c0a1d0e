#include "holdings/text_pool.h"

#include "grid/text_hash.h"

#include <cstring>

namespace vh {

TextPool::TextPool() {
  Clear();
}

void TextPool::Clear() {
  buffer_.clear();
  spans_.clear();
  table_.clear();
  Grow();
  Intern({});
}

size_t TextPool::SlotOf(std::string_view text, uint32_t hash) const {
  const size_t mask = table_.size() - 1;
  size_t slot = hash & mask;
  while (table_[slot].id1 != 0) {
    const Entry& e = table_[slot];
    if (e.hash == hash && e.length == text.size() &&
        std::string_view(buffer_.data() + e.offset, e.length) == text)
      return slot;
    slot = (slot + 1) & mask;
  }
  return slot;
}

TextId TextPool::Find(std::string_view text) const {
  const size_t slot = SlotOf(text, HashText(text));
  return table_[slot].id1 ? table_[slot].id1 - 1 : kNotFound;
}

TextId TextPool::Intern(std::string_view text) {
  const uint32_t hash = HashText(text);
  size_t slot = SlotOf(text, hash);
  if (table_[slot].id1)
    return table_[slot].id1 - 1;
  const TextId id = TextId(spans_.size());
  const Span span{uint32_t(buffer_.size()), uint32_t(text.size()), hash};
  spans_.push_back(span);
  buffer_.append(text);
  table_[slot] = Entry{hash, id + 1, span.offset, span.length};
  if (spans_.size() * 2 > table_.size())
    Grow();
  return id;
}

void TextPool::Grow() {
  table_.assign(table_.empty() ? 64 : table_.size() * 2, Entry{});
  const size_t mask = table_.size() - 1;
  for (uint32_t id = 0; id < spans_.size(); ++id) {
    const Span& s = spans_[id];
    size_t slot = s.hash & mask;
    while (table_[slot].id1 != 0)
      slot = (slot + 1) & mask;
    table_[slot] = Entry{s.hash, id + 1, s.offset, s.length};
  }
}

size_t TextPool::ResidentBytes() const {
  return buffer_.capacity() + spans_.capacity() * sizeof(Span) + table_.capacity() * sizeof(Entry);
}

} // namespace vh
