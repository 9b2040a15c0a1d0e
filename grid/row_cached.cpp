// The engine's passes over key caches: filters, sort keys, top rows,
// distinct values and column texts, each giving what the uncached pass
// gives.
#include "grid/custom_column_detail.h"
#include "grid/expression_detail.h"
#include "grid/filter_match.h"
#include "grid/key_cache.h"
#include "grid/key_values.h"
#include "grid/row_engine.h"
#include "grid/sort_keys.h"

#include <algorithm>
#include <utility>

namespace vh {

using namespace keys;

namespace {

// The text of store slot `d` from a cache that keeps texts;
// `buffer` holds custom::kFormatBufferSize characters.
std::string_view KeptText(const ColumnKeys& cache, size_t d, char* buffer) {
  switch (cache.kind) {
  case ColumnKeys::Kind::kText:
    return cache.texts.Text(cache.ids[d]);
  case ColumnKeys::Kind::kShortText:
    return ShortText(cache.keys[d], buffer);
  case ColumnKeys::Kind::kCustom:
    return CustomText(cache.keys[d], buffer);
  case ColumnKeys::Kind::kNumber:
    break;
  }
  return {};
}

// LargestRows for a map that shows every store slot once, reading the keys
// in store order instead of map order (a sorted map makes every read a
// cache miss): the n-th largest key first, then, along the map, only the
// slots at or above it. The result is the map-order heap's. False, nothing
// appended, when the map shows some slot twice or none, or too many slots
// tie at the bound.
template <typename KeyOf>
bool LargestInStoreOrder(const std::vector<int32_t>& map, size_t rows, size_t n, KeyOf keyOf,
                         std::vector<int32_t>& result) {
  constexpr size_t kMaxCandidates = 4096;
  if (n > kMaxCandidates || map.size() < rows)
    return false;
  std::vector<uint64_t> best; // the n largest keys so far, smallest on top
  best.reserve(n);
  for (size_t d = 0; d < rows; ++d) {
    const uint64_t key = keyOf(d);
    if (best.size() < n) {
      best.push_back(key);
      std::push_heap(best.begin(), best.end(), std::greater<>());
    } else if (key > best.front()) {
      std::pop_heap(best.begin(), best.end(), std::greater<>());
      best.back() = key;
      std::push_heap(best.begin(), best.end(), std::greater<>());
    }
  }
  const uint64_t bound = best.front();
  std::vector<uint64_t> marked((rows + 63) / 64, 0);
  size_t candidates = 0;
  for (size_t d = 0; d < rows; ++d) {
    if (keyOf(d) < bound)
      continue;
    if (++candidates > kMaxCandidates)
      return false;
    marked[d / 64] |= uint64_t{1} << (d % 64);
  }
  std::vector<SortEntry> found; // key, map position
  std::vector<int32_t> slots;
  for (size_t s = 0; s < rows; ++s) {
    const int32_t d = map[s];
    if (d < 0 || size_t(d) >= rows)
      return false;
    if (marked[size_t(d) / 64] >> (size_t(d) % 64) & 1) {
      found.push_back(SortEntry{keyOf(size_t(d)), uint32_t(s)});
      slots.push_back(d);
    }
  }
  std::sort(slots.begin(), slots.end());
  if (slots.size() != candidates || std::adjacent_find(slots.begin(), slots.end()) != slots.end())
    return false;
  std::sort(found.begin(), found.end(), [](const SortEntry& a, const SortEntry& b) {
    return a.key > b.key || (a.key == b.key && a.index < b.index);
  });
  for (size_t i = 0; i < n; ++i)
    result.push_back(map[found[i].index]);
  return true;
}

} // namespace

bool MatchCachedCell(FilterKeys& filter, const FilterPattern& pattern, bool exact, uint32_t slot) {
  ColumnKeys& keys = *filter.keys;
  switch (filter.mode) {
  case FilterKeys::Mode::kIds: {
    const uint32_t id = keys.ids[slot];
    uint8_t& verdict = filter.verdicts[id];
    if (verdict == 0)
      verdict = pattern.Matches(keys.texts.Text(id), exact) ? 2 : 1;
    return verdict == 2;
  }
  case FilterKeys::Mode::kShortPrefixes: {
    const uint64_t lowered = LowerShortKey(keys.keys[slot]);
    for (const auto& [mask, needle] : filter.prefixes)
      if ((lowered & mask) == needle)
        return true;
    return false;
  }
  case FilterKeys::Mode::kShortTexts: {
    char buffer[8];
    return pattern.Matches(ShortText(keys.keys[slot], buffer), exact);
  }
  case FilterKeys::Mode::kNumbers:
    return pattern.MatchesNumber(NumberOfKey(keys.type, keys.keys[slot]));
  case FilterKeys::Mode::kCustomNumbers: {
    const uint64_t bits = keys.keys[slot];
    return IsCustomNumber(bits) && pattern.MatchesNumber(CustomNumber(bits));
  }
  case FilterKeys::Mode::kCustomTexts: {
    char buffer[custom::kFormatBufferSize];
    return pattern.Matches(CustomText(keys.keys[slot], buffer), exact);
  }
  case FilterKeys::Mode::kTexts:
    break;
  }
  return false;
}

void FilterOneCached(FilterKeys& filter, const FilterPattern& pattern, bool exact,
                     const std::vector<uint64_t>& items, std::vector<int32_t>& map) {
  const ColumnKeys& keys = *filter.keys;
  const size_t n = std::min(items.size(), keys.Slots());
  if (filter.mode == FilterKeys::Mode::kShortPrefixes && filter.prefixes.size() == 1) {
    const uint64_t* key = keys.keys.data();
    const auto [mask, needle] = filter.prefixes[0];
    // The key first: most rows fail on it, and then their item data is
    // never read, half the memory traffic of the pass.
    for (size_t d = 0; d < n; ++d)
      if ((LowerShortKey(key[d]) & mask) == needle && items[d] != 0)
        map.push_back(int32_t(d));
    return;
  }
  if (filter.mode == FilterKeys::Mode::kNumbers && filter.useRanges) {
    const uint64_t* key = keys.keys.data();
    const auto& ranges = filter.ranges;
    if (ranges.size() == 1) {
      const uint64_t low = ranges[0].first;
      const uint64_t width = ranges[0].second - low;
      for (size_t d = 0; d < n; ++d)
        if (key[d] - low < width && items[d] != 0)
          map.push_back(int32_t(d));
      return;
    }
    for (size_t d = 0; d < n; ++d) {
      if (items[d] == 0)
        continue;
      for (const auto& range : ranges) {
        if (key[d] - range.first < range.second - range.first) {
          map.push_back(int32_t(d));
          break;
        }
      }
    }
    return;
  }
  if (filter.mode == FilterKeys::Mode::kIds) {
    // Every distinct text is matched up front, so the loop over the rows
    // reads two small arrays and calls nothing.
    const uint32_t* id = keys.ids.data();
    std::vector<uint8_t>& verdicts = filter.verdicts;
    for (uint32_t t = 0; t < verdicts.size(); ++t)
      verdicts[t] = pattern.Matches(keys.texts.Text(t), exact) ? 2 : 1;
    for (size_t d = 0; d < n; ++d)
      if (verdicts[id[d]] == 2 && items[d] != 0)
        map.push_back(int32_t(d));
    return;
  }
  if (filter.mode == FilterKeys::Mode::kNumbers) { // long columns
    for (size_t d = 0; d < n; ++d)
      if (items[d] != 0 && pattern.MatchesNumber(NumberOfKey(keys.type, keys.keys[d])))
        map.push_back(int32_t(d));
    return;
  }
  for (size_t d = 0; d < n; ++d)
    if (items[d] != 0 && MatchCachedCell(filter, pattern, exact, uint32_t(d)))
      map.push_back(int32_t(d));
}

// --- cached passes -----------------------------------------------------------------

FilterKeys RowEngine::PrepareFilterKeys(int column, const FilterPattern& pattern, bool exact,
                                        std::vector<int32_t>* sweepMap) {
  FilterKeys filter;
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info)
    return filter;
  const bool numbers = !exact && pattern.ComparesNumbersOnly();
  // A number column keeps no texts: only number-only filters can use it.
  if (column < dataColumnCount_ && IsNumberType(info->nType) && !numbers)
    return filter;
  FilterSweep sweep{&pattern, exact, sweepMap, {}, 0};
  filter.keys = PassKeys(column, sweepMap ? &sweep : nullptr);
  if (!filter.keys)
    return filter;
  switch (filter.keys->kind) {
  case ColumnKeys::Kind::kShortText: {
    filter.mode = FilterKeys::Mode::kShortTexts;
    // A prefix of up to 8 bytes is a short text too: the cell begins with
    // it exactly when the key's first bytes, lower-cased, equal its own
    // (a shorter cell has zero bytes there, which no prefix has).
    std::vector<std::string_view> prefixes;
    if (exact || !pattern.PrefixesOnly(prefixes))
      break;
    for (const std::string_view prefix : prefixes) {
      uint64_t key = 0;
      if (!ShortTextKey(prefix, key))
        continue; // longer than any kept text, or with a zero byte: never begins one
      const uint64_t mask = ~uint64_t{0} << (8 * (8 - prefix.size()));
      filter.prefixes.emplace_back(mask, LowerShortKey(key) & mask);
    }
    filter.mode = FilterKeys::Mode::kShortPrefixes;
    break;
  }
  case ColumnKeys::Kind::kText:
    filter.mode = FilterKeys::Mode::kIds;
    filter.swept = sweepMap && sweep.rows == filter.keys->Slots();
    // A sweep has already judged every text it numbered.
    if (filter.swept)
      filter.verdicts = std::move(sweep.verdicts);
    else
      filter.verdicts.assign(filter.keys->texts.Size(), 0);
    break;
  case ColumnKeys::Kind::kNumber:
    if (filter.keys->scanAgrees) {
      filter.mode = FilterKeys::Mode::kNumbers;
      filter.useRanges = KeyRanges(filter.keys->type, pattern, filter.ranges);
    }
    break;
  case ColumnKeys::Kind::kCustom:
    filter.mode = numbers ? FilterKeys::Mode::kCustomNumbers : FilterKeys::Mode::kCustomTexts;
    break;
  }
  return filter;
}

