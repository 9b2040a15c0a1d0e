// A text of a holdings record that is mostly short and mostly unique to its
// row (a client id, a quantity): up to 15 bytes live inside the object, a
// longer one goes to the answer's text pool and the object keeps its number.
// Sixteen bytes either way, and no heap block of its own.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include "holdings/text_pool.h"

namespace vh {

class ShortText {
public:
  static constexpr size_t kInline = 15;

  // Stores `text`; a text longer than kInline is added to `pool`.
  void Set(std::string_view text, TextPool& pool) {
    if (text.size() <= kInline) {
      std::memcpy(bytes_, text.data(), text.size());
      length_ = uint8_t(text.size());
      return;
    }
    const uint32_t id = pool.Intern(text);
    std::memcpy(bytes_, &id, sizeof id);
    length_ = kPooled;
  }
  // The text, valid while this object and `pool` are unchanged.
  std::string_view View(const TextPool& pool) const {
    if (length_ != kPooled)
      return {bytes_, length_};
    uint32_t id;
    std::memcpy(&id, bytes_, sizeof id);
    return pool.Text(id);
  }
  bool Empty() const { return length_ == 0; }

private:
  static constexpr uint8_t kPooled = 0xFF;
  char bytes_[kInline] = {};
  uint8_t length_ = 0;
};

} // namespace vh
