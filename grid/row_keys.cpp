// The key caches' life in the engine: the change contract, reading a
// column's keys exactly as the uncached passes read the cells, refreshing
// the slots the owner named, and check mode.
#include "common/message.h"
#include "grid/custom_column_detail.h"
#include "grid/filter_match.h"
#include "grid/key_cache.h"
#include "grid/key_values.h"
#include "grid/row_engine.h"
#include "grid/sort_keys.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace vh {

using namespace keys;

namespace {

// Changed slots whose texts are asked for together.
constexpr size_t kReadAhead = 16;

// References past this many are computed from their texts.
constexpr size_t kMaxFormReferences = 8;

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

// Copies a text of up to 16 bytes in fixed-size pieces, reading nothing
// outside it (a variable-length copy is a library call per row).
void CopyShort(std::string_view text, char* out) {
  const char* p = text.data();
  const size_t n = text.size();
  if (n >= 8) {
    std::memcpy(out, p, 8);
    std::memcpy(out + n - 8, p + n - 8, 8);
  } else if (n >= 4) {
    std::memcpy(out, p, 4);
    std::memcpy(out + n - 4, p + n - 4, 4);
  } else if (n > 0) {
    out[0] = p[0];
    out[n / 2] = p[n / 2];
    out[n - 1] = p[n - 1];
  }
}

// The key kept for a custom cell's value; false for a value whose bits are
// one of the markers.
bool CustomKey(const CustomCellValue& value, uint64_t& key) {
  key = kCustomLeftEmpty;
  if (value.kind == CustomCellValue::kDividedByZero) {
    key = kCustomDividedByZero;
  } else if (value.kind == CustomCellValue::kValue) {
    std::memcpy(&key, &value.value, sizeof key);
    return IsCustomNumber(key);
  }
  return true;
}

} // namespace

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
    return told && CustomKey(value, out.key);
  }
  out.text = item != 0 ? PassText(item, column, scratch) : std::string_view();
  if (keys.kind == ColumnKeys::Kind::kShortText)
    return ShortTextKey(out.text, out.key);
  if (keys.kind == ColumnKeys::Kind::kNumber) {
    out.key = NumberKey(keys.type, out.text, out.scanAgrees);
    out.scanAgrees = out.scanAgrees || item == 0; // filters never read such rows
  }
  return true;
}

// How the formulas read data column `column`'s cell: its text as a whole-
// column pass reads it, and whether it could be read at all.
uint64_t RowEngine::ReadCellForm(uint64_t itemData, int column, std::string& scratch) {
  std::string_view text;
  if (viewSource_ && viewSource_(viewOwner_, itemData, column, text) != 0)
    return CellFormBits(text);
  // No view, or it failed: only the installed form says whether the
  // formula's own fetch fails.
  scratch.clear();
  CellStyle style;
  return GetCellText(itemData, column, scratch, style) ? CellFormBits(scratch) : kFormNotFetched;
}

// Reads the forms of custom `column`'s references over every slot into
// `forms` (one array per referenced column) and points `inputs` at them,
// one per reference. Each input text is read and classified once per
// build instead of once per cell and formula step; the arrays live for the
// build only, so a data column costs its 8 bytes a row once, for its keys.
// False when the formula cannot compute from forms or reads anything but
// data columns (custom columns and cycles are for the text path).
bool RowEngine::CustomInputs(int column, std::vector<std::vector<uint64_t>>& forms,
                             std::vector<const uint64_t*>& inputs) {
  inputs.clear();
  const std::vector<int> references = formulas_[size_t(column - dataColumnCount_)]->FormColumns();
  if (references.empty() || references.size() > kMaxFormReferences)
    return false;
  for (const int c : references)
    if (c < 0 || c >= dataColumnCount_)
      return false;
  forms.resize(references.size());
  std::string scratch;
  for (size_t k = 0; k < references.size(); ++k) {
    const auto first = std::find(references.begin(), references.end(), references[k]);
    if (first != references.begin() + ptrdiff_t(k)) {
      inputs.push_back(inputs[size_t(first - references.begin())]);
      continue;
    }
    std::vector<uint64_t>& array = forms[k];
    array.resize(items_.size());
    for (size_t d = 0; d < items_.size(); ++d)
      array[d] = items_[d] != 0 ? ReadCellForm(items_[d], references[k], scratch) : 0;
    inputs.push_back(array.data());
  }
  return true;
}

