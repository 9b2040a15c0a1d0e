// Hand-assembled encodings, so the tests state the byte layout independently
// of the encoder.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kdltest {

inline std::string U32(uint32_t v) {
  return std::string{static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                     static_cast<char>(v >> 24)};
}

inline std::string Value(std::string_view text) {
  return U32(static_cast<uint32_t>(text.size())) + std::string(text);
}

inline std::string FieldBytes(uint32_t tag, std::initializer_list<std::string_view> values) {
  std::string out = U32(tag) + U32(static_cast<uint32_t>(values.size()));
  for (std::string_view v : values)
    out += Value(v);
  return out;
}

} // namespace kdltest
