// The client ids of combo 9013, indexed so that a holdings record's client
// is checked in constant time (answers of a million records meet combos of
// hundreds of thousands of ids).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>

namespace vh {

class ClientIdIndex {
public:
  void Clear();
  // One entry of the combo; duplicates count as entries but match once.
  void Add(std::string_view id);
  // True when `id` equals an entry, ASCII letter case ignored.
  bool Contains(std::string_view id) const;
  // The number of combo entries added since the last Clear.
  int EntryCount() const { return entries_; }

private:
  struct Hash {
    using is_transparent = void;
    size_t operator()(std::string_view s) const;
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
  };
  std::unordered_set<std::string, Hash, Equal> ids_;
  int entries_ = 0;
};

} // namespace vh