// The same keys ForEachKey and BuildKeys make, from the cache.
bool RowEngine::CachedSortKeys(int column, int type, size_t n, std::vector<SortEntry>& keys) {
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info || !(IsNumberType(type) || type == kCompareText))
    return false;
  // A number column's keys are read for its own type; a text column's
  // texts serve only the text order.
  if (column < dataColumnCount_ && (IsNumberType(type) != IsNumberType(info->nType)))
    return false;
  ColumnKeys* cache = PassKeys(column);
  if (!cache || cache->type != type)
    return false;
  keys.resize(n);
  const size_t rows = items_.size();
  const auto slotOf = [&](uint32_t s) {
    const int32_t d = map_[s];
    return d >= 0 && size_t(d) < rows ? int64_t(d) : -1;
  };
  switch (cache->kind) {
  case ColumnKeys::Kind::kNumber: {
    const uint64_t empty = IsIntegerType(type) ? SignedKey(0) : DecimalKey(0);
    for (uint32_t s = 0; s < n; ++s) {
      const int64_t d = slotOf(s);
      keys[s] = SortEntry{d >= 0 ? cache->keys[size_t(d)] : empty, s};
    }
    return true;
  }
  case ColumnKeys::Kind::kShortText: // the keys order as the texts do
    for (uint32_t s = 0; s < n; ++s) {
      const int64_t d = slotOf(s);
      keys[s] = SortEntry{d >= 0 ? cache->keys[size_t(d)] : 0, s};
    }
    return true;
  case ColumnKeys::Kind::kText: {
    const uint32_t emptyId = cache->texts.Intern({});
    const std::vector<uint32_t>& rank = cache->Ranks();
    const uint32_t emptyRank = rank[emptyId];
    for (uint32_t s = 0; s < n; ++s) {
      const int64_t d = slotOf(s);
      keys[s] = SortEntry{d >= 0 ? rank[cache->ids[size_t(d)]] : emptyRank, s};
    }
    return true;
  }
  case ColumnKeys::Kind::kCustom:
    break;
  }
  char buffer[custom::kFormatBufferSize];
  if (type == kCompareDecimal || type == kCompareDecimalAlt) {
    for (uint32_t s = 0; s < n; ++s) {
      const int64_t d = slotOf(s);
      keys[s] = SortEntry{DecimalKey(d >= 0 ? CustomSortNumber(cache->keys[size_t(d)]) : 0.0), s};
    }
    return true;
  }
  TextInterner texts;
  bool unused = false;
  for (uint32_t s = 0; s < n; ++s) {
    const int64_t d = slotOf(s);
    const std::string_view text =
        d >= 0 ? CustomText(cache->keys[size_t(d)], buffer) : std::string_view();
    keys[s] =
        SortEntry{type == kCompareText ? texts.Intern(text) : NumberKey(type, text, unused), s};
  }
  if (type == kCompareText) {
    const std::vector<uint32_t> rank = texts.Ranks();
    for (SortEntry& e : keys)
      e.key = rank[e.key];
  }
  return true;
}

