#include "holdings/client_index.h"

#include <cstring>
#include <string>

namespace vh {
namespace {

constexpr size_t kFirstSlots = 64;

char Fold(char c) {
  return c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c;
}

uint32_t Mix(uint64_t a, uint64_t b) {
  uint64_t h = (a ^ 0x9E3779B97F4A7C15ull) * 0xFF51AFD7ED558CCDull;
  h = (h ^ (h >> 32) ^ b) * 0xC4CEB9FE1A85EC53ull;
  h ^= h >> 29;
  return uint32_t(h >> 32);
}

} // namespace

void ClientIdIndex::Clear() {
  table_.assign(kFirstSlots, Slot{});
  used_ = 0;
  longIds_.Clear();
  hasEmpty_ = false;
  entries_ = 0;
}

ClientIdIndex::Probe ClientIdIndex::Prepare(std::string_view id) const {
  Probe p;
  p.id = id;
  if (id.size() > kInline) {
    p.inlined = false;
    return p;
  }
  char bytes[16] = {};
  for (size_t i = 0; i < id.size(); ++i)
    bytes[i] = Fold(id[i]);
  bytes[15] = char(id.size());
  std::memcpy(p.word, bytes, sizeof bytes);
  p.hash = Mix(p.word[0], p.word[1]);
  if (!table_.empty())
    __builtin_prefetch(&table_[p.hash & (table_.size() - 1)]);
  return p;
}

size_t ClientIdIndex::SlotOf(const Probe& p) const {
  const size_t mask = table_.size() - 1;
  size_t slot = p.hash & mask;
  for (;; slot = (slot + 1) & mask) {
    const Slot& s = table_[slot];
    if ((s.word[0] == p.word[0] && s.word[1] == p.word[1]) || (s.word[0] | s.word[1]) == 0)
      return slot;
  }
}

bool ClientIdIndex::Contains(const Probe& p) const {
  if (p.id.empty())
    return hasEmpty_;
  if (!p.inlined) {
    std::string folded(p.id);
    for (char& c : folded)
      c = Fold(c);
    return longIds_.Find(folded) != TextPool::kNotFound;
  }
  if (table_.empty())
    return false;
  const Slot& s = table_[SlotOf(p)];
  return (s.word[0] | s.word[1]) != 0;
}

void ClientIdIndex::Add(std::string_view id) {
  ++entries_;
  if (id.empty()) {
    hasEmpty_ = true;
    return;
  }
  const Probe p = Prepare(id);
  if (!p.inlined) {
    std::string folded(id);
    for (char& c : folded)
      c = Fold(c);
    longIds_.Intern(folded);
    return;
  }
  if (table_.empty())
    table_.assign(kFirstSlots, Slot{});
  Slot& s = table_[SlotOf(p)];
  if ((s.word[0] | s.word[1]) != 0)
    return;
  s = Slot{{p.word[0], p.word[1]}};
  if (++used_ * 2 > table_.size())
    Grow();
}

void ClientIdIndex::Grow() {
  std::vector<Slot> old(table_.size() * 2, Slot{});
  old.swap(table_);
  const size_t mask = table_.size() - 1;
  for (const Slot& s : old) {
    if ((s.word[0] | s.word[1]) == 0)
      continue;
    size_t slot = Mix(s.word[0], s.word[1]) & mask;
    while ((table_[slot].word[0] | table_[slot].word[1]) != 0)
      slot = (slot + 1) & mask;
    table_[slot] = s;
  }
}

} // namespace vh
