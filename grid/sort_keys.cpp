#include "grid/sort_keys.h"

#include <array>

namespace vh {
namespace {

constexpr int kDigitBits = 11;
constexpr int kPasses = (64 + kDigitBits - 1) / kDigitBits;
constexpr size_t kBuckets = size_t(1) << kDigitBits;

unsigned Digit(uint64_t key, int pass) {
  return unsigned(key >> (pass * kDigitBits)) & (kBuckets - 1);
}

} // namespace

// LSD radix sort with 11-bit digits. All histograms come from one read of
// the keys; a digit that every key shares is skipped, so small integers and
// ranks take two or three passes instead of six.
void RadixSortByKey(std::vector<SortEntry>& entries, std::vector<SortEntry>& scratch) {
  const size_t n = entries.size();
  if (n < 2)
    return;
  std::vector<std::array<uint32_t, kBuckets>> counts(kPasses);
  for (auto& c : counts)
    c.fill(0);
  for (const SortEntry& e : entries)
    for (int pass = 0; pass < kPasses; ++pass)
      ++counts[size_t(pass)][Digit(e.key, pass)];
  scratch.resize(n);
  for (int pass = 0; pass < kPasses; ++pass) {
    auto& count = counts[size_t(pass)];
    if (count[Digit(entries[0].key, pass)] == n)
      continue;
    uint32_t sum = 0;
    for (uint32_t& c : count) {
      const uint32_t here = c;
      c = sum;
      sum += here;
    }
    for (const SortEntry& e : entries)
      scratch[count[Digit(e.key, pass)]++] = e;
    entries.swap(scratch);
  }
}

} // namespace vh
