// Hand-assembled encodings, so the tests state the byte layout independently
// of the encoder, and a check of what a message reads back.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kdl/message.h"

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

using Reads = std::map<uint32_t, std::vector<std::string>>;

// Every field of `expected` reads back with exactly its values, in order.
inline void ExpectReads(const kdl::Message& m, const Reads& expected) {
  for (const auto& [tag, values] : expected) {
    EXPECT_EQ(m.Count(tag), values.size()) << "field " << tag;
    for (uint32_t i = 0; i < values.size(); ++i)
      EXPECT_EQ(m.Text(tag, i), values[i]) << "field " << tag << " value " << i;
  }
}

} // namespace kdltest