// LargestRows over cached number or custom keys, read straight from the
// cache in map order; the same total order as the uncached heap.
bool RowEngine::CachedLargestRows(int column, int type, size_t count, size_t n,
                                  std::vector<int32_t>& result) {
  const sTarnColInfo* info = ColumnInfo(column);
  const bool custom = column >= dataColumnCount_;
  if (!info || (!custom && !IsNumberType(info->nType)) ||
      (custom && type != kCompareDecimal && type != kCompareDecimalAlt))
    return false;
  ColumnKeys* cache = PassKeys(column);
  if (!cache ||
      (cache->kind != ColumnKeys::Kind::kNumber && cache->kind != ColumnKeys::Kind::kCustom) ||
      cache->type != type)
    return false;
  const auto larger = [](const SortEntry& a, const SortEntry& b) {
    return a.key > b.key || (a.key == b.key && a.index < b.index);
  };
  const uint64_t empty = IsIntegerType(type) ? SignedKey(0) : DecimalKey(0);
  const uint64_t* keys = cache->keys.data();
  const size_t rows = items_.size();
  const auto keyOf = [&](size_t d) {
    return custom ? DecimalKey(CustomSortNumber(keys[d])) : keys[d];
  };
  if (count == rows && LargestInStoreOrder(map_, rows, n, keyOf, result))
    return true;
  std::vector<SortEntry> heap;
  heap.reserve(n + 1);
  for (uint32_t s = 0; s < count; ++s) {
    const int32_t d = map_[s];
    uint64_t key = empty;
    if (d >= 0 && size_t(d) < rows)
      key = custom ? DecimalKey(CustomSortNumber(keys[d])) : keys[d];
    if (heap.size() == n && key < heap.front().key)
      continue; // the common case once the heap is full
    const SortEntry entry{key, s};
    if (heap.size() < n) {
      heap.push_back(entry);
      std::push_heap(heap.begin(), heap.end(), larger);
    } else if (larger(entry, heap.front())) {
      std::pop_heap(heap.begin(), heap.end(), larger);
      heap.back() = entry;
      std::push_heap(heap.begin(), heap.end(), larger);
    }
  }
  std::sort_heap(heap.begin(), heap.end(), larger);
  for (const SortEntry& e : heap)
    result.push_back(map_[e.index]);
  return true;
}