// Custom `column`'s key for `slot` from its references' forms; from the
// texts, as the uncached pass computes it, when the forms cannot tell.
bool RowEngine::ReadCustomSlot(ColumnKeys& keys, int column, uint32_t slot,
                               const std::vector<const uint64_t*>& inputs, FreshKey& out,
                               std::string& scratch) {
  CustomColumnFormula* formula = formulas_[size_t(column - dataColumnCount_)].get();
  if (!inputs.empty() && items_[slot] != 0) {
    uint64_t forms[kMaxFormReferences];
    for (size_t k = 0; k < inputs.size(); ++k) {
      forms[k] = inputs[k][slot];
      if (forms[k] == kFormNotFetched) {
        out.key = kCustomLeftEmpty; // the formula stops at a cell it cannot fetch
        return true;
      }
    }
    CustomCellValue value;
    if (formula->CalculateFromForms(forms, value))
      return CustomKey(value, out.key);
  }
  return ReadSlotKey(keys, column, slot, out, scratch);
}

namespace {

inline void SweepRow(FilterSweep& sweep, uint32_t slot, uint32_t id, std::string_view text,
                     bool hasItem) {
  // Texts are numbered in order of first appearance: a new one is the next.
  if (id == sweep.verdicts.size())
    sweep.verdicts.push_back(sweep.pattern->Matches(text, sweep.exact) ? 2 : 1);
  if (hasItem && sweep.verdicts[id] == 2)
    sweep.map->push_back(int32_t(slot));
  ++sweep.rows;
}

} // namespace

std::unique_ptr<ColumnKeys> RowEngine::ReadColumnKeys(int column, FilterSweep* sweep) {
  auto keys = std::make_unique<ColumnKeys>();
  keys->type = columns_[size_t(column)].nType;
  if (column >= dataColumnCount_) {
    const size_t custom = size_t(column - dataColumnCount_);
    if (custom >= formulas_.size() || !formulas_[custom] ||
        (size_t(column) < uncacheable_.size() && uncacheable_[size_t(column)]))
      return nullptr;
    keys->kind = ColumnKeys::Kind::kCustom;
  } else {
    keys->kind =
        IsNumberType(keys->type) ? ColumnKeys::Kind::kNumber : ColumnKeys::Kind::kShortText;
  }
  const size_t n = items_.size();
  if (keys->kind != ColumnKeys::Kind::kShortText)
    keys->keys.resize(n);
  std::optional<MessageCounter> messages;
  if (keys->kind == ColumnKeys::Kind::kCustom)
    messages.emplace();
  std::string scratch;
  FreshKey fresh;
  if (keys->kind == ColumnKeys::Kind::kShortText) {
    // Short texts need no table of texts at all; the first longer one
    // sends the column to numbered texts. Keys are appended, not zeroed
    // first, so a column that turns out long never touches most of them.
    keys->keys.reserve(n);
    bool allShort = true;
    for (uint32_t d = 0; d < n && allShort; ++d) {
      const uint64_t item = items_[d];
      uint64_t key = 0;
      allShort =
          ShortTextKey(item != 0 ? PassText(item, column, scratch) : std::string_view(), key);
      keys->keys.push_back(key);
    }
    if (allShort)
      return keys;
    keys->kind = ColumnKeys::Kind::kText;
    std::vector<uint64_t>().swap(keys->keys);
  }
  if (keys->kind == ColumnKeys::Kind::kText) {
    // Once the distinct texts outgrow the processor's cache, a few rows are
    // read ahead: their texts copied (a view lasts one call) and hashed,
    // and their table slots fetched while the others are looked up.
    constexpr uint32_t kAhead = 16;
    constexpr size_t kTextsInCache = 16384;
    constexpr size_t kShort = 16;
    keys->ids.reserve(n);
    char shortTexts[kAhead][kShort];
    std::string longTexts[kAhead];
    std::string_view texts[kAhead];
    uint32_t hashes[kAhead];
    for (uint32_t d = 0; d < n;) {
      if (keys->texts.Size() < kTextsInCache) {
        const uint64_t item = items_[d];
        const std::string_view text = item != 0 ? PassText(item, column, scratch) : "";
        keys->ids.push_back(keys->texts.Intern(text));
        if (sweep)
          SweepRow(*sweep, d, keys->ids.back(), text, item != 0);
        ++d;
        continue;
      }
      const uint32_t count = std::min<uint32_t>(kAhead, uint32_t(n) - d);
      for (uint32_t i = 0; i < count; ++i) {
        const uint64_t item = items_[d + i];
        const std::string_view text = item != 0 ? PassText(item, column, scratch) : "";
        if (text.size() <= kShort) {
          CopyShort(text, shortTexts[i]);
          texts[i] = std::string_view(shortTexts[i], text.size());
        } else {
          texts[i] = longTexts[i].assign(text);
        }
        hashes[i] = TextInterner::Hash(texts[i]);
        keys->texts.Prefetch(hashes[i]);
      }
      for (uint32_t i = 0; i < count; ++i) {
        keys->ids.push_back(keys->texts.Intern(texts[i], hashes[i]));
        if (sweep)
          SweepRow(*sweep, d + i, keys->ids.back(), texts[i], items_[d + i] != 0);
      }
      d += count;
    }
    return keys;
  }
  std::vector<std::vector<uint64_t>> forms;
  std::vector<const uint64_t*> inputs;
  if (keys->kind == ColumnKeys::Kind::kCustom && !CustomInputs(column, forms, inputs))
    inputs.clear();
  for (uint32_t d = 0; d < n; ++d) {
    const bool read = keys->kind == ColumnKeys::Kind::kCustom
                          ? ReadCustomSlot(*keys, column, d, inputs, fresh, scratch)
                          : ReadSlotKey(*keys, column, d, fresh, scratch);
    if (!read || (messages && messages->Count() > 0)) {
      // A formula that shows messages must show them on every pass.
      uncacheable_.resize(columns_.size(), 0);
      uncacheable_[size_t(column)] = 1;
      return nullptr;
    }
    keys->Store(d, fresh);
  }
  return keys;
}

