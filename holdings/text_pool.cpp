#include "holdings/text_pool.h"

#include <cstring>

namespace vh {
namespace {

uint64_t Load8(const char* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}

uint32_t Load4(const char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// Eight bytes per multiply; the last bytes are read as overlapping
// fixed-size words, since a variable-length copy into a stack word stalls
// on store forwarding. Symbols and client ids are 5 to 15 bytes.
uint32_t Hash(std::string_view text) {
  const char* p = text.data();
  const size_t n = text.size();
  uint64_t h = 0x9E3779B97F4A7C15ull ^ n;
  uint64_t tail = 0;
  if (n >= 8) {
    for (size_t i = 0; i + 8 < n; i += 8) {
      h = (h ^ Load8(p + i)) * 0xFF51AFD7ED558CCDull;
      h ^= h >> 32;
    }
    tail = Load8(p + n - 8);
  } else if (n >= 4) {
    tail = (uint64_t(Load4(p)) << 32) | Load4(p + n - 4);
  } else if (n > 0) {
    tail = (uint64_t(uint8_t(p[0])) << 16) | (uint64_t(uint8_t(p[n / 2])) << 8) | uint8_t(p[n - 1]);
  }
  h = (h ^ tail) * 0xC4CEB9FE1A85EC53ull;
  h ^= h >> 29;
  h *= 0xFF51AFD7ED558CCDull;
  return uint32_t(h >> 32);
}

} // namespace

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
        std::memcmp(buffer_.data() + e.offset, text.data(), text.size()) == 0)
      return slot;
    slot = (slot + 1) & mask;
  }
  return slot;
}

TextId TextPool::Find(std::string_view text) const {
  const size_t slot = SlotOf(text, Hash(text));
  return table_[slot].id1 ? table_[slot].id1 - 1 : kNotFound;
}

TextId TextPool::Intern(std::string_view text) {
  const uint32_t hash = Hash(text);
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
