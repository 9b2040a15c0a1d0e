#include "holdings/view_holdings.h"

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

CViewHoldings* HoldingsStore::Record(size_t i) const {
  return i < count_ ? &chunks_[i / kChunk][i % kChunk] : nullptr;
}

void HoldingsStore::Clear() {
  chunks_.clear();
  count_ = 0;
  texts_.Clear();
  scripCache_.clear();
  slots_.clear();
  slotOf_.clear();
}

TextId HoldingsStore::ScripIsin(std::string_view segment, std::string_view symbol,
                                const ScripDetailsLookup& lookup) {
  if (!lookup)
    return 0;
  // Segments are short and never hold a NUL, so segment + NUL + symbol is a
  // key without collisions.
  std::string key;
  key.reserve(segment.size() + 1 + symbol.size());
  key.append(segment).push_back('\0');
  key.append(symbol);
  if (auto it = scripCache_.find(key); it != scripCache_.end())
    return it->second;
  ScripDetailFields fields;
  const TextId isin = lookup(segment, symbol, fields) ? Intern(fields[kScripIsin]) : 0;
  scripCache_.emplace(std::move(key), isin);
  return isin;
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
  bytes += scripCache_.bucket_count() * sizeof(void*) + scripCache_.size() * 64;
  bytes += slots_.capacity() * sizeof(PriceSlot);
  bytes += slotOf_.bucket_count() * sizeof(void*) + slotOf_.size() * 32;
  return bytes;
}

} // namespace vh
