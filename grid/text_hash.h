// Word loads and a fast hash for short texts (cell texts, symbols, client
// ids), shared by the grid's distinct-text table and the holdings text pool.
// Inline: both call it once per text on their hottest paths.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace vh {

inline uint64_t Load8(const char* p) {
  uint64_t v;
  std::memcpy(&v, p, 8);
  return v;
}

inline uint32_t Load4(const char* p) {
  uint32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// Cell texts are short: eight bytes at a time with one multiply each, and
// the last bytes read as overlapping fixed-size words (a variable-length
// copy into a stack word stalls on store forwarding).
inline uint32_t HashText(std::string_view text) {
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

} // namespace vh
