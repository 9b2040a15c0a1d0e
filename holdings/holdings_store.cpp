#include "holdings/view_holdings.h"

#include <algorithm>
#include <cstdio>

#include "common/c_locale.h"

namespace vh {
namespace {

const PriceSlot kNoSlot{};

uint64_t SlotKey(int exchange, TextId symbol) {
  return uint64_t(uint32_t(exchange)) << 32 | symbol;
}

} // namespace

HoldingsStore::HoldingsStore() = default;

HoldingsStore::~HoldingsStore() = default;

CViewHoldings* HoldingsStore::NewRecord() {
  if (count_ == chunks_.size() * kChunk)
    chunks_.push_back(std::make_unique<CViewHoldings[]>(kChunk));
  CViewHoldings* r = &chunks_[count_ / kChunk][count_ % kChunk];
  ++count_;
  return r;
}

void HoldingsStore::DropLastRecord() {
  if (count_ == 0)
    return;
  --count_;
  chunks_[count_ / kChunk][count_ % kChunk] = CViewHoldings();
}

CViewHoldings* HoldingsStore::Record(size_t i) const {
  return i < count_ ? &chunks_[i / kChunk][i % kChunk] : nullptr;
}

void HoldingsStore::Clear() {
  chunks_.clear();
  count_ = 0;
  texts_.Clear();
  scripKeys_.Clear();
  scripIsins_.clear();
  for (LegMemo& m : legs_)
    m = LegMemo();
  for (TextMemo& m : memos_)
    m = TextMemo();
  haircutKeys_.Clear();
  haircutTexts_.clear();
  slots_.clear();
  slotOf_.clear();
}

TextId HoldingsStore::ScripIsin(std::string_view segment, std::string_view symbol,
                                const ScripDetailsLookup& lookup) {
  if (!lookup)
    return 0;
  // Segments never hold a NUL, so segment NUL symbol names one pair.
  scripKey_.assign(segment).push_back('\0');
  scripKey_.append(symbol);
  const TextId key = scripKeys_.Intern(scripKey_);
  if (key < scripIsins_.size() && scripIsins_[key] != TextPool::kNotFound)
    return scripIsins_[key];
  ScripDetailFields fields;
  const TextId isin = lookup(segment, symbol, fields) ? Intern(fields[kScripIsin]) : 0;
  scripIsins_.resize(std::max(scripIsins_.size(), size_t(key) + 1), TextPool::kNotFound);
  scripIsins_[key] = isin;
  return isin;
}

namespace {

// segment NUL symbol NUL token into `key`, without allocating once it has
// grown to fit.
void LegKey(std::string& key, std::string_view segment, std::string_view symbol,
            std::string_view token) {
  key.assign(segment).push_back('\0');
  key.append(symbol).push_back('\0');
  key.append(token);
}

bool SameLegKey(const std::string& key, std::string_view segment, std::string_view symbol,
                std::string_view token) {
  const size_t n = segment.size() + symbol.size() + token.size() + 2;
  if (key.size() != n)
    return false;
  std::string_view k = key;
  return k.substr(0, segment.size()) == segment && k[segment.size()] == '\0' &&
         k.substr(segment.size() + 1, symbol.size()) == symbol &&
         k[segment.size() + 1 + symbol.size()] == '\0' && k.substr(n - token.size()) == token;
}

} // namespace

const HoldingsStore::LegIds* HoldingsStore::RecallLeg(uint32_t leg, std::string_view segment,
                                                      std::string_view symbol,
                                                      std::string_view token) const {
  if (leg > 1 || legs_[leg].key.empty() || !SameLegKey(legs_[leg].key, segment, symbol, token))
    return nullptr;
  return &legs_[leg].ids;
}

void HoldingsStore::RememberLeg(uint32_t leg, std::string_view segment, std::string_view symbol,
                                std::string_view token, const LegIds& ids) {
  if (leg > 1)
    return;
  LegKey(legs_[leg].key, segment, symbol, token);
  legs_[leg].ids = ids;
}

TextId HoldingsStore::InternRecent(size_t memo, std::string_view text) {
  if (memo >= kInternMemos)
    return Intern(text);
  TextMemo& m = memos_[memo];
  if (m.id == TextPool::kNotFound || m.text != text) {
    m.text.assign(text);
    m.id = Intern(text);
  }
  return m.id;
}

TextId HoldingsStore::CachedHaircut(std::string_view raw) const {
  const TextId key = haircutKeys_.Find(raw);
  return key < haircutTexts_.size() ? haircutTexts_[key] : TextPool::kNotFound;
}

TextId HoldingsStore::AddHaircut(std::string_view raw, double value) {
  const TextId key = haircutKeys_.Intern(raw);
  char text[352]; // "%0.2lf" of the largest double has 309 integer digits
  const int n = InCLocale([&] { return std::snprintf(text, sizeof text, "%0.2lf", value); });
  haircutTexts_.resize(std::max(haircutTexts_.size(), size_t(key) + 1), TextPool::kNotFound);
  haircutTexts_[key] = Intern(std::string_view(text, n > 0 ? size_t(n) : 0));
  return haircutTexts_[key];
}

uint32_t HoldingsStore::PriceSlotFor(int exchange, TextId symbol) {
  const auto [it, added] = slotOf_.try_emplace(SlotKey(exchange, symbol), uint32_t(slots_.size()));
  if (added)
    slots_.emplace_back();
  return it->second;
}

uint32_t HoldingsStore::ApplyPrice(int exchange, std::string_view symbol, int32_t price,
                                   int32_t secondPrice, int32_t shared) {
  const TextId id = texts_.Find(symbol);
  if (id == TextPool::kNotFound)
    return kNoPriceSlot;
  const auto it = slotOf_.find(SlotKey(exchange, id));
  if (it == slotOf_.end())
    return kNoPriceSlot;
  PriceSlot& s = slots_[it->second];
  s.price = price;
  s.secondPrice = secondPrice;
  s.shared = shared;
  s.tick = ++ticks_;
  return it->second;
}

const PriceSlot& HoldingsStore::Slot(uint32_t slot) const {
  return slot < slots_.size() ? slots_[slot] : kNoSlot;
}

int32_t HoldingsStore::SharedPriceValue(const CViewHoldings& r) const {
  const PriceSlot* latest = &kNoSlot;
  for (uint32_t slot : r.priceSlot) {
    const PriceSlot& s = Slot(slot);
    if (s.tick > latest->tick)
      latest = &s;
  }
  return latest->shared;
}

size_t HoldingsStore::ResidentBytes() const {
  size_t bytes =
      chunks_.capacity() * sizeof(void*) + chunks_.size() * kChunk * sizeof(CViewHoldings);
  bytes += texts_.ResidentBytes();
  bytes += scripKeys_.ResidentBytes() + scripIsins_.capacity() * sizeof(TextId);
  bytes += haircutKeys_.ResidentBytes() + haircutTexts_.capacity() * sizeof(TextId);
  bytes += slots_.capacity() * sizeof(PriceSlot);
  bytes += slotOf_.bucket_count() * sizeof(void*) + slotOf_.size() * 32;
  return bytes;
}

} // namespace vh
