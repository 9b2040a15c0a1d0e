// A set of texts numbered in order of first appearance, for the distinct
// values of a column and for turning text sort keys into integer ranks.
// Texts live in one growing buffer and the table holds only their numbers,
// so a million lookups allocate only when a new text appears.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

class TextInterner {
public:
  // The number of `text`, adding it when new. Numbers count from 0.
  uint32_t Intern(std::string_view text);
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
    return buffer_.capacity() + spans_.capacity() * sizeof(Span) +
           table_.capacity() * sizeof(uint32_t);
  }

private:
  struct Span {
    size_t offset;
    uint32_t length;
    uint32_t hash;
  };
  void Grow();

  std::string buffer_;
  std::vector<Span> spans_;
  std::vector<uint32_t> table_; // id + 1, 0 for empty
};

} // namespace vh