// Asks for the texts of `count` slots and fetches their first bytes, so
// that the reads of scattered slots that follow wait for memory together
// rather than one after the other.
void RowEngine::PrefetchTexts(int column, const uint32_t* slots, size_t count) {
  for (size_t k = 0; k < count; ++k) {
    const uint32_t d = slots[k];
    std::string_view text;
    if (d < items_.size() && items_[d] != 0 &&
        viewSource_(viewOwner_, items_[d], column, text) != 0 && !text.empty())
      __builtin_prefetch(text.data());
  }
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

ColumnKeys* RowEngine::PassKeys(int column, FilterSweep* sweep) {
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
    const std::vector<const uint64_t*> inputs; // a few slots: from their texts
    const std::vector<uint32_t>& dirty = keys->dirty;
    const bool ahead = viewSource_ && column < dataColumnCount_;
    for (size_t i = 0; i < dirty.size(); ++i) {
      if (ahead && i % kReadAhead == 0)
        PrefetchTexts(column, dirty.data() + i, std::min(kReadAhead, dirty.size() - i));
      const uint32_t d = dirty[i];
      if (d >= keys->Slots())
        continue;
      const bool read = keys->kind == ColumnKeys::Kind::kCustom
                            ? ReadCustomSlot(*keys, column, d, inputs, fresh, scratch)
                            : ReadSlotKey(*keys, column, d, fresh, scratch);
      if (!read || (messages && messages->Count() > 0)) {
        messages.reset();
        keyCache_->Drop(column);
        keys = nullptr;
        if (column < dataColumnCount_)
          break; // a text too long for its key: built again with numbered texts
        uncacheable_.resize(columns_.size(), 0);
        uncacheable_[size_t(column)] = 1;
        return nullptr;
      }
      keys->Store(d, fresh);
    }
    if (keys)
      keys->dirty.clear();
  }
  if (!keys) {
    std::unique_ptr<ColumnKeys> read = ReadColumnKeys(column, sweep);
    if (!read)
      return nullptr;
    keys = &keyCache_->Install(column, std::move(read));
  }
  if (checkKeys_)
    VerifyKeys(*keys, column);
  keyCache_->Touch(*keys);
  return keys;
}

} // namespace vh
