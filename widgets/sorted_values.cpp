#include "widgets/sorted_values.h"

#include <algorithm>
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
// comparisons are one integer comparison.
uint64_t KeyAt(const std::string& s, size_t depth) {
  uint64_t key = 0;
  for (size_t i = depth; i < depth + 8; ++i)
    key = (key << 8) | (i < s.size() ? Fold(static_cast<unsigned char>(s[i])) : 0u);
  return key;
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

// Sorts [first, last), whose texts agree on their first `depth` folded
// bytes: by the next eight, then each run of equal keys by the eight after,
// until the texts are exhausted; ties left then are settled by the full
// collation.
void SortFrom(Entry* first, Entry* last, size_t depth, const std::vector<std::string>& values) {
  if (last - first < 2)
    return;
  depth += SharedLength(first, last, depth, values);
  for (Entry* e = first; e != last; ++e)
    e->key = KeyAt(values[e->index], depth);
  std::sort(first, last, [](const Entry& a, const Entry& b) { return a.key < b.key; });
  for (Entry* run = first; run != last;) {
    Entry* end = run + 1;
    bool longer = values[run->index].size() > depth + 8;
    for (; end != last && end->key == run->key; ++end)
      longer = longer || values[end->index].size() > depth + 8;
    if (end - run > 1) {
      if (longer) {
        SortFrom(run, end, depth + 8, values);
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

std::vector<std::string> SortedDistinctValues(std::vector<std::string> values) {
  std::vector<Entry> order;
  order.reserve(values.size());
  for (size_t i = 0; i < values.size(); ++i)
    if (!values[i].empty())
      order.push_back({0, static_cast<uint32_t>(i)});
  SortFrom(order.data(), order.data() + order.size(), 0, values);
  std::vector<std::string> sorted;
  sorted.reserve(order.size());
  for (const Entry& e : order) {
    std::string& v = values[e.index];
    // The order is total, so equal texts are neighbours.
    if (sorted.empty() || sorted.back() != v)
      sorted.push_back(std::move(v));
  }
  return sorted;
}

} // namespace vh
