// The row engine's per-column key caches: what a whole-column pass (filter,
// sort, top rows, distinct values, custom column texts) reads from each
// cell, kept per store slot so that the next pass need not fetch and convert
// every cell again.
//
//   number columns (comparison types 1, 2, 4, 5)  keys[slot] = order key of
//       the number the sort reads (SignedKey / DecimalKey), 8 bytes a row
//   other data columns, every text of at most 8 bytes and no zero byte
//                                                  keys[slot] = the text
//       itself (ShortTextKey), 8 bytes a row
//   other data columns                             ids[slot] = number of the
//       cell's text in `texts`, 4 bytes a row, plus each distinct text once
//   custom columns                                 keys[slot] = bits of the
//       value the cell shows (atof of its text) or a marker, 8 bytes a row
//
// The engine decides which slots are stale (see RowEngine's change contract)
// and refreshes them at the start of the next pass that reads the column.
#pragma once

#include "grid/distinct_interner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace vh {

// Custom cells without a number: signalling NaNs, which no conversion of a
// text and no arithmetic yields.
inline constexpr uint64_t kCustomLeftEmpty = 0x7FF0000000000001ull;
inline constexpr uint64_t kCustomDividedByZero = 0x7FF0000000000002ull;

struct FreshKey;

struct ColumnKeys {
  enum class Kind : uint8_t { kNumber, kShortText, kText, kCustom };
  Kind kind = Kind::kText;
  int32_t type = 0;            // the comparison type the keys were read for
  std::vector<uint64_t> keys;  // kNumber, kShortText, kCustom
  std::vector<uint32_t> ids;   // kText
  TextInterner texts;          // kText
  std::vector<uint32_t> ranks; // kText: byte-wise rank per text, built on demand
  // kNumber: every slot with item data reads with "%lf" as exactly its
  // key's number, so ">" and "<" filters may compare keys. Once false it
  // stays false until the column is rebuilt.
  bool scanAgrees = true;
  std::vector<uint32_t> dirty; // slots to read again before the next pass
  uint64_t lastUse = 0;

  size_t Slots() const { return kind == Kind::kText ? ids.size() : keys.size(); }
  size_t Bytes() const;
  // Keeps `fresh` as slot `slot`'s key.
  void Store(uint32_t slot, const FreshKey& fresh);
  // Ranks of every text interned so far (refreshed after new texts).
  const std::vector<uint32_t>& Ranks();
};

// One slot's key read afresh from its cell.
struct FreshKey {
  uint64_t key = 0;      // kNumber, kShortText, kCustom
  std::string_view text; // kText: valid until the next read
  bool scanAgrees = true;
};

inline void ColumnKeys::Store(uint32_t slot, const FreshKey& fresh) {
  if (kind == Kind::kText) {
    ids[slot] = texts.Intern(fresh.text);
  } else {
    keys[slot] = fresh.key;
    scanAgrees = scanAgrees && fresh.scanAgrees;
  }
}

// One optional ColumnKeys per column, plus the bookkeeping that keeps them
// in step with the row store. Knows nothing of cell texts.
class KeyCache {
public:
  // Null when `column` has no cache.
  ColumnKeys* Find(int column);
  ColumnKeys& Install(int column, std::unique_ptr<ColumnKeys> keys);
  void Drop(int column);
  void DropAll();
  bool Empty() const { return built_ == 0; }

  // Marks `slot` stale in every cache. A column with more stale slots than
  // a quarter of its rows is dropped: building it again costs less.
  void SlotChanged(uint32_t slot);
  // A slot was inserted at `slot` (later slots move up) or erased there
  // (later slots move down). An inserted slot starts stale.
  void SlotInserted(uint32_t slot);
  void SlotErased(uint32_t slot);

  // Drops least recently used caches until the total is at most `limit`
  // bytes (the last one too, if alone it is larger).
  void Trim(size_t limit);
  size_t Bytes() const;
  // Stamps `keys` as used now.
  void Touch(ColumnKeys& keys) { keys.lastUse = ++clock_; }

private:
  void DropIfTooStale(size_t column);

  std::vector<std::unique_ptr<ColumnKeys>> columns_;
  size_t built_ = 0;
  uint64_t clock_ = 0;
};

} // namespace vh

namespace vh {

class FilterPattern;

// How one filter of a pass reads its column: from the cell texts, or from
// the column's cache.
struct FilterKeys {
  enum class Mode : uint8_t {
    kTexts,         // no usable cache: fetch each text
    kIds,           // each distinct text matched once, then looked up
    kShortTexts,    // each text taken out of its key
    kShortPrefixes, // prefix filters compared with the keys, case folded
    kNumbers,       // ">"/"<" filter on a number column whose keys read as "%lf" does
    kCustomNumbers, // ">"/"<" filter on a custom column's values
    kCustomTexts,   // other filters on a custom column: the text made from the value
  };
  Mode mode = Mode::kTexts;
  ColumnKeys* keys = nullptr;
  std::vector<uint8_t> verdicts; // kIds: 0 not yet matched, 1 miss, 2 match
  // kNumbers: the key ranges [first, second) that match, when the key type
  // allows them; empty ranges mean "read the number of each key".
  std::vector<std::pair<uint64_t, uint64_t>> ranges;
  bool useRanges = false;
  // kShortPrefixes: per alternative, the bytes that must match and their
  // lower-cased value.
  std::vector<std::pair<uint64_t, uint64_t>> prefixes;
  // kIds: the pass's rows were chosen while the cache was built (FilterSweep).
  bool swept = false;
};

// The only filter of a pass, riding along the first build of its column's
// numbered texts: each text is matched when it is first numbered and each
// row's verdict appended as the row is read, so a cold pass reads every
// cell once, as an uncached one does, and leaves the cache behind.
struct FilterSweep {
  const FilterPattern* pattern = nullptr;
  bool exact = false;
  std::vector<int32_t>* map = nullptr;
  std::vector<uint8_t> verdicts; // per text number: 1 miss, 2 match
  size_t rows = 0;               // rows swept so far
};

// The filter's verdict for store slot `slot` from the cache (any mode but
// kTexts).
bool MatchCachedCell(FilterKeys& filter, const FilterPattern& pattern, bool exact, uint32_t slot);

// A pass with this one filter: appends to `map` every slot with item data
// whose cell passes, in store order.
void FilterOneCached(FilterKeys& filter, const FilterPattern& pattern, bool exact,
                     const std::vector<uint64_t>& items, std::vector<int32_t>& map);

} // namespace vh
