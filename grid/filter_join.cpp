#include "grid/filter_join.h"

#include <cstdint>
#include <string_view>
#include <unordered_map>

namespace vh {
namespace {

// Polynomial hashes modulo 2^64. Collisions only cost a comparison: every
// hash match is confirmed on the text.
constexpr uint64_t kBase = 1099511628211ull;

uint64_t HashOf(std::string_view s) {
  uint64_t h = 0;
  for (char c : s)
    h = h * kBase + static_cast<uint8_t>(c);
  return h;
}

// The picks of one length, found as soon as they occur in the joined text by
// hashing every window of that length as the text grows.
struct LengthGroup {
  size_t length = 0;
  uint64_t power = 1;  // kBase^length
  uint64_t window = 0; // hash of the last `length` bytes
  std::unordered_multimap<uint64_t, size_t> picksByHash;
};

class Joiner {
public:
  explicit Joiner(const std::vector<std::string>& picked) : picked_(picked), found_(picked.size()) {
    // A length with a single pick is cheaper to search for directly, once.
    std::unordered_map<size_t, size_t> count;
    for (const std::string& p : picked)
      ++count[p.size()];
    for (size_t i = 0; i < picked.size(); ++i) {
      const size_t n = picked[i].size();
      if (n == 0 || count[n] < 2)
        continue;
      auto [it, added] = groupOf_.try_emplace(n, groups_.size());
      if (added) {
        groups_.push_back({n, 1, 0, {}});
        for (size_t k = 0; k < n; ++k)
          groups_.back().power *= kBase;
      }
      groups_[it->second].picksByHash.emplace(HashOf(picked[i]), i);
    }
  }

  std::string Join() {
    for (size_t i = 0; i < picked_.size(); ++i) {
      const std::string& p = picked_[i];
      const bool occurs =
          p.empty() ||
          (groupOf_.count(p.size()) ? found_[i] != 0 : joined_.find(p) != std::string::npos);
      if (occurs)
        continue;
      if (!joined_.empty())
        Append("~");
      Append(p);
    }
    return std::move(joined_);
  }

private:
  void Append(std::string_view piece) {
    for (char c : piece) {
      joined_.push_back(c);
      const size_t end = joined_.size();
      for (LengthGroup& g : groups_) {
        g.window = g.window * kBase + static_cast<uint8_t>(c);
        if (end > g.length)
          g.window -= g.power * static_cast<uint8_t>(joined_[end - 1 - g.length]);
        if (end < g.length)
          continue;
        const auto [first, last] = g.picksByHash.equal_range(g.window);
        for (auto it = first; it != last; ++it)
          if (!found_[it->second] &&
              joined_.compare(end - g.length, g.length, picked_[it->second]) == 0)
            found_[it->second] = 1;
      }
    }
  }

  const std::vector<std::string>& picked_;
  std::vector<char> found_; // pick i occurs in the text joined so far
  std::vector<LengthGroup> groups_;
  std::unordered_map<size_t, size_t> groupOf_; // length -> index in groups_
  std::string joined_;
};

} // namespace

std::string JoinFilterTexts(const std::vector<std::string>& picked) {
  return Joiner(picked).Join();
}

} // namespace vh