// Walking the rows top to bottom and keeping each text at its first sight
// gives the order of first display with no sort. Short texts are told apart
// by their keys (one key, one text), so a million of them are neither
// decoded nor hashed as texts until they are known to be new.
bool RowEngine::CachedDistinctValues(int column, size_t n, std::vector<std::string>& values) {
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info || (column < dataColumnCount_ && IsNumberType(info->nType)))
    return false;
  ColumnKeys* cache = PassKeys(column);
  if (!cache || cache->kind == ColumnKeys::Kind::kNumber)
    return false;
  const auto storeSlot = [&](size_t i) -> int64_t {
    const int32_t d = map_[reverse_ ? n - 1 - i : i];
    return d < 0 || size_t(d) >= items_.size() || items_[size_t(d)] == 0 ? -1 : d;
  };
  char buffer[custom::kFormatBufferSize];
  switch (cache->kind) {
  case ColumnKeys::Kind::kText: {
    std::vector<bool> seen(cache->texts.Size());
    for (size_t i = 0; i < n; ++i) {
      const int64_t d = storeSlot(i);
      if (d < 0)
        continue;
      const uint32_t id = cache->ids[size_t(d)];
      if (id < seen.size() && !seen[id] && !cache->texts.Text(id).empty()) {
        seen[id] = true;
        values.emplace_back(cache->texts.Text(id));
      }
    }
    break;
  }
  case ColumnKeys::Kind::kShortText: {
    // Open addressing on the keys; 0 is the empty text, never kept.
    int bits = 6;
    while ((size_t(1) << bits) < 2 * n)
      ++bits;
    const size_t size = size_t(1) << bits;
    std::vector<uint64_t> table(size, 0);
    const auto home = [bits](uint64_t key) {
      return size_t((key * 0x9E3779B97F4A7C15ull) >> (64 - bits));
    };
    // The table is far larger than the cache: its slot for a row a little
    // further down is fetched while this row is looked up.
    constexpr size_t kAhead = 16;
    for (size_t i = 0; i < n; ++i) {
      if (const int64_t ahead = i + kAhead < n ? storeSlot(i + kAhead) : -1; ahead >= 0)
        __builtin_prefetch(&table[home(cache->keys[size_t(ahead)])]);
      const int64_t d = storeSlot(i);
      const uint64_t key = d < 0 ? 0 : cache->keys[size_t(d)];
      if (key == 0)
        continue;
      size_t at = home(key);
      while (table[at] != 0 && table[at] != key)
        at = (at + 1) & (size - 1);
      if (table[at] == 0) {
        table[at] = key;
        values.emplace_back(ShortText(key, buffer));
      }
    }
    break;
  }
  default: { // custom cells: values that differ may show the same text
    TextInterner seen;
    for (size_t i = 0; i < n; ++i) {
      const int64_t d = storeSlot(i);
      const std::string_view text =
          d < 0 ? std::string_view() : KeptText(*cache, size_t(d), buffer);
      if (!text.empty() && seen.Intern(text) == values.size())
        values.emplace_back(text);
    }
    break;
  }
  }
  return true;
}

