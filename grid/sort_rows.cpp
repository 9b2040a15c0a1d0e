// Header-click sorting of the displayed rows. Each row's text is fetched and
// converted once per pass; the order then comes from integer keys, which
// gives the same result as converting inside every comparison (rows that
// compare equal keep no defined order either way).
#include "grid/row_engine.h"

#include "grid/distinct_interner.h"
#include "grid/key_cache.h"
#include "grid/row_convert.h"
#include "grid/sort_compare.h"
#include "grid/sort_keys.h"

#include <algorithm>

namespace vh {
namespace {

bool HasNumericKey(int type) {
  return type == kCompareInteger || type == kCompareDecimal || type == kCompareDecimalAlt ||
         type == kCompareLong;
}

// The difference formulas of the integer types wrap on extreme values,
// which orders nothing; the converted values themselves are compared.
uint64_t NumericKey(int type, std::string_view text) {
  switch (type) {
  case kCompareInteger:
    return SignedKey(CAtoi(text));
  case kCompareLong:
    return SignedKey(CAtol(text));
  default:
    return DecimalKey(CAtof(text));
  }
}

} // namespace

void RowEngine::SortOnColumn(int displayColumn) {
  if (displayedCount_ <= 0)
    return;
  const bool sameColumn = displayColumn == previousSortColumn_;
  sortColumn_ = displayColumn;
  direction_ = sameColumn ? -direction_ : -1;
  if (observer_) {
    if (direction_ == 1 && sameColumn) {
      observer_->OnSortMark(-1, displayColumn, 1);
    } else {
      const bool clearOld =
          !sameColumn && previousSortColumn_ >= 0 && previousSortColumn_ < HeaderItemCount();
      observer_->OnSortMark(clearOld ? previousSortColumn_ : -1, displayColumn, 0);
    }
  }
  sortDataColumn_ = DataColumnAt(displayColumn);
  const sTarnColInfo* info = ColumnInfo(sortDataColumn_);
  sortType_ = info ? info->nType : 0;
  SortDisplayed(sortDataColumn_, sortType_, direction_);
  previousSortColumn_ = displayColumn;
  if (observer_)
    observer_->OnRowsReordered();
}

// The first `n` map slots ordered by the store slot they show. Rows are
// read in the order the owner added them, which keeps the owner's records
// in cache however the display was sorted before. A slot whose entry is
// bad or repeats another's comes last.
std::vector<uint32_t> RowEngine::SlotsInStoreOrder(size_t n) const {
  std::vector<int32_t> slotOf(items_.size(), -1);
  std::vector<uint32_t> leftovers;
  for (size_t slot = 0; slot < n; ++slot) {
    const int32_t d = map_[slot];
    if (d >= 0 && size_t(d) < items_.size() && slotOf[size_t(d)] < 0)
      slotOf[size_t(d)] = int32_t(slot);
    else
      leftovers.push_back(uint32_t(slot));
  }
  std::vector<uint32_t> slots;
  slots.reserve(n);
  for (const int32_t slot : slotOf)
    if (slot >= 0)
      slots.push_back(uint32_t(slot));
  slots.insert(slots.end(), leftovers.begin(), leftovers.end());
  return slots;
}

// Calls sink(slot, key) for each of the first `n` map slots, in store
// order. A text column's key is the text's number in `texts`, to be ranked
// once all are known.
template <typename Sink>
void RowEngine::ForEachKey(int column, int type, size_t n, TextInterner& texts, Sink&& sink) {
  CustomColumnFormula* formula = nullptr;
  if (HasDataSource() && (type == kCompareDecimal || type == kCompareDecimalAlt) &&
      column >= dataColumnCount_ && size_t(column - dataColumnCount_) < formulas_.size())
    formula = formulas_[size_t(column - dataColumnCount_)].get();
  std::vector<SortEntry> cached;
  if (type != kCompareText && CachedSortKeys(column, type, n, cached)) {
    for (const SortEntry& e : cached)
      sink(e.index, e.key);
    return;
  }
  std::string scratch;
  for (const uint32_t slot : SlotsInStoreOrder(n)) {
    const uint64_t item = ItemDataOfIndex(map_[slot]);
    double value = 0;
    if (item != 0 && formula && formula->CalculateSortKey(item, *this, dataColumnCount_, value)) {
      sink(slot, DecimalKey(value));
      continue;
    }
    const std::string_view text = item != 0 && column >= 0 ? PassText(item, column, scratch) : "";
    sink(slot, type == kCompareText ? texts.Intern(text) : NumericKey(type, text));
  }
}

// Fills `keys` for the first `n` map slots and returns true for the types
// whose order is an integer order (text by rank among the distinct texts).
bool RowEngine::BuildKeys(int column, int type, size_t n, std::vector<SortEntry>& keys) {
  if (!HasNumericKey(type) && type != kCompareText)
    return false;
  if (CachedSortKeys(column, type, n, keys))
    return true;
  keys.resize(n);
  TextInterner texts;
  ForEachKey(column, type, n, texts, [&](uint32_t slot, uint64_t key) {
    keys[slot] = SortEntry{key, slot};
  });
  if (type == kCompareText) {
    const std::vector<uint32_t> rank = texts.Ranks();
    for (SortEntry& e : keys)
      e.key = rank[e.key];
  }
  return true;
}

// Date and time columns keep their pairwise rule; a merge sort stays within
// bounds even if that rule is not a consistent order.
std::vector<uint32_t> RowEngine::OrderByDateTime(int column, size_t n, int direction) {
  std::string scratch;
  TextInterner local;
  ColumnKeys* cache = column < dataColumnCount_ ? PassKeys(column) : nullptr;
  if (cache && cache->kind != ColumnKeys::Kind::kText)
    cache = nullptr;
  TextInterner& texts = cache ? cache->texts : local;
  std::vector<uint32_t> ids(n);
  if (cache) {
    const uint32_t empty = texts.Intern({});
    for (uint32_t slot = 0; slot < n; ++slot) {
      const int32_t d = map_[slot];
      ids[slot] = d >= 0 && size_t(d) < items_.size() ? cache->ids[size_t(d)] : empty;
    }
  } else {
    for (const uint32_t slot : SlotsInStoreOrder(n)) {
      const uint64_t item = ItemDataOfIndex(map_[slot]);
      ids[slot] = texts.Intern(item != 0 && column >= 0 ? PassText(item, column, scratch) : "");
    }
  }
  std::vector<uint32_t> order(n);
  for (uint32_t i = 0; i < n; ++i)
    order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
    return CompareDateTime(texts.Text(ids[a]), texts.Text(ids[b]), direction) < 0;
  });
  return order;
}

