// The client ids of combo 9013, indexed so that a holdings record's client
// is checked in constant time (answers of a million records meet combos of
// hundreds of thousands of ids).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "holdings/text_pool.h"

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
  // Texts are kept letter-folded in a flat table; a lookup folds into a
  // reused buffer, so neither side allocates per record.
  std::string_view Folded(std::string_view id) const;
  TextPool ids_;
  mutable std::string folded_;
  bool hasEmpty_ = false; // the pool always holds the empty text
  int entries_ = 0;
};

} // namespace vh
