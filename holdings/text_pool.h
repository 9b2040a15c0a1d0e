// The texts one answer repeats across its rows (symbols, series, products,
// codes, tokens, ISINs, haircuts), each kept once and named by a number.
// Texts live in one growing buffer; the table holds numbers only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vh {

// Number of a text in a TextPool; 0 is always the empty text.
using TextId = uint32_t;

class TextPool {
public:
  static constexpr TextId kNotFound = UINT32_MAX;

  TextPool();
  // The number of `text`, adding it when new.
  TextId Intern(std::string_view text);
  // The number of `text`, or kNotFound; never adds.
  TextId Find(std::string_view text) const;
  // The text of `id`, valid until the next Intern; empty for an unknown id.
  std::string_view Text(TextId id) const {
    return id < spans_.size()
               ? std::string_view(buffer_).substr(spans_[id].offset, spans_[id].length)
               : std::string_view();
  }
  size_t Size() const { return spans_.size(); }
  // Back to the empty text only.
  void Clear();
  // Bytes held (capacity).
  size_t ResidentBytes() const;

private:
  struct Span {
    uint32_t offset;
    uint32_t length;
    uint32_t hash;
  };
  // A table entry carries the text's place as well as its number, so a
  // lookup in a large pool (a million client ids) touches the table and the
  // text only, not the span list in between.
  struct Entry {
    uint32_t hash;
    uint32_t id1; // id + 1, 0 for an empty entry
    uint32_t offset;
    uint32_t length;
  };
  size_t SlotOf(std::string_view text, uint32_t hash) const;
  void Grow();

  std::string buffer_;
  std::vector<Span> spans_;
  std::vector<Entry> table_;
};

} // namespace vh
