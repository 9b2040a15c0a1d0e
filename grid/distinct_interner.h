// A set of texts numbered in order of first appearance, for the distinct
// values of a column and for turning text sort keys into integer ranks.
// Texts live in one growing buffer and the table holds only their numbers,
// so a million lookups allocate only when a new text appears.
#pragma once

#include "grid/text_hash.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

class TextInterner {
public:
  // The number of `text`, adding it when new. Numbers count from 0.
  uint32_t Intern(std::string_view text) { return Intern(text, Hash(text)); }
  // The same with `hash` == Hash(text) known: a caller interning many
  // texts hashes a few ahead and Prefetches their slots.
  uint32_t Intern(std::string_view text, uint32_t hash);
  static uint32_t Hash(std::string_view text) { return HashText(text); }
  void Prefetch(uint32_t hash) const {
    if (!table_.empty())
      __builtin_prefetch(&table_[hash & (table_.size() - 1)]);
  }
  size_t Size() const { return spans_.size(); }
  // Empty for an unknown number.
  std::string_view Text(uint32_t id) const {
    return id < spans_.size()
               ? std::string_view(buffer_).substr(spans_[id].offset, spans_[id].length)
               : std::string_view();
  }
  // For each number, its position when all texts are sorted byte-wise
  // (unsigned, as strcmp orders them).
  std::vector<uint32_t> Ranks() const;
  // Bytes held (capacity, not size).
  size_t Bytes() const {
    return buffer_.capacity() + spans_.capacity() * sizeof(Span) + table_.capacity() * sizeof(Slot);
  }

private:
  struct Span {
    size_t offset;
    uint32_t length;
    uint32_t hash;
  };
  // A table slot holds a text's first and last eight bytes, so that a text
  // of up to 16 bytes (symbols with their series, client ids, codes) is
  // found without reading the spans or the buffer: a million lookups then
  // touch only the table.
  struct Slot {
    uint64_t head;
    uint64_t tail;
    uint32_t id; // id + 1, 0 for empty
    uint32_t tag;
  };
  static uint64_t Head(std::string_view text);
  static uint64_t Tail(std::string_view text);
  static uint32_t Tag(std::string_view text, uint32_t hash);
  void Place(uint32_t id, std::string_view text, uint32_t hash);
  void Grow();

  std::string buffer_;
  std::vector<Span> spans_;
  std::vector<Slot> table_;
};

} // namespace vh
