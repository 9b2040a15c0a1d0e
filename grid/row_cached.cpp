// The key caches inside the engine's passes: reading a column's keys from
// the cell texts exactly as the uncached passes read them, refreshing the
// slots the owner named, checking them, and the cached inner loops.
#include "common/message.h"
#include "grid/custom_column_detail.h"
#include "grid/filter_match.h"
#include "grid/key_cache.h"
#include "grid/row_convert.h"
#include "grid/row_engine.h"
#include "grid/sort_keys.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <optional>

namespace vh {
namespace {

constexpr uint64_t kTopBit = uint64_t{1} << 63;

bool IsNumberType(int type) {
  return type == kCompareInteger || type == kCompareDecimal || type == kCompareDecimalAlt ||
         type == kCompareLong;
}

bool IsIntegerType(int type) {
  return type == kCompareInteger || type == kCompareLong;
}

// "123" or "-45" with at most 15 digits: atoi, atol and "%lf" all read the
// integer itself, exactly.
bool PlainInteger(std::string_view text, int64_t& value) {
  const size_t start = !text.empty() && text[0] == '-' ? 1 : 0;
  const size_t digits = text.size() - start;
  if (digits == 0 || digits > 15)
    return false;
  int64_t v = 0;
  for (size_t i = start; i < text.size(); ++i) {
    const char c = text[i];
    if (c < '0' || c > '9')
      return false;
    v = v * 10 + (c - '0');
  }
  value = start ? -v : v;
  return true;
}

// The order key the sort of `type` reads from `text`, and whether "%lf"
// reads exactly that key's number from it.
uint64_t NumberKey(int type, std::string_view text, bool& scanAgrees) {
  double scanned = 0;
  if (IsIntegerType(type)) {
    int64_t plain = 0;
    if (PlainInteger(text, plain)) {
      // atoi keeps the low 32 bits of strtol's long.
      const int64_t v =
          type == kCompareInteger ? int64_t(int32_t(uint32_t(uint64_t(plain)))) : plain;
      scanAgrees = v == plain;
      return SignedKey(v);
    }
    const int64_t v = type == kCompareInteger ? int64_t(CAtoi(text)) : CAtol(text);
    scanAgrees = CScanDouble(text, scanned) && scanned == double(v);
    return SignedKey(v);
  }
  double v = 0;
  if (!CParseDouble(text, v)) {
    scanAgrees = false; // atof reads 0, "%lf" nothing
    return DecimalKey(0);
  }
  // strtod and "%lf" part only on a "0x" without hexadecimal digits.
  if (text.find_first_of("xX") == std::string_view::npos)
    scanAgrees = true;
  else
    scanAgrees = CScanDouble(text, scanned) && (scanned == v || (scanned != scanned && v != v));
  return DecimalKey(v);
}

// The number a number column's key stands for; -0 comes back as 0 and
// every NaN as one NaN, which no comparison tells apart.
double NumberOfKey(int type, uint64_t key) {
  if (IsIntegerType(type))
    return double(int64_t(key ^ kTopBit));
  const uint64_t bits = (key & kTopBit) ? key & ~kTopBit : ~key;
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

double CustomNumber(uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

bool IsCustomNumber(uint64_t bits) {
  return bits != kCustomLeftEmpty && bits != kCustomDividedByZero;
}

// What atof reads from a custom cell: its value, 0 for the other texts.
double CustomSortNumber(uint64_t bits) {
  return IsCustomNumber(bits) ? CustomNumber(bits) : 0.0;
}

// The keys whose numbers pass a ">"/"<" filter, as ranges of keys: keys
// order like their numbers, so each test is one range. False for long
// columns, whose numbers a double does not always hold exactly.
bool KeyRanges(int type, const FilterPattern& pattern,
               std::vector<std::pair<uint64_t, uint64_t>>& ranges) {
  constexpr double kMin = -2147483648.0, kMax = 2147483647.0;
  for (const FilterPattern::NumberTest& test : pattern.NumberTests()) {
    const double b = test.bound;
    if (b != b)
      continue; // no number compares with NaN
    if (type == kCompareInteger) {
      // An integer v > b exactly when v >= floor(b) + 1; v < b when v < ceil(b).
      if (test.greater) {
        const double t = std::floor(b) + 1;
        if (t > kMax)
          continue;
        ranges.emplace_back(SignedKey(int64_t(std::max(t, kMin))), SignedKey(int64_t(kMax) + 1));
      } else {
        const double t = std::ceil(b);
        if (t <= kMin)
          continue;
        ranges.emplace_back(SignedKey(int64_t(kMin)), SignedKey(int64_t(std::min(t, kMax + 1))));
      }
    } else if (type == kCompareDecimal || type == kCompareDecimalAlt) {
      // Every NaN key is UINT64_MAX, outside both ranges.
      if (test.greater)
        ranges.emplace_back(DecimalKey(b) + 1, UINT64_MAX);
      else
        ranges.emplace_back(0, DecimalKey(b));
    } else {
      return false;
    }
  }
  return true;
}

// Two decimals of a cached custom value (itself read back from such a
// text): the cents are exact below 2^40, printed two digits at a time.
size_t FormatCustomNumber(double value, char* buffer) {
  const double scaled = std::fabs(value) * 100;
  if (!(scaled < 1099511627776.0))
    return custom::FormatTwoDecimals(value, buffer);
  static constexpr char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  uint64_t cents = uint64_t(scaled + 0.5);
  char digits[24];
  char* end = digits + sizeof digits;
  char* p = end;
  std::memcpy(p -= 2, kPairs + 2 * (cents % 100), 2);
  *--p = '.';
  cents /= 100;
  do {
    if (cents >= 10) {
      std::memcpy(p -= 2, kPairs + 2 * (cents % 100), 2);
      cents /= 100;
    } else {
      *--p = char('0' + cents);
      cents = 0;
    }
  } while (cents != 0);
  size_t at = 0;
  if (std::signbit(value))
    buffer[at++] = '-';
  std::memcpy(buffer + at, p, size_t(end - p));
  return at + size_t(end - p);
}

// The text the cell shows; `buffer` holds custom::kFormatBufferSize.
std::string_view CustomText(uint64_t bits, char* buffer) {
  if (bits == kCustomLeftEmpty)
    return {};
  if (bits == kCustomDividedByZero)
    return kDividedByZeroText;
  return {buffer, FormatCustomNumber(CustomNumber(bits), buffer)};
}

// Counts the messages shown while it lives instead of showing them.
class MessageCounter {
public:
  MessageCounter() : old_(SetMessageSink([this](std::string_view) { ++count_; })) {}
  ~MessageCounter() { SetMessageSink(std::move(old_)); }
  MessageCounter(const MessageCounter&) = delete;
  MessageCounter& operator=(const MessageCounter&) = delete;
  int Count() const { return count_; }

private:
  int count_ = 0;
  MessageSink old_;
};

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
  if (filter.mode == FilterKeys::Mode::kNumbers && filter.useRanges) {
    const uint64_t* key = keys.keys.data();
    const auto& ranges = filter.ranges;
    if (ranges.size() == 1) {
      const uint64_t low = ranges[0].first;
      const uint64_t width = ranges[0].second - low;
      for (size_t d = 0; d < n; ++d)
        if (items[d] != 0 && key[d] - low < width)
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
  if (filter.mode == FilterKeys::Mode::kNumbers) {
    // Tight loops: the key's number, then the pattern.
    const uint64_t* key = keys.keys.data();
    if (IsIntegerType(keys.type)) {
      for (size_t d = 0; d < n; ++d)
        if (items[d] != 0 && pattern.MatchesNumber(double(int64_t(key[d] ^ kTopBit))))
          map.push_back(int32_t(d));
    } else {
      for (size_t d = 0; d < n; ++d)
        if (items[d] != 0 && pattern.MatchesNumber(NumberOfKey(keys.type, key[d])))
          map.push_back(int32_t(d));
    }
    return;
  }
  for (size_t d = 0; d < n; ++d)
    if (items[d] != 0 && MatchCachedCell(filter, pattern, exact, uint32_t(d)))
      map.push_back(int32_t(d));
}

// --- the change contract ------------------------------------------------------

void RowEngine::RowChanged(int dataIndex) {
  if (keyCache_ && dataIndex >= 0 && size_t(dataIndex) < items_.size())
    keyCache_->SlotChanged(uint32_t(dataIndex));
}

bool RowEngine::CustomDependsOn(int custom, int column, std::vector<char>& seen) const {
  if (custom < dataColumnCount_ || custom >= ColumnCount() || seen[size_t(custom)])
    return false;
  seen[size_t(custom)] = 1;
  for (const custom::Piece& piece : custom::SplitStored(columns_[size_t(custom)].strExpression)) {
    if (!piece.isColumn)
      continue;
    if (piece.column == column || CustomDependsOn(piece.column, column, seen))
      return true;
  }
  return false;
}

void RowEngine::ForgetKeys(int column) {
  if (!keyCache_)
    return;
  keyCache_->Drop(column);
  for (int c = dataColumnCount_; c < ColumnCount(); ++c) {
    std::vector<char> seen(columns_.size(), 0);
    if (c == column || CustomDependsOn(c, column, seen)) {
      keyCache_->Drop(c);
      if (size_t(c) < uncacheable_.size())
        uncacheable_[size_t(c)] = 0;
    }
  }
}

void RowEngine::ColumnChanged(int column) {
  if (column >= 0 && column < ColumnCount())
    ForgetKeys(column);
}

void RowEngine::AllRowsChanged() {
  if (keyCache_)
    keyCache_->DropAll();
  uncacheable_.clear();
}

void RowEngine::SetKeyCacheLimit(size_t bytes) {
  keyCacheLimit_ = bytes;
  EndPass();
}

size_t RowEngine::KeyCacheBytes() const {
  return keyCache_ ? keyCache_->Bytes() : 0;
}

void RowEngine::EndPass() {
  if (keyCache_)
    keyCache_->Trim(keyCacheLimit_);
}

// --- reading keys ---------------------------------------------------------------

// Reads slot `slot` of `column` as the uncached passes read it. False when
// the cell cannot be kept as a key (a custom formula that cannot tell its
// value).
bool RowEngine::ReadSlotKey(ColumnKeys& keys, int column, uint32_t slot, FreshKey& out,
                            std::string& scratch) {
  const uint64_t item = items_[slot];
  if (keys.kind == ColumnKeys::Kind::kCustom) {
    out.key = kCustomLeftEmpty;
    if (item == 0)
      return true;
    CustomColumnFormula* formula = formulas_[size_t(column - dataColumnCount_)].get();
    CustomCellValue value;
    // As FetchCell computes a custom cell, cycle stop included.
    ++customDepth_;
    const bool told = formula->CalculateCellValue(item, *this, dataColumnCount_, value);
    --customDepth_;
    if (customDepth_ == 0)
      cycleStopped_ = false;
    if (!told)
      return false;
    if (value.kind == CustomCellValue::kDividedByZero) {
      out.key = kCustomDividedByZero;
    } else if (value.kind == CustomCellValue::kValue) {
      std::memcpy(&out.key, &value.value, sizeof out.key);
      if (!IsCustomNumber(out.key))
        return false;
    }
    return true;
  }
  out.text = item != 0 ? PassText(item, column, scratch) : std::string_view();
  if (keys.kind == ColumnKeys::Kind::kNumber) {
    out.key = NumberKey(keys.type, out.text, out.scanAgrees);
    out.scanAgrees = out.scanAgrees || item == 0; // filters never read such rows
  }
  return true;
}

std::unique_ptr<ColumnKeys> RowEngine::ReadColumnKeys(int column) {
  auto keys = std::make_unique<ColumnKeys>();
  keys->type = columns_[size_t(column)].nType;
  if (column >= dataColumnCount_) {
    const size_t custom = size_t(column - dataColumnCount_);
    if (custom >= formulas_.size() || !formulas_[custom] ||
        (size_t(column) < uncacheable_.size() && uncacheable_[size_t(column)]))
      return nullptr;
    keys->kind = ColumnKeys::Kind::kCustom;
  } else {
    keys->kind = IsNumberType(keys->type) ? ColumnKeys::Kind::kNumber : ColumnKeys::Kind::kText;
  }
  const size_t n = items_.size();
  if (keys->kind == ColumnKeys::Kind::kText)
    keys->ids.resize(n);
  else
    keys->keys.resize(n);
  std::optional<MessageCounter> messages;
  if (keys->kind == ColumnKeys::Kind::kCustom)
    messages.emplace();
  std::string scratch;
  FreshKey fresh;
  for (uint32_t d = 0; d < n; ++d) {
    if (!ReadSlotKey(*keys, column, d, fresh, scratch) || (messages && messages->Count() > 0)) {
      // A formula that shows messages must show them on every pass.
      uncacheable_.resize(columns_.size(), 0);
      uncacheable_[size_t(column)] = 1;
      return nullptr;
    }
    if (keys->kind == ColumnKeys::Kind::kText) {
      keys->ids[d] = keys->texts.Intern(fresh.text);
    } else {
      keys->keys[d] = fresh.key;
      keys->scanAgrees = keys->scanAgrees && fresh.scanAgrees;
    }
  }
  return keys;
}

// Fails loudly on the first slot whose cached key differs from a fresh
// read: the owner changed a row without saying so, or a cache is wrong.
void RowEngine::VerifyKeys(ColumnKeys& keys, int column) {
  std::optional<MessageCounter> messages;
  if (keys.kind == ColumnKeys::Kind::kCustom)
    messages.emplace();
  std::string scratch;
  FreshKey fresh;
  for (uint32_t d = 0; d < keys.Slots(); ++d) {
    bool same =
        ReadSlotKey(keys, column, d, fresh, scratch) && (!messages || messages->Count() == 0);
    if (same && keys.kind == ColumnKeys::Kind::kText)
      same = keys.texts.Text(keys.ids[d]) == fresh.text;
    else if (same)
      same = keys.keys[d] == fresh.key && (fresh.scanAgrees || !keys.scanAgrees);
    if (same)
      continue;
    messages.reset();
    if (mismatch_) {
      mismatch_(column, int(d));
      return;
    }
    std::fprintf(stderr, "row engine key cache: column %d, data index %u differs from its cell\n",
                 column, d);
    std::abort();
  }
}

ColumnKeys* RowEngine::PassKeys(int column) {
  if (keyCacheLimit_ == 0 || !keyCache_ || !HasDataSource() || column < 0 ||
      column >= ColumnCount())
    return nullptr;
  ColumnKeys* keys = keyCache_->Find(column);
  if (keys && (keys->type != columns_[size_t(column)].nType || keys->Slots() != items_.size() ||
               keys->texts.Size() > 2 * keys->Slots() + 1024)) {
    keyCache_->Drop(column);
    keys = nullptr;
  }
  if (keys && !keys->dirty.empty()) {
    std::optional<MessageCounter> messages;
    if (keys->kind == ColumnKeys::Kind::kCustom)
      messages.emplace();
    std::string scratch;
    FreshKey fresh;
    for (const uint32_t d : keys->dirty) {
      if (d >= keys->Slots())
        continue;
      if (!ReadSlotKey(*keys, column, d, fresh, scratch) || (messages && messages->Count() > 0)) {
        messages.reset();
        keyCache_->Drop(column);
        uncacheable_.resize(columns_.size(), 0);
        uncacheable_[size_t(column)] = 1;
        return nullptr;
      }
      if (keys->kind == ColumnKeys::Kind::kText) {
        keys->ids[d] = keys->texts.Intern(fresh.text);
      } else {
        keys->keys[d] = fresh.key;
        keys->scanAgrees = keys->scanAgrees && fresh.scanAgrees;
      }
    }
    keys->dirty.clear();
  }
  if (!keys) {
    std::unique_ptr<ColumnKeys> read = ReadColumnKeys(column);
    if (!read)
      return nullptr;
    keys = &keyCache_->Install(column, std::move(read));
  }
  if (checkKeys_)
    VerifyKeys(*keys, column);
  keyCache_->Touch(*keys);
  return keys;
}

// --- cached passes -----------------------------------------------------------------

FilterKeys RowEngine::PrepareFilterKeys(int column, const FilterPattern& pattern, bool exact) {
  FilterKeys filter;
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info)
    return filter;
  const bool numbers = !exact && pattern.ComparesNumbersOnly();
  // A number column keeps no texts: only number-only filters can use it.
  if (column < dataColumnCount_ && IsNumberType(info->nType) && !numbers)
    return filter;
  filter.keys = PassKeys(column);
  if (!filter.keys)
    return filter;
  switch (filter.keys->kind) {
  case ColumnKeys::Kind::kText:
    filter.mode = FilterKeys::Mode::kIds;
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
  if (!cache || cache->kind == ColumnKeys::Kind::kText || cache->type != type)
    return false;
  const auto larger = [](const SortEntry& a, const SortEntry& b) {
    return a.key > b.key || (a.key == b.key && a.index < b.index);
  };
  const uint64_t empty = IsIntegerType(type) ? SignedKey(0) : DecimalKey(0);
  const uint64_t* keys = cache->keys.data();
  const size_t rows = items_.size();
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

bool RowEngine::CachedDistinctValues(int column, size_t n, std::vector<std::string>& values) {
  const sTarnColInfo* info = ColumnInfo(column);
  if (!info || (column < dataColumnCount_ && IsNumberType(info->nType)))
    return false;
  ColumnKeys* cache = PassKeys(column);
  if (!cache || cache->kind == ColumnKeys::Kind::kNumber)
    return false;
  TextInterner made; // custom cells: their texts, numbered here
  TextInterner& texts = cache->kind == ColumnKeys::Kind::kText ? cache->texts : made;
  std::vector<uint32_t> firstPosition(texts.Size(), UINT32_MAX);
  char buffer[custom::kFormatBufferSize];
  for (uint32_t s = 0; s < n; ++s) {
    const int32_t d = map_[s];
    if (d < 0 || size_t(d) >= items_.size() || items_[size_t(d)] == 0)
      continue;
    uint32_t id;
    if (cache->kind == ColumnKeys::Kind::kText) {
      id = cache->ids[size_t(d)];
      if (texts.Text(id).empty())
        continue;
    } else {
      const std::string_view text = CustomText(cache->keys[size_t(d)], buffer);
      if (text.empty())
        continue;
      id = made.Intern(text);
      if (id >= firstPosition.size())
        firstPosition.resize(id + 1, UINT32_MAX);
    }
    firstPosition[id] = std::min(firstPosition[id], uint32_t(Mirror(int(s))));
  }
  std::vector<uint32_t> ids;
  for (uint32_t id = 0; id < firstPosition.size(); ++id)
    if (firstPosition[id] != UINT32_MAX)
      ids.push_back(id);
  std::sort(ids.begin(), ids.end(),
            [&](uint32_t a, uint32_t b) { return firstPosition[a] < firstPosition[b]; });
  values.reserve(ids.size());
  for (const uint32_t id : ids)
    values.emplace_back(texts.Text(id));
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
    else if (cache->kind == ColumnKeys::Kind::kText)
      text = cache->texts.Text(cache->ids[d]);
    else
      text = CustomText(cache->keys[d], buffer);
    visit(int(d), text);
  }
  EndPass();
}

} // namespace vh