bool RowEngine::DisplayedCustomNumbers(int column, std::vector<double>& values) {
  if (!HasDataSource() || column < dataColumnCount_ || column >= ColumnCount())
    return false;
  values.assign(size_t(displayedCount_), 0.0);
  const ColumnKeys* cache = PassKeys(column);
  std::string text;
  for (int p = 0; p < displayedCount_; ++p) {
    const int32_t d = map_[size_t(Mirror(p))];
    if (d < 0 || size_t(d) >= items_.size() || items_[size_t(d)] == 0)
      continue;
    if (cache) {
      values[size_t(p)] = CustomSortNumber(cache->keys[size_t(d)]);
      continue;
    }
    text.clear();
    CellStyle style;
    GetCellText(items_[size_t(d)], column, text, style);
    values[size_t(p)] = expr::ParseLeadingNumber(text);
  }
  EndPass();
  return true;
}

void RowEngine::VisitColumnTexts(int column,
                                 const std::function<void(int, std::string_view)>& visit) {
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info || !HasDataSource())
    return;
  ColumnKeys* cache = nullptr;
  if (column >= dataColumnCount_ || !IsNumberType(info->nType))
    cache = PassKeys(column);
  std::string scratch;
  char buffer[custom::kFormatBufferSize];
  for (size_t d = 0; d < items_.size(); ++d) {
    const uint64_t item = items_[d];
    if (item == 0)
      continue;
    std::string_view text;
    if (!cache)
      text = PassText(item, column, scratch);
    else
      text = KeptText(*cache, d, buffer);
    visit(int(d), text);
  }
  EndPass();
}

} // namespace vh
