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
  uint32_t Intern(std::string_view text) {
    const Words words = WordsOf(text);
    return Intern(text, words, HashOf(text, words));
  }
  // The same with `hash` == Hash(text) known: a caller interning many
  // texts hashes a few ahead and Prefetches their slots.
  uint32_t Intern(std::string_view text, uint32_t hash) {
    return Intern(text, WordsOf(text), hash);
  }
  static uint32_t Hash(std::string_view text) { return HashOf(text, WordsOf(text)); }
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
  // A text's first and last eight bytes (the last word is 0 below 8
  // bytes): with the length they are every byte of a text of up to 16
  // bytes (symbols with their series, client ids, codes). Read once per
  // text, they serve as its hash too, so a lookup branches on the length
  // once and touches only the table.
  struct Words {
    uint64_t head;
    uint64_t tail;
  };
  static Words WordsOf(std::string_view text) {
    const char* p = text.data();
    const size_t n = text.size();
    if (n >= 8)
      return {Load8(p), Load8(p + n - 8)};
    if (n >= 4)
      return {(uint64_t(Load4(p + n - 4)) << 32) | Load4(p), 0};
    if (n > 0)
      return {(uint64_t(uint8_t(p[0])) << 16) | (uint64_t(uint8_t(p[n / 2])) << 8) |
                  uint8_t(p[n - 1]),
              0};
    return {0, 0};
  }
  static uint32_t HashOf(std::string_view text, Words words) {
    if (text.size() > 16)
      return HashText(text);
    uint64_t h = (words.head ^ (uint64_t(text.size()) << 58)) * 0xFF51AFD7ED558CCDull;
    h = (h ^ (h >> 32) ^ words.tail) * 0xC4CEB9FE1A85EC53ull;
    h ^= h >> 29;
    return uint32_t(h >> 32);
  }
  struct Slot {
    Words words;
    uint32_t id; // id + 1, 0 for empty
    uint32_t tag;
  };
  static uint32_t Tag(std::string_view text, uint32_t hash);
  uint32_t Intern(std::string_view text, Words words, uint32_t hash);
  void Place(uint32_t id, std::string_view text, uint32_t hash);
  void Grow();

  std::string buffer_;
  std::vector<Span> spans_;
  std::vector<Slot> table_;
};

} // namespace vh
