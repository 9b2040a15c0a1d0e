// The client ids of combo 9013, indexed so that a holdings record's client
// is checked in constant time (answers of a million records meet combos of
// hundreds of thousands of ids).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "holdings/text_pool.h"

namespace vh {

class ClientIdIndex {
public:
  // A client id folded and hashed, its table slot already on its way into
  // the cache: made by Prepare before other work, checked by Contains after
  // it, so the lookup's memory wait overlaps that work.
  struct Probe {
    uint64_t word[2] = {}; // the folded id, zero-padded, length in the last byte
    uint32_t hash = 0;
    bool inlined = true; // false: longer than kInline, looked up in the pool
    std::string_view id;
  };

  void Clear();
  // One entry of the combo; duplicates count as entries but match once.
  void Add(std::string_view id);
  // True when `id` equals an entry, ASCII letter case ignored.
  bool Contains(std::string_view id) const { return Contains(Prepare(id)); }
  // The probe of `id`, which must stay valid until Contains(probe).
  Probe Prepare(std::string_view id) const;
  bool Contains(const Probe& probe) const;
  // The number of combo entries added since the last Clear.
  int EntryCount() const { return entries_; }

private:
  static constexpr size_t kInline = 15;
  // A slot holds a short id itself (the table is all a lookup touches);
  // an empty slot is all zero, which no id's key is (ids have a length).
  struct Slot {
    uint64_t word[2];
  };
  size_t SlotOf(const Probe& p) const;
  void Grow();

  std::vector<Slot> table_;
  size_t used_ = 0;
  TextPool longIds_; // folded ids longer than kInline
  bool hasEmpty_ = false;
  int entries_ = 0;
};

} // namespace vh
