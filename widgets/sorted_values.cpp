#include "widgets/sorted_values.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vh {
namespace {

inline unsigned char Fold(unsigned char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<unsigned char>(c + ('a' - 'A')) : c;
}

struct Entry {
  uint64_t key;
  uint32_t index;
};

// Eight folded bytes of `s` from `depth`, most significant first,
// zero-padded: keys order like the folded texts at that depth, so most
// comparisons are one integer comparison. Eight whole bytes are folded at
// once: a byte gets 0x20 when it lies in 'A'..'Z' (its top bit clear, its
// low seven bits at least 'A' and at most 'Z').
uint64_t KeyAt(const std::string& s, size_t depth) {
  static_assert(std::endian::native == std::endian::little, "the byte swap makes keys big-endian");
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kTops = 0x8080808080808080ull;
  uint64_t x = 0; // zero bytes stay zero: the padding
  if (depth < s.size())
    std::memcpy(&x, s.data() + depth, std::min<size_t>(8, s.size() - depth));
  const uint64_t low = x & ~kTops;
  const uint64_t atLeastA = low + kOnes * (0x80 - 'A');
  const uint64_t aboveZ = low + kOnes * (0x80 - 'Z' - 1);
  const uint64_t upper = atLeastA & ~aboveZ & ~x & kTops;
  return __builtin_bswap64(x | (upper >> 2));
}

// How many folded bytes from `depth` every text of the range shares, so that
// a common prefix (all client ids starting "CLIENT-") costs no sort pass.
size_t SharedLength(const Entry* first, const Entry* last, size_t depth,
                    const std::vector<std::string>& values) {
  const std::string& head = values[first->index];
  size_t shared = head.size() > depth ? head.size() - depth : 0;
  for (const Entry* e = first + 1; e != last && shared > 0; ++e) {
    const std::string& s = values[e->index];
    size_t n = 0;
    const size_t limit = std::min(shared, s.size() > depth ? s.size() - depth : 0);
    while (n < limit && Fold(static_cast<unsigned char>(s[depth + n])) ==
                            Fold(static_cast<unsigned char>(head[depth + n])))
      ++n;
    shared = n;
  }
  return shared;
}

// Below this many entries a comparison sort beats the radix passes.
constexpr std::ptrdiff_t kRadixMinimum = 2048;

// Stable LSD radix sort on the keys, one byte a pass; a byte every key
// shares (the zero padding of short texts, a common digit) costs no pass.
// Comparison sorting a million keys was most of opening the pop-up.
void RadixSortByKey(Entry* first, Entry* last, std::vector<Entry>& scratch) {
  const size_t n = size_t(last - first);
  std::array<std::array<uint32_t, 256>, 8> counts{};
  for (const Entry* e = first; e != last; ++e)
    for (size_t b = 0; b < 8; ++b)
      ++counts[b][(e->key >> (8 * b)) & 0xFF];
  scratch.resize(std::max(scratch.size(), n));
  Entry* from = first;
  Entry* to = scratch.data();
  for (size_t b = 0; b < 8; ++b) {
    std::array<uint32_t, 256>& slot = counts[b];
    if (slot[(first->key >> (8 * b)) & 0xFF] == n)
      continue;
    uint32_t sum = 0;
    for (uint32_t& c : slot) {
      const uint32_t here = c;
      c = sum;
      sum += here;
    }
    for (const Entry* e = from; e != from + n; ++e)
      to[slot[(e->key >> (8 * b)) & 0xFF]++] = *e;
    std::swap(from, to);
  }
  if (from != first)
    std::copy(from, from + n, first);
}

// Sorts [first, last), whose texts agree on their first `depth` folded
// bytes: by the next eight, then each run of equal keys by the eight after,
// until the texts are exhausted; ties left then are settled by the full
// collation.
void SortFrom(Entry* first, Entry* last, size_t depth, const std::vector<std::string>& values,
              std::vector<Entry>& scratch) {
  if (last - first < 2)
    return;
  depth += SharedLength(first, last, depth, values);
  for (Entry* e = first; e != last; ++e)
    e->key = KeyAt(values[e->index], depth);
  if (last - first >= kRadixMinimum)
    RadixSortByKey(first, last, scratch);
  else
    std::sort(first, last, [](const Entry& a, const Entry& b) { return a.key < b.key; });
  // Runs are found by key alone: with distinct texts nearly every run is a
  // single entry, and reading its text here would be a cache miss each.
  for (Entry* run = first; run != last;) {
    Entry* end = run + 1;
    while (end != last && end->key == run->key)
      ++end;
    if (end - run > 1) {
      bool longer = false;
      for (const Entry* e = run; e != end && !longer; ++e)
        longer = values[e->index].size() > depth + 8;
      if (longer) {
        SortFrom(run, end, depth + 8, values, scratch);
      } else {
        std::sort(run, end, [&](const Entry& a, const Entry& b) {
          return CompareListTexts(values[a.index], values[b.index]) < 0;
        });
      }
    }
    run = end;
  }
}

} // namespace

int CompareListTexts(const std::string& a, const std::string& b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const unsigned char x = Fold(static_cast<unsigned char>(a[i]));
    const unsigned char y = Fold(static_cast<unsigned char>(b[i]));
    if (x != y)
      return x < y ? -1 : 1;
  }
  if (a.size() != b.size())
    return a.size() < b.size() ? -1 : 1;
  const int bytes = std::memcmp(a.data(), b.data(), n);
  return bytes < 0 ? -1 : (bytes > 0 ? 1 : 0);
}

std::vector<uint32_t> SortedValueOrder(const std::vector<std::string>& values) {
  std::vector<Entry> order;
  order.reserve(values.size());
  for (size_t i = 0; i < values.size(); ++i)
    if (!values[i].empty())
      order.push_back({0, static_cast<uint32_t>(i)});
  std::vector<Entry> scratch;
  SortFrom(order.data(), order.data() + order.size(), 0, values, scratch);
  scratch = {};
  std::vector<uint32_t> indexes;
  indexes.reserve(order.size());
  for (size_t i = 0; i < order.size(); ++i) {
    // The order is total, so equal texts are neighbours with equal keys; a
    // differing key spares reading two texts in random memory order.
    const Entry& e = order[i];
    if (i > 0 && order[i - 1].key == e.key && values[order[i - 1].index] == values[e.index])
      continue;
    indexes.push_back(e.index);
  }
  return indexes;
}

std::vector<std::string> SortedDistinctValues(std::vector<std::string> values) {
  const std::vector<uint32_t> order = SortedValueOrder(values);
  std::vector<std::string> sorted;
  sorted.reserve(order.size());
  for (const uint32_t i : order)
    sorted.push_back(std::move(values[i]));
  return sorted;
}

} // namespace vh