void RowEngine::SortDisplayed(int column, int type, int direction) {
  const size_t n = std::min(size_t(std::max(displayedCount_, 0)), map_.size());
  std::vector<uint32_t> order;
  std::vector<SortEntry> keys;
  if (BuildKeys(column, type, n, keys)) {
    std::vector<SortEntry> scratch;
    RadixSortByKey(keys, scratch);
    order.resize(n);
    for (size_t i = 0; i < n; ++i)
      order[i] = keys[direction == 1 ? n - 1 - i : i].index;
  } else if (type == kCompareDateTime) {
    order = OrderByDateTime(column, n, direction);
  } else {
    return; // every row compares equal
  }
  std::vector<int32_t> sorted(n);
  for (size_t i = 0; i < n; ++i)
    sorted[i] = map_[order[i]];
  for (size_t i = 0; i < n; ++i)
    map_[reverse_ ? n - 1 - i : i] = sorted[i];
  EndPass();
}

// Numeric columns keep only the `n` best rows while reading, in a heap
// whose top is the smallest of them.
std::vector<int32_t> RowEngine::LargestRows(int column, size_t n) {
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info || !HasDataSource())
    return {};
  const size_t count = std::min(size_t(std::max(displayedCount_, 0)), map_.size());
  n = std::min(n, count);
  std::vector<int32_t> result;
  result.reserve(n);
  std::vector<SortEntry> keys;
  // Equal values go in map order, whatever order the keys are read in.
  const auto larger = [](const SortEntry& a, const SortEntry& b) {
    return a.key > b.key || (a.key == b.key && a.index < b.index);
  };
  if (HasNumericKey(info->nType) && n > 0 &&
      CachedLargestRows(column, info->nType, count, n, result)) {
    EndPass();
    return result;
  }
  if (HasNumericKey(info->nType) && n > 0) {
    TextInterner unused;
    ForEachKey(column, info->nType, count, unused, [&](uint32_t slot, uint64_t key) {
      if (keys.size() < n) {
        keys.push_back(SortEntry{key, slot});
        std::push_heap(keys.begin(), keys.end(), larger);
      } else if (larger(SortEntry{key, slot}, keys.front())) {
        std::pop_heap(keys.begin(), keys.end(), larger);
        keys.back() = SortEntry{key, slot};
        std::push_heap(keys.begin(), keys.end(), larger);
      }
    });
    std::sort_heap(keys.begin(), keys.end(), larger);
    for (const SortEntry& e : keys)
      result.push_back(map_[e.index]);
  } else if (BuildKeys(column, info->nType, count, keys)) {
    std::partial_sort(keys.begin(), keys.begin() + ptrdiff_t(n), keys.end(), larger);
    for (size_t i = 0; i < n; ++i)
      result.push_back(map_[keys[i].index]);
  } else if (info->nType == kCompareDateTime) {
    const std::vector<uint32_t> order = OrderByDateTime(column, count, -1);
    for (size_t i = 0; i < n; ++i)
      result.push_back(map_[order[i]]);
  } else {
    result.assign(map_.begin(), map_.begin() + ptrdiff_t(n));
  }
  EndPass();
  return result;
}

} // namespace vh
