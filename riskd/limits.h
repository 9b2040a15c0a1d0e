// The largest numbers the store takes, chosen so that the arithmetic on
// them fits 64 bits: a quantity times a price (a holding's value) stays
// below 10^18, and a lien amount plus such a value stays below 2^63.
#pragma once

#include <cstdint>
#include <optional>

namespace riskd {

inline constexpr int64_t kMaxQuantity = 1'000'000'000;                // shares per field
inline constexpr int64_t kMaxPricePaise = 1'000'000'000;              // ten million rupees
inline constexpr int64_t kMaxAmountPaise = 1'000'000'000'000'000'000; // lien, pay-in, pay-out
inline constexpr int64_t kMaxHaircutBp = 10000;                       // 100%

// a * b, or nullopt when it does not fit 64 bits.
inline std::optional<int64_t> CheckedMul(int64_t a, int64_t b) {
  int64_t out;
  if (__builtin_mul_overflow(a, b, &out))
    return std::nullopt;
  return out;
}

// a + b, or nullopt when it does not fit 64 bits.
inline std::optional<int64_t> CheckedAdd(int64_t a, int64_t b) {
  int64_t out;
  if (__builtin_add_overflow(a, b, &out))
    return std::nullopt;
  return out;
}

} // namespace riskd
